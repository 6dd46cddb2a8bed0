#pragma once

#include "quenwick/client/Configuration.h"
#include "quenwick/runtime/quenwick_c.h"

namespace quenwick::runtime {

/// The configuration that a JSON text describes. Throws an `ArgumentError` or a `JSONError`.
Configuration configurationFrom(const char* json);

/// What the host gives along with a configuration. Both are let go of where either is no use, and
/// otherwise with the last copy of the functions. Throws an `ArgumentError`.
struct HostFunctions {
  HostFunctions(const quenwick_executor* executor, const quenwick_log* log);

  /// As the configuration takes them; empty where the host gave none.
  std::function<void(std::function<void()> work)> mainExecutor;
  std::function<void(LogLevel level, std::string_view message)> logHook;
};

}  // namespace quenwick::runtime

#pragma once

#include <functional>
#include <string_view>

namespace quenwick::platform {

/// Stops the process over a programming fault, after one error line in the log.
[[noreturn]] void fatalError(std::string_view message);

/// Calls `observe` before the process is stopped. A test's observer may throw instead of
/// returning, and the process goes on. An empty function restores the default.
void observeFatalErrors(std::function<void(std::string_view message)> observe);

}  // namespace quenwick::platform

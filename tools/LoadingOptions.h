#pragma once

#include <chrono>
#include <optional>
#include <stop_token>
#include <string_view>
#include <vector>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/URLSession.h"
#include "tools/Arguments.h"

namespace quenwick::tools {

/// The options with a value that every command that loads takes, behind those of its own.
std::vector<std::string_view> loadingOptions(std::vector<std::string_view> own = {});

/// How to load, by --cacert and --connect-to. Throws `UsageError`.
platform::URLSessionConfiguration sessionConfiguration(const Arguments& arguments);

/// The seconds of --timeout, if there is one. Throws `UsageError`.
std::optional<std::chrono::duration<double>> timeout(const Arguments& arguments);

/// Requests the stop once the time of --timeout has passed, if there is one. Throws `UsageError`.
platform::Cancellable deadline(const Arguments& arguments, const std::stop_source& stop);

}  // namespace quenwick::tools

#pragma once

#include <chrono>
#include <optional>
#include <stop_token>
#include <string>
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

/// How long a command waits, from now on: the seconds of --timeout, else `otherwise`, else for
/// good. Throws `UsageError`.
class Deadline {
 public:
  using Seconds = std::chrono::duration<double>;
  explicit Deadline(const Arguments& arguments, std::optional<Seconds> otherwise = std::nullopt);

  /// A stop is requested of it when the time has passed.
  std::stop_token token() const { return stop_.get_token(); }
  bool hasPassed() const { return stop_.stop_requested(); }

  /// What is left of the time, no less than nothing; without a limit, all there is.
  std::chrono::nanoseconds left() const;

  /// "no answer within 2.5 s"
  std::string line() const;

 private:
  std::optional<Seconds> patience_;
  std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
  std::stop_source stop_;
  platform::Cancellable timer_;
};

}  // namespace quenwick::tools

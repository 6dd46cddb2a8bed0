#pragma once

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quenwick/deeplink/URLSessionRedirectDelegate.h"

namespace quenwick::tools {

/// One redirect of a resolution.
struct Hop {
  int status = 0;
  std::string url;
  std::optional<std::string> qwU;
  std::optional<std::string> rulesKey;
  bool isHalted = false;
  /// Since the redirect before, or since the start.
  double milliseconds = 0;
};

/// The library's redirect delegate, which also writes down what it sees.
class HopRecorder : public URLSessionRedirectDelegate {
 public:
  platform::Task<std::optional<platform::URLRequest>> urlSession(
      platform::URLSession& session, platform::URLSessionTask& task,
      platform::HTTPURLResponse willPerformHTTPRedirection,
      platform::URLRequest newRequest) override;
  void urlSession(platform::URLSession& session, platform::URLSessionTask& task,
                  const platform::PlatformError* didCompleteWithError) override;
  using URLSessionRedirectDelegate::urlSession;

  /// What was seen so far; complete once the resolution has ended.
  std::vector<Hop> hops() const;

  /// That of the answer at the end of the chain, if there was one.
  std::optional<int> status() const;

  /// Why the load at the end of the chain failed, if it did.
  std::shared_ptr<const platform::PlatformError> loadError() const;

 private:
  mutable std::mutex mutex_;
  std::vector<Hop> hops_;
  std::optional<int> status_;
  std::shared_ptr<const platform::PlatformError> loadError_;
  std::chrono::steady_clock::time_point last_ = std::chrono::steady_clock::now();
};

}  // namespace quenwick::tools

#pragma once

#include <chrono>
#include <deque>
#include <memory>
#include <mutex>
#include <string>

namespace quenwick::sandbox {

/// A request as it was received.
struct Request {
  bool isSecure = false;
  std::string head;
  std::string body;
  std::chrono::system_clock::time_point receivedAt;
};

/// Keeps the last requests: at most 100,000, and less if they are large.
class Recorder {
 public:
  void add(Request request);
  void forget();

  /// {"requests":[...]} in the order received.
  std::string json() const;

 private:
  static std::size_t size(const Request& request);

  mutable std::mutex mutex_;
  std::deque<std::shared_ptr<const Request>> requests_;
  std::size_t bytes_ = 0;
};

}  // namespace quenwick::sandbox

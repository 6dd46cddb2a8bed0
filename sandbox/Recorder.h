#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "sandbox/BoundedLog.h"

namespace quenwick::sandbox {

/// A request as it was received.
struct Request {
  std::uint64_t connection = 0;
  bool isSecure = false;
  std::string head;
  std::string body;
  std::chrono::system_clock::time_point receivedAt;
};

/// Keeps the last requests.
class Recorder {
 public:
  void add(std::shared_ptr<const Request> request);
  void forget() { requests_.forget(); }

  /// {"requests":[...]} in the order received.
  std::string json() const;

 private:
  BoundedLog<Request> requests_;
};

}  // namespace quenwick::sandbox

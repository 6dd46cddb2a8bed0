#pragma once

#include <chrono>
#include <string>

#include "sandbox/BehaviorPart.h"
#include "sandbox/BoundedLog.h"

namespace quenwick::sandbox {

struct Refusal;

/// Keeps the last events that were accepted, and the last requests that were refused.
class Journal {
 public:
  using Time = std::chrono::system_clock::time_point;

  /// `body` must be JSON; it is kept to the letter, numbers too.
  void addEvent(const std::string& body, const std::string& requestID, Time receivedAt);
  void addRefusal(BehaviorPart part, const Refusal& refusal, const std::string& body,
                  Time receivedAt);
  void forget();

  /// {"events":[{"request_id":...,"receivedAt":...,"body":...}, ...]} in the order received.
  std::string events() const;

  /// {"refusals":[{"of":...,"status":...,"field":...,"reason":...,"receivedAt":..., "body":...},
  /// ...]} in the order received; the body as a text.
  std::string refusals() const;

 private:
  static std::string listOf(const char* name, const BoundedLog<std::string>& log);

  BoundedLog<std::string> events_;
  BoundedLog<std::string> refusals_;
};

}  // namespace quenwick::sandbox

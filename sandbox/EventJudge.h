#pragma once

#include <chrono>

namespace quenwick::sandbox {

class JSONNode;

/// When an event may have happened.
struct TimestampWindow {
  std::chrono::system_clock::time_point now;
  std::chrono::seconds tolerance;
};

/// Judges the body of an event or an identify record. Throws a `JSONError` that names the first
/// field found that is missing, mistyped, out of its bounds or unknown.
void judgeEvent(const JSONNode& body, const TimestampWindow& window);

}  // namespace quenwick::sandbox

#pragma once

#include <chrono>
#include <memory>

namespace quenwick::platform {

/// A moment, to the microsecond, as the system's clock tells it.
using Date = std::chrono::sys_time<std::chrono::microseconds>;

/// Seconds since 1970, with their fraction.
inline double secondsSince1970(Date date) {
  return std::chrono::duration<double>(date.time_since_epoch()).count();
}

inline Date dateFrom(double secondsSince1970) {
  return Date(std::chrono::round<std::chrono::microseconds>(
      std::chrono::duration<double>(secondsSince1970)));
}

/// Tells the time; tests give one of their own.
class Clock {
 public:
  virtual ~Clock() = default;
  virtual Date now() const = 0;

  /// The system's clock.
  static std::shared_ptr<const Clock> system();
};

}  // namespace quenwick::platform

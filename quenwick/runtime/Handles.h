#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>

namespace quenwick::runtime {

/// What a host may end later, by a number: subscriptions, resolutions, registrations. From any
/// thread.
class Handles {
 public:
  static Handles& shared();

  /// The number by which `end` is to be called, at most once. What is over is forgotten.
  std::int64_t add(std::function<void()> end, std::function<bool()> isOver);

  /// Ends it; false where it has ended before. Throws an `ArgumentError` for a number that was
  /// never given.
  bool cancel(std::int64_t number);

  void cancelAll();

 private:
  struct Entry {
    std::function<void()> end;
    std::function<bool()> isOver;
  };

  std::mutex mutex_;
  std::map<std::int64_t, Entry> entries_;
  std::int64_t last_ = 0;
};

}  // namespace quenwick::runtime

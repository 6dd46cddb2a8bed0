#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace quenwick::sandbox {

/// Lets threads wait, until their time is over or all waiting is ended.
class Pause {
 public:
  /// False if waiting was ended, before or meanwhile.
  bool wait(std::chrono::milliseconds time) {
    std::unique_lock lock(mutex_);
    return !ended_.wait_for(lock, time, [this] { return isEnded_; });
  }

  void end() {
    {
      const std::lock_guard lock(mutex_);
      isEnded_ = true;
    }
    ended_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable ended_;
  bool isEnded_ = false;
};

}  // namespace quenwick::sandbox

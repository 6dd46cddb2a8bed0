#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

#include "quenwick/platform/Executor.h"

namespace quenwick {

/// Every call that the library makes into its host goes through here: an exception that it throws
/// ends in one error line, and once closed none is made any more. From any thread.
class HostCalls {
 public:
  static HostCalls& shared();

  /// Calls on the main actor, later.
  void post(platform::Work call);
  /// Calls here and now.
  void run(const platform::Work& call);

  /// From now on no call begins. Waits until one that runs has ended, unless it is the caller's
  /// own; whether none runs any more.
  bool close(std::chrono::nanoseconds atMost);
  bool isClosed() const;

 private:
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  int running_ = 0;
  bool isClosed_ = false;
};

}  // namespace quenwick

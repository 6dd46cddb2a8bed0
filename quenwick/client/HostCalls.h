#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "quenwick/platform/Executor.h"

namespace quenwick {

/// Something that holds on to what is the host's.
class HostHolder {
 public:
  virtual ~HostHolder() = default;
  /// Lets go of it, for good. From any thread.
  virtual void release() = 0;
};

/// Every call that the library makes into its host goes through here: an exception that it throws
/// ends in one error line, and once closed none is made any more. From any thread. At exit it is
/// closed, for a second at most, so that no handler meets what of the host is gone already.
class HostCalls {
 public:
  static HostCalls& shared();

  /// Calls on the main actor, later.
  void post(platform::Work call);
  /// Calls here and now; whether it did.
  bool run(const platform::Work& call);

  /// From now on no call begins. Waits until none runs any more but those that wait here
  /// themselves; whether that is so.
  bool close(std::chrono::nanoseconds atMost);

  /// Has the holder let go when all do.
  void add(std::weak_ptr<HostHolder> holder);
  void releaseAll();

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int running_ = 0;
  int waitingInClose_ = 0;  // of those that run
  bool isClosed_ = false;
  std::vector<std::weak_ptr<HostHolder>> holders_;
};

}  // namespace quenwick

#include "quenwick/client/HostCalls.h"

#include <utility>

#include "quenwick/platform/MainActor.h"

namespace quenwick {
namespace {

/// How many calls run on this thread, one within the other.
thread_local int runningHere = 0;

}  // namespace

HostCalls& HostCalls::shared() {
  static auto& instance = *new HostCalls;
  return instance;
}

void HostCalls::post(platform::Work call) {
  platform::MainActor::post([this, call = std::move(call)] { run(call); });
}

void HostCalls::run(const platform::Work& call) {
  {
    std::lock_guard lock(mutex_);
    if (isClosed_) return;
    ++running_;
  }
  ++runningHere;
  platform::runWork(call);
  --runningHere;
  std::lock_guard lock(mutex_);
  --running_;
  changed_.notify_all();
}

bool HostCalls::close(std::chrono::nanoseconds atMost) {
  std::unique_lock lock(mutex_);
  isClosed_ = true;
  return changed_.wait_for(lock, atMost, [this] { return running_ == runningHere; });
}

bool HostCalls::isClosed() const {
  std::lock_guard lock(mutex_);
  return isClosed_;
}

}  // namespace quenwick

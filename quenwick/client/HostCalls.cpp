#include "quenwick/client/HostCalls.h"

#include <utility>

#include "quenwick/platform/MainActor.h"
#include "quenwick/platform/Thread.h"

namespace quenwick {
namespace {

constexpr std::chrono::seconds kPatienceAtExit(1);

/// How many calls run on this thread, one within the other.
thread_local int runningHere = 0;

}  // namespace

HostCalls& HostCalls::shared() {
  static auto& instance = []() -> HostCalls& {
    auto& made = *new HostCalls;
    if (!platform::atProcessExit([] { shared().close(kPatienceAtExit); })) made.close({});
    return made;
  }();
  return instance;
}

void HostCalls::post(platform::Work call) {
  platform::MainActor::post([this, call = std::move(call)] { run(call); });
}

bool HostCalls::run(const platform::Work& call) {
  {
    std::lock_guard lock(mutex_);
    if (isClosed_) return false;
    ++running_;
  }
  ++runningHere;
  platform::runWork(call);
  --runningHere;
  std::lock_guard lock(mutex_);
  --running_;
  changed_.notify_all();
  return true;
}

bool HostCalls::close(std::chrono::nanoseconds atMost) {
  std::unique_lock lock(mutex_);
  isClosed_ = true;
  waitingInClose_ += runningHere;
  changed_.notify_all();
  bool isSo = changed_.wait_for(lock, atMost, [this] { return running_ == waitingInClose_; });
  waitingInClose_ -= runningHere;
  return isSo;
}

void HostCalls::add(std::weak_ptr<HostHolder> holder) {
  std::lock_guard lock(mutex_);
  std::erase_if(holders_, [](const auto& each) { return each.expired(); });
  holders_.push_back(std::move(holder));
}

void HostCalls::releaseAll() {
  std::vector<std::weak_ptr<HostHolder>> holders;
  {
    std::lock_guard lock(mutex_);
    holders = holders_;
  }
  for (const auto& each : holders) {
    if (auto holder = each.lock()) holder->release();
  }
}

}  // namespace quenwick

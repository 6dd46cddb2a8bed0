#include "quenwick/events/EventLedger.h"

namespace quenwick {

void EventLedger::offer(EventState state) {
  std::lock_guard lock(mutex_);
  ++counts_.offered;
  ++count(state);
}

void EventLedger::move(EventState from, EventState to) {
  bool isNowIdle = false;
  {
    std::lock_guard lock(mutex_);
    --count(from);
    ++count(to);
    isNowIdle = isIdle();
  }
  if (isNowIdle) idle_.notify_all();
}

EventCounts EventLedger::counts() const {
  std::lock_guard lock(mutex_);
  return counts_;
}

bool EventLedger::waitUntilIdle(std::chrono::nanoseconds atMost) const {
  std::unique_lock lock(mutex_);
  return idle_.wait_for(lock, atMost, [this] { return isIdle(); });
}

}  // namespace quenwick

#include "quenwick/events/EventLedger.h"

namespace quenwick {
namespace {

/// In the order of the enumeration.
constexpr std::array<std::string_view, kEventStates> kNames = {
    "waiting",
    "in flight",
    "acknowledged",
    "refused: events were not enabled",
    "refused: unsound",
    "failed: no credential",
    "failed: unauthorized",
    "failed: status",
    "failed: transport",
    "failed: answer",
    "failed: other",
    "dropped: superseded",
    "dropped: overflow",
    "dropped: manager gone",
};

}  // namespace

std::string_view nameOf(EventState state) { return kNames.at(static_cast<std::size_t>(state)); }

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

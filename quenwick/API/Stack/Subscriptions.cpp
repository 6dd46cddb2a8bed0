#include "quenwick/API/Stack/Subscriptions.h"

#include <utility>

namespace quenwick {

Subscriptions::ID Subscriptions::reserve() {
  std::lock_guard lock(mutex_);
  live_.try_emplace(nextID_);
  return nextID_++;
}

void Subscriptions::keep(ID id, platform::Cancellable subscription) {
  // Declared before the lock, so that what is dropped ends after it.
  auto dropped = std::move(subscription);
  std::lock_guard lock(mutex_);
  auto found = live_.find(id);
  if (found != live_.end()) std::swap(found->second, dropped);
}

void Subscriptions::end(ID id) {
  decltype(live_)::node_type ended;
  std::lock_guard lock(mutex_);
  ended = live_.extract(id);
}

std::size_t Subscriptions::count() const {
  std::lock_guard lock(mutex_);
  return live_.size();
}

}  // namespace quenwick

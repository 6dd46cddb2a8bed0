#include "quenwick/client/EventsEnabled.h"

#include "quenwick/client/HostCalls.h"

namespace quenwick {

EventsEnabled& EventsEnabled::shared() {
  static auto& instance = *new EventsEnabled;
  return instance;
}

void EventsEnabled::setHandler(std::function<void()> handler) {
  bool isDue = false;
  {
    std::lock_guard lock(mutex_);
    handler_.swap(handler);
    isDue = isAnnounced_ && handler_;
  }
  if (isDue) tell();
}

void EventsEnabled::announce() {
  {
    std::lock_guard lock(mutex_);
    isAnnounced_ = true;
  }
  tell();
}

void EventsEnabled::tell() {
  HostCalls::shared().post([this] {
    std::function<void()> handler;
    {
      std::lock_guard lock(mutex_);
      handler = handler_;
    }
    if (handler) handler();
  });
}

}  // namespace quenwick

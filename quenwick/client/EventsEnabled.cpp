#include "quenwick/client/EventsEnabled.h"

#include <algorithm>

#include "quenwick/client/HostCalls.h"

namespace quenwick {

// Handlers are called and destroyed without the lock: they are the host's.

void EventsEnabled::setHandler(std::function<void()> handler) {
  std::uint64_t announced = 0;
  {
    std::lock_guard lock(mutex_);
    if (isReleased_) return;
    handler_.swap(handler);
    announced = announced_;
    told_ = std::max<std::uint64_t>(announced, 1) - 1;
  }
  if (announced > 0) tell(announced);
}

void EventsEnabled::announce() {
  std::uint64_t announced = 0;
  {
    std::lock_guard lock(mutex_);
    announced = ++announced_;
  }
  tell(announced);
}

void EventsEnabled::release() {
  std::function<void()> handler;
  std::lock_guard lock(mutex_);
  isReleased_ = true;
  handler.swap(handler_);
}

void EventsEnabled::tell(std::uint64_t announcement) {
  HostCalls::shared().post([weak = weak_from_this(), announcement] {
    auto self = weak.lock();
    if (!self) return;
    std::function<void()> handler;
    {
      std::lock_guard lock(self->mutex_);
      if (self->told_ >= announcement) return;
      self->told_ = announcement;
      handler = self->handler_;
    }
    if (handler) handler();
  });
}

}  // namespace quenwick

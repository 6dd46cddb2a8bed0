#include "quenwick/client/StoredDeeplink.h"

#include <atomic>
#include <utility>
#include <vector>

namespace quenwick {

struct StoredDeeplink::Subscriber {
  explicit Subscriber(Receive toCall) : receive(std::move(toCall)) {}

  void take(const Link& link) const {
    platform::runWork([&] {
      if (isLive && receive) receive(link);
    });
  }

  const Receive receive;
  std::atomic<bool> isLive = true;
  bool hasBegun = false;  // under the owner's lock
};

// Receivers are called and destroyed without the lock: they are the host's.

std::shared_ptr<StoredDeeplink> StoredDeeplink::make() {
  auto made = std::make_shared<StoredDeeplink>();
  HostCalls::shared().add(made);
  return made;
}

StoredDeeplink::Link StoredDeeplink::value() const {
  std::lock_guard lock(mutex_);
  return value_;
}

void StoredDeeplink::send(const std::string& link) {
  std::vector<std::shared_ptr<Subscriber>> subscribers;
  {
    std::lock_guard lock(mutex_);
    value_ = link;
    for (const auto& [id, subscriber] : subscribers_) {
      if (subscriber->hasBegun) subscribers.push_back(subscriber);
    }
  }
  for (const auto& subscriber : subscribers) subscriber->take(link);
}

platform::Cancellable StoredDeeplink::subscribe(Receive receive) {
  auto subscriber = std::make_shared<Subscriber>(std::move(receive));
  int id = 0;
  {
    std::lock_guard lock(mutex_);
    if (isReleased_) return {};
    id = nextID_++;
    subscribers_.emplace(id, std::move(subscriber));
  }
  auto weak = weak_from_this();
  HostCalls::shared().post([weak, id] {
    if (auto self = weak.lock()) self->begin(id);
  });
  return platform::Cancellable([weak, id] {
    if (auto self = weak.lock()) self->end(id);
  });
}

/// On the main actor: what was sent before counts as the value of the moment.
void StoredDeeplink::begin(int id) {
  std::shared_ptr<Subscriber> subscriber;
  Link link;
  {
    std::lock_guard lock(mutex_);
    auto found = subscribers_.find(id);
    if (found == subscribers_.end()) return;
    subscriber = found->second;
    subscriber->hasBegun = true;
    link = value_;
  }
  subscriber->take(link);
}

void StoredDeeplink::end(int id) {
  decltype(subscribers_)::node_type ended;
  std::lock_guard lock(mutex_);
  ended = subscribers_.extract(id);
  if (ended) ended.mapped()->isLive = false;
}

void StoredDeeplink::release() {
  decltype(subscribers_) ended;
  std::lock_guard lock(mutex_);
  isReleased_ = true;
  for (const auto& [id, subscriber] : subscribers_) subscriber->isLive = false;
  ended.swap(subscribers_);
}

}  // namespace quenwick

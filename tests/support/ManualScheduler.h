#pragma once

#include <atomic>
#include <chrono>
#include <list>
#include <memory>
#include <mutex>
#include <utility>

#include "quenwick/events/Scheduler.h"

namespace quenwick::tests {

/// A scheduler whose time stands until a test moves it, which runs what has come due.
class ManualScheduler : public Scheduler {
 public:
  Moment now() const override {
    std::lock_guard lock(mutex_);
    return now_;
  }

  platform::Cancellable postAt(Moment moment, platform::Work work) override {
    auto entry = std::make_shared<Entry>(moment, std::move(work));
    std::lock_guard lock(mutex_);
    entries_.push_back(entry);
    return platform::Cancellable([weak = std::weak_ptr(entry)] {
      if (auto live = weak.lock()) live->isLive = false;
    });
  }

  void advance(Moment::duration by) {
    std::unique_lock lock(mutex_);
    now_ += by;
    for (auto entry = entries_.begin(); entry != entries_.end();) {
      auto candidate = *entry;
      if (candidate->moment > now_) {
        ++entry;
        continue;
      }
      entries_.erase(entry);
      lock.unlock();
      if (candidate->isLive) candidate->work();
      lock.lock();
      entry = entries_.begin();
    }
  }

 private:
  struct Entry {
    Moment moment;
    platform::Work work;
    std::atomic<bool> isLive = true;

    Entry(Moment at, platform::Work toRun) : moment(at), work(std::move(toRun)) {}
  };

  mutable std::mutex mutex_;
  Moment now_ = Moment(std::chrono::hours(1));
  std::list<std::shared_ptr<Entry>> entries_;
};

}  // namespace quenwick::tests

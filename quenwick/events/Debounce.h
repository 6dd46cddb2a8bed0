#pragma once

#include <algorithm>
#include <chrono>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "quenwick/events/Scheduler.h"

namespace quenwick {

/// Hands on the latest of the values that it is given once no new one has come for half a second,
/// on the scheduler's queue. From any thread; nothing is handed on any more once it is destroyed.
///
/// A value comes at the moment it is offered, though it may be set later: what is announced within
/// a quiet period is waited for. A value that had its quiet period is handed on, whatever was set
/// by the time the scheduler looked.
template <class T>
class Debounce : public std::enable_shared_from_this<Debounce<T>> {
 public:
  using Moment = Scheduler::Moment;
  static constexpr std::chrono::milliseconds kQuiet{500};

  /// A value that was offered and is not set yet. Without one at its end it leaves no trace.
  class Announcement {
   public:
    Announcement(std::weak_ptr<Debounce> debounce, Moment offered)
        : debounce_(std::move(debounce)), offered_(offered) {}
    Announcement(Announcement&&) noexcept = default;
    Announcement& operator=(Announcement&&) = delete;
    ~Announcement() {
      if (auto debounce = debounce_.lock()) debounce->endAnnouncement(offered_);
    }

    Moment offered() const { return offered_; }
    std::shared_ptr<Debounce> debounce() const { return debounce_.lock(); }

   private:
    std::weak_ptr<Debounce> debounce_;  // none in what was moved from
    Moment offered_;
  };

  explicit Debounce(std::shared_ptr<Scheduler> scheduler) : scheduler_(std::move(scheduler)) {}

  void setCompletion(std::function<void(T)> completion) {
    std::lock_guard lock(mutex_);
    std::swap(completion_, completion);
  }

  /// A value is offered now.
  Announcement announce() {
    std::lock_guard lock(mutex_);
    announced_.push_back(scheduler_->now());
    return {this->weak_from_this(), announced_.back()};
  }

  /// The value begins the quiet period anew, as of the moment at which it was offered. Returns what
  /// will not be handed on: the value that waited until now or, after `close`, this one.
  std::optional<T> setValue(T value, Moment offered) {
    std::lock_guard lock(mutex_);
    if (isClosed_) return value;
    if (value_ && offered >= due_) quiet_.push_back(*std::exchange(value_, std::nullopt));
    due_ = value_ ? std::max(due_, offered + kQuiet) : offered + kQuiet;
    // Always, as the last one may have been lost by a queue that fails.
    timer_ = wake(quiet_.empty() ? due_ : offered);
    return std::exchange(value_, std::move(value));
  }

  /// Takes the waiting values, which are then not handed on.
  std::vector<T> take() {
    std::lock_guard lock(mutex_);
    timer_.cancel();
    return takeAll();
  }

  /// The same, and takes no value from now on.
  std::vector<T> close() {
    std::lock_guard lock(mutex_);
    isClosed_ = true;
    timer_.cancel();
    return takeAll();
  }

  bool isClosed() const {
    std::lock_guard lock(mutex_);
    return isClosed_;
  }

 private:
  platform::Cancellable wake(Moment moment) {
    return scheduler_->postAt(moment, [weak = this->weak_from_this()] {
      if (auto self = weak.lock()) self->look();
    });
  }

  std::vector<T> takeAll() {
    if (value_) quiet_.push_back(*std::exchange(value_, std::nullopt));
    return std::exchange(quiet_, {});
  }

  bool isAwaiting() const {
    return std::ranges::any_of(announced_, [this](Moment offered) { return offered < due_; });
  }

  void look() {
    std::vector<T> quiet;
    std::function<void(T)> completion;
    {
      std::lock_guard lock(mutex_);
      bool isDue = value_ && scheduler_->now() >= due_;
      if (value_ && !isDue) timer_ = wake(due_);
      quiet = isDue && !isAwaiting() ? takeAll() : std::exchange(quiet_, {});
      completion = completion_;
    }
    for (auto& value : quiet) {
      if (completion) completion(std::move(value));
    }
  }

  void endAnnouncement(Moment offered) {
    std::lock_guard lock(mutex_);
    if (auto found = std::ranges::find(announced_, offered); found != announced_.end()) {
      announced_.erase(found);
    }
    if (value_ && scheduler_->now() >= due_) timer_ = wake(due_);
  }

  const std::shared_ptr<Scheduler> scheduler_;
  mutable std::mutex mutex_;
  std::function<void(T)> completion_;
  std::deque<Moment> announced_;
  std::optional<T> value_;
  std::vector<T> quiet_;  // those that had their quiet period before another was set
  Moment due_;
  platform::Cancellable timer_;
  bool isClosed_ = false;
};

}  // namespace quenwick

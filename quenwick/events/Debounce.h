#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "quenwick/events/Scheduler.h"

namespace quenwick {

/// Hands on the latest of the values that it is given once no new one has come for half a second,
/// on the scheduler's queue. From any thread; nothing is handed on any more once it is destroyed.
template <class T>
class Debounce : public std::enable_shared_from_this<Debounce<T>> {
 public:
  static constexpr std::chrono::milliseconds kQuiet{500};

  explicit Debounce(std::shared_ptr<Scheduler> scheduler) : scheduler_(std::move(scheduler)) {}

  void setCompletion(std::function<void(T)> completion) {
    std::lock_guard lock(mutex_);
    std::swap(completion_, completion);
  }

  /// The value begins the quiet period anew, as of the moment at which it was offered. Returns what
  /// will not be handed on: the value that waited until now or, after `close`, this one.
  std::optional<T> setValue(T value, Scheduler::Moment offered) {
    std::lock_guard lock(mutex_);
    if (isClosed_) return value;
    due_ = offered + kQuiet;
    if (!value_) timer_ = wake(due_);
    return std::exchange(value_, std::move(value));
  }

  /// Takes the waiting value, which is then not handed on.
  std::optional<T> take() {
    std::lock_guard lock(mutex_);
    timer_.cancel();
    return std::exchange(value_, std::nullopt);
  }

  /// The same, and takes no value from now on.
  std::optional<T> close() {
    {
      std::lock_guard lock(mutex_);
      isClosed_ = true;
    }
    return take();
  }

  bool isClosed() const {
    std::lock_guard lock(mutex_);
    return isClosed_;
  }

 private:
  platform::Cancellable wake(Scheduler::Moment moment) {
    return scheduler_->postAt(moment, [weak = this->weak_from_this()] {
      if (auto self = weak.lock()) self->look();
    });
  }

  void look() {
    std::optional<T> quiet;
    std::function<void(T)> completion;
    {
      std::lock_guard lock(mutex_);
      if (!value_) return;
      if (scheduler_->now() < due_) {
        timer_ = wake(due_);
        return;
      }
      quiet = std::exchange(value_, std::nullopt);
      completion = completion_;
    }
    if (completion) completion(*std::move(quiet));
  }

  const std::shared_ptr<Scheduler> scheduler_;
  mutable std::mutex mutex_;
  std::function<void(T)> completion_;
  std::optional<T> value_;
  Scheduler::Moment due_;
  platform::Cancellable timer_;
  bool isClosed_ = false;
};

}  // namespace quenwick

#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace quenwick::platform {

/// The one of its kind that is in force. Who has got it keeps it, also once another takes its
/// place. From any thread.
template <class Kind>
class Replaceable {
 public:
  explicit Replaceable(std::shared_ptr<Kind> first = nullptr) : current_(std::move(first)) {}

  std::shared_ptr<Kind> get() const {
    std::lock_guard lock(mutex_);
    return current_;
  }

  /// The one in force; where there is none, this one from now on.
  std::shared_ptr<Kind> orElse(const std::shared_ptr<Kind>& first) {
    std::lock_guard lock(mutex_);
    if (!current_) current_ = first;
    return current_;
  }

  /// The one that is replaced may go, and does so outside of the lock.
  void replace(std::shared_ptr<Kind> by) {
    std::lock_guard lock(mutex_);
    std::swap(current_, by);
  }

 private:
  mutable std::mutex mutex_;
  std::shared_ptr<Kind> current_;
};

}  // namespace quenwick::platform

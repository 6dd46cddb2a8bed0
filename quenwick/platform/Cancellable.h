#pragma once

#include <functional>
#include <utility>

#include "quenwick/platform/Export.h"

namespace quenwick::platform::inline v0 {

/// Ends what it stands for (a subscription, a timer) when destroyed or cancelled.
class [[nodiscard]] QUENWICK_EXPORT Cancellable {
 public:
  Cancellable() = default;
  explicit Cancellable(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  Cancellable(Cancellable&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  Cancellable& operator=(Cancellable&& other) noexcept {
    std::swap(cancel_, other.cancel_);
    return *this;
  }
  ~Cancellable() { cancel(); }

  void cancel() {
    if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
  }

 private:
  std::function<void()> cancel_;
};

}  // namespace quenwick::platform::inline v0

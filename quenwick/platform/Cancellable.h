#pragma once

#include <functional>
#include <utility>

namespace quenwick::platform::inline v0 {

/// Ends what it stands for (a subscription, a timer) when destroyed or cancelled.
class [[nodiscard]] Cancellable {
 public:
  Cancellable() = default;
  /// Calls `cancel` once, at the end.
  explicit Cancellable(std::function<void()> cancel) : cancel_(std::move(cancel)) {}
  /// Takes the other's part; the other stands for nothing then.
  Cancellable(Cancellable&& other) noexcept : cancel_(std::exchange(other.cancel_, nullptr)) {}
  /// Swaps parts with the other, which ends at its own destruction what stood here.
  Cancellable& operator=(Cancellable&& other) noexcept {
    std::swap(cancel_, other.cancel_);
    return *this;
  }
  ~Cancellable() { cancel(); }

  /// Ends it now; once is enough. From the thread that holds it.
  void cancel() {
    if (auto cancel = std::exchange(cancel_, nullptr)) cancel();
  }

 private:
  std::function<void()> cancel_;
};

}  // namespace quenwick::platform::inline v0

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

namespace quenwick::platform {

/// Something to be done.
using Work = std::function<void()>;

/// Runs the work. Work must not throw; what escapes it all the same ends here, with an error line.
void runWork(const Work& work) noexcept;

/// Runs posted work at some later time, never inside `post`.
class Executor {
 public:
  virtual ~Executor() = default;
  /// From any thread.
  virtual void post(Work work) = 0;
};

/// The library's pool: as many threads as cores, at most four. Lives for the process.
Executor& pool();

/// An executor on the pool that runs its work one after the other, in the order it was posted.
std::shared_ptr<Executor> makeStrand();

/// Ends what it stands for (a subscription, a timer) when destroyed or cancelled.
class [[nodiscard]] Cancellable {
 public:
  Cancellable() = default;
  /// Calls `cancel` once, at the end.
  explicit Cancellable(Work cancel) : cancel_(std::move(cancel)) {}
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
  Work cancel_;
};

/// Posts the work to the executor once the duration has passed, unless cancelled before.
Cancellable postAfter(std::chrono::nanoseconds duration, Executor& executor, Work work);

}  // namespace quenwick::platform

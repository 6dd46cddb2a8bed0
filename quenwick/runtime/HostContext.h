#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>

namespace quenwick::runtime {

/// What a host gave along with a function. It is let go of, by the host's `destroy`, once: after
/// the last owner, or when all are closed, and never while a call uses it. From any thread.
class HostContext {
 public:
  using Destroy = void (*)(void* pointer);

  /// None can be made any more once all are closed: what is made then is let go of at once.
  static std::shared_ptr<HostContext> make(void* pointer, Destroy destroy);

  /// Lets go of all there are, and waits until no call uses one, unless it is the caller's own; at
  /// most for the duration. Whether that is so.
  static bool closeAll(std::chrono::nanoseconds atMost);

  /// Calls `call` with the pointer, unless it was let go of.
  void use(const std::function<void(void* pointer)>& call) const;

  /// Lets go of it now.
  void release();

 private:
  class Pointer;

  explicit HostContext(std::shared_ptr<const Pointer> pointer) : pointer_(std::move(pointer)) {}

  mutable std::mutex mutex_;
  std::shared_ptr<const Pointer> pointer_;
};

}  // namespace quenwick::runtime

#pragma once

namespace quenwick::platform {

/// Ends another thread's wait on a descriptor, for the wait that is or for the next one.
class WakeUp {
 public:
  WakeUp();
  ~WakeUp();
  WakeUp(const WakeUp&) = delete;
  WakeUp& operator=(const WakeUp&) = delete;

  /// Can be read from once `wake` was called; less than 0 where the system had none to give.
  int descriptor() const { return descriptor_; }

  /// From any thread.
  void wake() const;
  /// By the thread that waits, before it looks for what it was woken for.
  void clear() const;

 private:
  int descriptor_;
};

}  // namespace quenwick::platform

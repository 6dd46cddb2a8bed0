#pragma once

#include <chrono>

#include "quenwick/platform/Executor.h"

namespace quenwick::ui {

/// Runs work in GLib's default main context, in the order it was posted.
class MainContext : public platform::Executor {
 public:
  void post(platform::Work work) override;
};

/// Calls its work once in the default main context, unless it is stopped or destroyed before. Used
/// on that context's thread.
class MainTimer {
 public:
  MainTimer() = default;
  ~MainTimer() { stop(); }
  MainTimer(const MainTimer&) = delete;
  MainTimer& operator=(const MainTimer&) = delete;

  /// Ends what it was started for before.
  void start(std::chrono::milliseconds duration, platform::Work work);
  void stop();

 private:
  unsigned source_ = 0;
  platform::Work work_;
};

}  // namespace quenwick::ui

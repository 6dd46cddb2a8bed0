#include "quenwick/platform/SerialThread.h"

#include <string>
#include <system_error>
#include <utility>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {

void SerialThread::post(Work work) {
  {
    std::lock_guard lock(mutex_);
    waiting_.push_back(std::move(work));
    if (!isStarted_) start();
  }
  changed_.notify_all();
}

void SerialThread::start() {
  try {
    startThread(name_, [this] { run(); }).detach();
    isStarted_ = true;
  } catch (const std::system_error& error) {
    // The work waits; the next post tries again.
    logPlatformError(std::string("a thread cannot be started: ") + error.what());
  }
}

bool SerialThread::isIdle() const {
  std::lock_guard lock(mutex_);
  return waiting_.empty() && !isRunning_;
}

bool SerialThread::drain(std::chrono::nanoseconds atMost) {
  // Shared: the work may still be waiting when the patience here is at its end.
  struct Marker {
    std::mutex mutex;
    std::condition_variable changed;
    bool isReached = false;
  };
  if (isIdle()) return true;
  auto marker = std::make_shared<Marker>();
  post([marker] {
    std::lock_guard lock(marker->mutex);
    marker->isReached = true;
    marker->changed.notify_all();
  });
  std::unique_lock lock(marker->mutex);
  return marker->changed.wait_for(lock, atMost, [&] { return marker->isReached; });
}

void SerialThread::run() {
  id_ = std::this_thread::get_id();
  for (;;) {
    Work work;
    {
      std::unique_lock lock(mutex_);
      isRunning_ = false;
      changed_.wait(lock, [this] { return !waiting_.empty(); });
      work = std::move(waiting_.front());
      waiting_.pop_front();
      isRunning_ = true;
    }
    runWork(work);
  }
}

}  // namespace quenwick::platform

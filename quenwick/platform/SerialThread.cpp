#include "quenwick/platform/SerialThread.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {

void SerialThread::post(Work work) {
  bool isFirst = false;
  HeldLog held;  // until the lock is free
  {
    std::lock_guard lock(mutex_);
    isFirst = waiting_.empty();
    if (isFirst) due_ = std::chrono::steady_clock::now() + lull_;
    waiting_.push_back(std::move(work));
    // Where there is no room for a thread the work waits; the next post tries again.
    if (!isStarted_) isStarted_ = startDetachedThread(name_, [this] { run(); });
  }
  if (isFirst) changed_.notify_one();
}

void SerialThread::hurry() {
  {
    std::lock_guard lock(mutex_);
    if (waiting_.empty() || std::exchange(isHurried_, true)) return;
  }
  changed_.notify_one();
}

bool SerialThread::isIdle() const {
  std::lock_guard lock(mutex_);
  return waiting_.empty() && !isRunning_;
}

bool SerialThread::drain(std::chrono::nanoseconds atMost) {
  return isIdle() || runLast([] {}, atMost);
}

bool SerialThread::end(std::chrono::nanoseconds atMost) {
  {
    std::lock_guard lock(mutex_);
    if (waiting_.empty() && !isRunning_) isEnded_ = true;
  }
  bool hasRun = isEnded_ || runLast([this] { isEnded_ = true; }, atMost);
  isEnded_ = true;
  return hasRun;
}

/// Waits until the work, and all before it, has run.
bool SerialThread::runLast(Work last, std::chrono::nanoseconds atMost) {
  // Shared: the work may still be waiting when the patience here is at its end.
  struct Marker {
    std::mutex mutex;
    std::condition_variable changed;
    bool isReached = false;
  };
  auto marker = std::make_shared<Marker>();
  post([marker, last = std::move(last)] {
    last();
    std::lock_guard lock(marker->mutex);
    marker->isReached = true;
    marker->changed.notify_all();
  });
  hurry();
  std::unique_lock lock(marker->mutex);
  return marker->changed.wait_for(lock, atMost, [&] { return marker->isReached; });
}

void SerialThread::run() {
  id_ = std::this_thread::get_id();
  for (;;) {
    auto batch = nextBatch();
    for (; !batch.empty() && !isEnded_; batch.pop_front()) runWork(batch.front());
    keep(std::move(batch));
  }
}

/// What came too late to run is kept for good, as the tasks are that wait for it.
void SerialThread::keep(std::deque<Work> batch) {
  if (batch.empty()) return;
  std::lock_guard lock(mutex_);
  std::ranges::move(waiting_, std::back_inserter(batch));
  waiting_ = std::move(batch);
}

/// Waits until there is work and its lull is over.
std::deque<Work> SerialThread::nextBatch() {
  std::unique_lock lock(mutex_);
  isRunning_ = false;
  changed_.wait(lock, [this] { return !waiting_.empty() && !isEnded_; });
  if (lull_.count() > 0) changed_.wait_until(lock, due_, [this] { return isHurried_; });
  isHurried_ = false;
  isRunning_ = true;
  return std::exchange(waiting_, {});
}

}  // namespace quenwick::platform

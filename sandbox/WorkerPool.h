#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace quenwick::sandbox {

/// Runs jobs that may wait for long, each on a thread of its own while there are no more than
/// `most`; threads are made when no idle one is left, and kept.
class WorkerPool {
 public:
  explicit WorkerPool(std::size_t most) : most_(most) {}
  ~WorkerPool() { finish(); }
  WorkerPool(const WorkerPool&) = delete;
  WorkerPool& operator=(const WorkerPool&) = delete;

  void run(std::function<void()> job);

  /// Waits until all jobs are done. No job may be added after it.
  void finish();

 private:
  void work();

  const std::size_t most_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::function<void()>> jobs_;
  std::vector<std::thread> threads_;
  std::size_t idle_ = 0;
  bool isFinishing_ = false;
};

}  // namespace quenwick::sandbox

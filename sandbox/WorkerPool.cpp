#include "sandbox/WorkerPool.h"

namespace quenwick::sandbox {

void WorkerPool::run(std::function<void()> job) {
  const std::lock_guard lock(mutex_);
  jobs_.push_back(std::move(job));
  if (jobs_.size() > idle_ && threads_.size() < most_) {
    threads_.emplace_back([this] { work(); });
  } else {
    changed_.notify_one();
  }
}

void WorkerPool::finish() {
  {
    const std::lock_guard lock(mutex_);
    isFinishing_ = true;
  }
  changed_.notify_all();
  for (std::thread& thread : threads_) thread.join();
  threads_.clear();
}

void WorkerPool::work() {
  std::unique_lock lock(mutex_);
  while (true) {
    ++idle_;
    changed_.wait(lock, [this] { return !jobs_.empty() || isFinishing_; });
    --idle_;
    if (jobs_.empty()) return;
    const auto job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    job();
    lock.lock();
  }
}

}  // namespace quenwick::sandbox

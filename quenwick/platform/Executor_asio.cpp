#include <algorithm>
#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <chrono>
#include <memory>
#include <optional>
#include <thread>
#include <utility>
#include <vector>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/PostsTogether.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

namespace asio = boost::asio;

constexpr auto kThreadName = "quenwick-pool";

class Pool : public Executor {
 public:
  Pool() : work_(asio::make_work_guard(context_)) {}

  /// Its first thread starts the others: a host's call waits for the start of one alone. Where
  /// there is no room for a thread, what is posted waits until there is.
  void startOnce() {
    if (isStarted_ || isStarted_.exchange(true)) return;
    isStarted_ = startDetachedThread(kThreadName, [this] {
      startOthers();
      context_.run();
    });
  }

  void post(Work work) override {
    if (PostsTogether::take(work)) return;
    asio::post(context_, [work = std::move(work)] { runWork(work); });
  }

  asio::io_context& context() { return context_; }

 private:
  void startOthers() {
    auto count = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
    for (unsigned i = 1; i < count; ++i) {
      startDetachedThread(kThreadName, [this] { context_.run(); });
    }
  }

  asio::io_context context_;
  asio::executor_work_guard<asio::io_context::executor_type> work_;
  std::atomic<bool> isStarted_ = false;
};

Pool& sharedPool() {
  static auto& instance = *new Pool;
  instance.startOnce();
  return instance;
}

/// Works that came together. Who begins to take them calls one more thread, so that none of them
/// waits for the end of another while the pool has a thread.
class Batch : public std::enable_shared_from_this<Batch> {
 public:
  explicit Batch(std::vector<Work> works) : works_(std::move(works)) {}

  void post() {
    asio::post(sharedPool().context(), [self = shared_from_this()] { self->run(); });
  }

 private:
  void run() {
    bool hasCalled = false;
    for (auto i = next_++; i < works_.size(); i = next_++) {
      if (i + 1 < works_.size() && !std::exchange(hasCalled, true)) post();
      runWork(std::exchange(works_[i], nullptr));
    }
  }

  std::vector<Work> works_;
  std::atomic<std::size_t> next_ = 0;
};

thread_local PostsTogether* outermost = nullptr;

class Strand : public Executor {
 public:
  void post(Work work) override {
    asio::post(strand_, [work = std::move(work)] { runWork(work); });
  }

 private:
  asio::strand<asio::io_context::executor_type> strand_{sharedPool().context().get_executor()};
};

/// Posts work at a time. What is set is touched on the strand alone; `isLive_` lets a cancel hold
/// at once.
class Timer : public std::enable_shared_from_this<Timer> {
 public:
  using Clock = std::chrono::steady_clock;

  Timer(std::chrono::nanoseconds duration, Executor& executor, Work work)
      : due_(after(duration)), executor_(executor), work_(std::move(work)) {}

  void start() {
    asio::post(strand_, [self = shared_from_this()] { self->wait(); });
  }

  void cancel() {
    if (!isLive_.exchange(false)) return;
    asio::post(strand_, [self = shared_from_this()] {
      self->timer_.reset();
      self->work_ = nullptr;
    });
  }

 private:
  /// As late as there is a time for it.
  static Clock::time_point after(std::chrono::nanoseconds duration) {
    auto now = Clock::now();
    return now + std::min(duration, Clock::time_point::max() - now);
  }

  void wait() {
    if (!isLive_) return;
    try {
      timer_.emplace(strand_, due_).async_wait([self = shared_from_this()](const auto& error) {
        if (!error) self->fire();
      });
    } catch (const boost::system::system_error&) {
      waitWithoutDescriptor();
    }
  }

  /// The first timer of a process needs some, of which the host may have none left for a while.
  void waitWithoutDescriptor() {
    if (Clock::now() >= due_) return fire();
    std::this_thread::sleep_for(kPause);
    start();
  }

  void fire() {
    if (isLive_.exchange(false)) runWork([this] { executor_.post(std::move(work_)); });
  }

  static constexpr std::chrono::milliseconds kPause{5};
  asio::strand<asio::io_context::executor_type> strand_{sharedPool().context().get_executor()};
  std::optional<asio::steady_timer> timer_;
  std::atomic<bool> isLive_ = true;
  const Clock::time_point due_;
  Executor& executor_;
  Work work_;
};

}  // namespace

Executor& pool() { return sharedPool(); }

PostsTogether::PostsTogether() {
  if (!outermost) outermost = this;
}

PostsTogether::~PostsTogether() {
  if (outermost != this) return;
  outermost = nullptr;
  if (works_.size() == 1) sharedPool().post(std::move(works_.front()));
  if (works_.size() > 1) std::make_shared<Batch>(std::move(works_))->post();
}

bool PostsTogether::take(Work& work) {
  if (!outermost) return false;
  outermost->works_.push_back(std::move(work));
  return true;
}

std::shared_ptr<Executor> makeStrand() { return std::make_shared<Strand>(); }

Cancellable postAfter(std::chrono::nanoseconds duration, Executor& executor, Work work) {
  auto timer = std::make_shared<Timer>(duration, executor, std::move(work));
  timer->start();
  return Cancellable([timer] { timer->cancel(); });
}

}  // namespace quenwick::platform

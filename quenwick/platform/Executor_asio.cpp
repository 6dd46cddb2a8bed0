#include <algorithm>
#include <atomic>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/strand.hpp>
#include <thread>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/Thread.h"

namespace quenwick::platform {
namespace {

namespace asio = boost::asio;

class Pool : public Executor {
 public:
  Pool() : work_(asio::make_work_guard(context_)) {
    auto count = std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
    for (unsigned i = 0; i < count; ++i) {
      startThread("quenwick-pool", [this] { context_.run(); }).detach();
    }
  }

  void post(Work work) override {
    asio::post(context_, [work = std::move(work)] { runWork(work); });
  }

  asio::io_context& context() { return context_; }

 private:
  asio::io_context context_;
  asio::executor_work_guard<asio::io_context::executor_type> work_;
};

Pool& sharedPool() {
  static auto& instance = *new Pool;
  return instance;
}

class Strand : public Executor {
 public:
  void post(Work work) override {
    asio::post(strand_, [work = std::move(work)] { runWork(work); });
  }

 private:
  asio::strand<asio::io_context::executor_type> strand_{sharedPool().context().get_executor()};
};

}  // namespace

Executor& pool() { return sharedPool(); }

std::shared_ptr<Executor> makeStrand() { return std::make_shared<Strand>(); }

Cancellable postAfter(std::chrono::nanoseconds duration, Executor& executor, Work work) {
  // The timer is touched on the pool alone; `isLive` lets a cancel hold at once.
  struct Timer {
    explicit Timer(asio::io_context& context) : timer(asio::make_strand(context)) {}
    asio::steady_timer timer;
    std::atomic<bool> isLive = true;
  };
  auto state = std::make_shared<Timer>(sharedPool().context());
  asio::post(state->timer.get_executor(), [state, duration, &executor, work = std::move(work)] {
    if (!state->isLive) return;
    state->timer.expires_after(duration);
    state->timer.async_wait([state, &executor, work](const boost::system::error_code& error) {
      if (error || !state->isLive.exchange(false)) return;
      runWork([&executor, &work] { executor.post(work); });
    });
  });
  return Cancellable([state] {
    if (!state->isLive.exchange(false)) return;
    asio::post(state->timer.get_executor(), [state] { state->timer.cancel(); });
  });
}

}  // namespace quenwick::platform

#pragma once

#include <coroutine>
#include <exception>
#include <functional>
#include <memory>
#include <semaphore>
#include <stop_token>
#include <utility>
#include <variant>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/TaskHandle.h"

namespace quenwick::platform {

namespace detail {

/// The outcome of a task: nothing yet, a value, or the exception it threw.
template <class T>
class Outcome {
 public:
  template <class... Value>
  void setValue(Value&&... value) {
    outcome_.template emplace<1>(std::forward<Value>(value)...);
  }
  void setError(std::exception_ptr error) { outcome_.template emplace<2>(std::move(error)); }
  /// What the work returns or throws. Nothing here holds the exception when this returns.
  template <class Work>
  void setResult(Work&& work) {
    try {
      if constexpr (std::is_void_v<T>) {
        work();
        setValue();
      } else {
        setValue(work());
      }
    } catch (...) {
      setError(std::current_exception());
    }
  }

  T take() {
    if (auto error = std::get_if<2>(&outcome_)) std::rethrow_exception(*error);
    if constexpr (!std::is_void_v<T>) return std::move(std::get<1>(outcome_));
  }

 private:
  using Stored = std::conditional_t<std::is_void_v<T>, std::monostate, T>;
  std::variant<std::monostate, Stored, std::exception_ptr> outcome_;
};

struct PromiseBase {
  struct Final {
    bool await_ready() noexcept { return false; }
    template <class Promise>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> ended) noexcept {
      return ended.promise().awaiting;
    }
    void await_resume() noexcept {}
  };

  std::suspend_always initial_suspend() noexcept { return {}; }
  Final final_suspend() noexcept { return {}; }

  std::coroutine_handle<> awaiting = std::noop_coroutine();
};

template <class T>
struct Promise;

}  // namespace detail

/// An asynchronous operation that starts when it is awaited, on the awaiting thread, and yields a
/// T or throws. Arguments that it still needs after its first suspension are taken by value.
template <class T>
class [[nodiscard]] Task {
 public:
  using promise_type = detail::Promise<T>;

  explicit Task(std::coroutine_handle<promise_type> handle) : handle_(handle) {}
  Task(Task&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Task& operator=(Task&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Task() {
    if (handle_) handle_.destroy();
  }

  bool await_ready() const noexcept { return false; }
  std::coroutine_handle<> await_suspend(std::coroutine_handle<> awaiting) noexcept {
    handle_.promise().awaiting = awaiting;
    return handle_;
  }
  T await_resume() { return handle_.promise().outcome.take(); }

 private:
  std::coroutine_handle<promise_type> handle_;
};

namespace detail {

template <class T>
struct Promise : PromiseBase {
  Task<T> get_return_object() {
    return Task<T>(std::coroutine_handle<Promise>::from_promise(*this));
  }
  void return_value(T value) { outcome.setValue(std::move(value)); }
  void unhandled_exception() { outcome.setError(std::current_exception()); }

  Outcome<T> outcome;
};

template <>
struct Promise<void> : PromiseBase {
  Task<void> get_return_object() {
    return Task<void>(std::coroutine_handle<Promise>::from_promise(*this));
  }
  void return_void() { outcome.setValue(); }
  void unhandled_exception() { outcome.setError(std::current_exception()); }

  Outcome<void> outcome;
};

}  // namespace detail

/// Takes a suspended task on, once, from any thread: the task goes on on the pool.
template <class T>
class Continuation {
 public:
  struct Awaiter {
    std::function<void(Continuation)> start;
    detail::Outcome<T> outcome;

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> awaiting) {
      // Once started, the task may go on and end at any moment, and this awaiter with it.
      auto begin = std::move(start);
      begin(Continuation(this, awaiting));
    }
    T await_resume() { return outcome.take(); }
  };

  template <class... Value>
  void resume(Value&&... value) const {
    awaiter_->outcome.setValue(std::forward<Value>(value)...);
    goOn();
  }
  void fail(std::exception_ptr error) const {
    awaiter_->outcome.setError(std::move(error));
    goOn();
  }
  /// With what the work, run here, returns or throws.
  template <class Work>
  void resumeWith(Work&& work) const {
    awaiter_->outcome.setResult(work);
    goOn();
  }

 private:
  Continuation(Awaiter* awaiter, std::coroutine_handle<> awaiting)
      : awaiter_(awaiter), awaiting_(awaiting) {}
  void goOn() const {
    pool().post([awaiting = awaiting_] { awaiting.resume(); });
  }

  Awaiter* awaiter_;
  std::coroutine_handle<> awaiting_;
};

/// Suspends the awaiting task and calls `start` with what takes it on again. Exactly one of
/// its functions must be called, once.
template <class T>
typename Continuation<T>::Awaiter suspend(std::function<void(Continuation<T>)> start) {
  return {std::move(start), {}};
}

/// Starts the task on the pool and returns at once. An exception that leaves the task is logged.
/// `stop` is what the handle's `cancel` asks; the task holds its token.
TaskHandle startTask(Task<void> task, std::stop_source stop = std::stop_source());

/// Runs the task from here on, on this thread until its first suspension; nobody waits for it. An
/// exception that leaves it is logged.
void spawn(Task<void> task);

/// Runs the task from here on and waits for its outcome, value or exception. For programs and
/// tests: never to be called on a thread that the task needs.
template <class T>
T wait(Task<T> task) {
  struct State {
    detail::Outcome<T> outcome;
    std::binary_semaphore isDone{0};
  };
  auto state = std::make_shared<State>();
  auto run = [](Task<T> inner, std::shared_ptr<State> shared) -> Task<void> {
    {
      // Gone, with all that it holds of the outcome, before the waiting thread has it.
      auto awaited = std::move(inner);
      try {
        if constexpr (std::is_void_v<T>) {
          co_await awaited;
          shared->outcome.setValue();
        } else {
          shared->outcome.setValue(co_await awaited);
        }
      } catch (...) {
        shared->outcome.setError(std::current_exception());
      }
    }
    shared->isDone.release();
  };
  spawn(run(std::move(task), state));
  state->isDone.acquire();
  return state->outcome.take();
}

}  // namespace quenwick::platform

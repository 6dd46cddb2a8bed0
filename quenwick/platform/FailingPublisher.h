#pragma once

#include <atomic>
#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>

#include "quenwick/platform/Cancellable.h"
#include "quenwick/platform/Task.h"

namespace quenwick::platform {

/// What a publisher calls: `receive` with the value, if there is one, then `complete` once, with
/// what it failed with or with null. What `receive` throws goes to `complete`, as it is.
template <class T>
struct Subscriber {
  std::function<void(T)> receive;
  std::function<void(const std::exception_ptr& failure)> complete;
};

/// Publishes what a task ends with: its value, if there is one, or its failure. Every subscription
/// is a run of its own.
template <class T>
class FailingPublisher {
 public:
  /// Makes the task of one run, which ends early where it is asked to.
  using MakeTask = std::function<Task<std::optional<T>>(std::stop_token)>;

  /// A requested `stop` is handed on to the runs.
  explicit FailingPublisher(MakeTask makeTask, std::stop_token stop = {})
      : makeTask_(std::move(makeTask)), stop_(std::move(stop)) {}

  /// Runs the task from here on; the subscriber is called on the thread on which it ends, which may
  /// be this one, inside `subscribe`. Destroying what is returned ends the run without a further
  /// call.
  Cancellable subscribe(Subscriber<T> subscriber) const {
    auto run = std::make_shared<Run>(std::move(subscriber));
    spawn(follow(makeTask_(run->stop.get_token()), stop_, run));
    return Cancellable([run] {
      if (run->isLive.exchange(false)) run->stop.request_stop();
    });
  }

 private:
  struct Run {
    explicit Run(Subscriber<T> toCall) : subscriber(std::move(toCall)) {}

    void end(std::optional<T> value, std::exception_ptr failure) {
      if (value && isLive) {
        try {
          subscriber.receive(*std::move(value));
        } catch (...) {
          failure = std::current_exception();
        }
      }
      if (isLive.exchange(false)) subscriber.complete(failure);
    }

    Subscriber<T> subscriber;
    std::stop_source stop;
    std::atomic<bool> isLive = true;
  };

  static Task<void> follow(Task<std::optional<T>> task, std::stop_token stop,
                           std::shared_ptr<Run> run) {
    std::optional<T> value;
    std::exception_ptr failure;
    {
      std::stop_callback onStop(stop, [&] { run->stop.request_stop(); });
      try {
        value = co_await task;
      } catch (...) {
        failure = std::current_exception();
      }
    }
    run->end(std::move(value), std::move(failure));
  }

  MakeTask makeTask_;
  std::stop_token stop_;
};

}  // namespace quenwick::platform

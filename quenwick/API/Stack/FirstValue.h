#pragma once

#include <atomic>
#include <coroutine>
#include <exception>
#include <memory>
#include <optional>
#include <utility>

#include "quenwick/API/Stack/MissingOutputError.h"
#include "quenwick/API/Stack/Subscriptions.h"
#include "quenwick/platform/FailingPublisher.h"
#include "quenwick/platform/Task.h"

namespace quenwick {

/// What `co_await` waits with for a publisher's first value. The task goes on where the value or
/// the end came, without a further change of thread.
template <class T>
class FirstValue {
 public:
  FirstValue(platform::FailingPublisher<T> publisher, std::shared_ptr<Subscriptions> subscriptions)
      : publisher_(std::move(publisher)),
        state_(std::make_shared<State>(std::move(subscriptions))) {}

  bool await_ready() const noexcept { return false; }

  bool await_suspend(std::coroutine_handle<> awaiting) {
    auto state = state_;
    state->awaiting = awaiting;
    auto receive = [state](T value) { state->end(std::move(value), nullptr); };
    auto complete = [state](const std::exception_ptr& failure) {
      state->end(std::nullopt, failure ? failure : std::make_exception_ptr(MissingOutputError()));
    };
    state->subscriptions->keep(state->id, publisher_.subscribe({receive, complete}));
    return !state->hasMet.exchange(true);
  }

  T await_resume() {
    if (state_->failure) std::rethrow_exception(state_->failure);
    return *std::move(state_->value);
  }

 private:
  struct State {
    explicit State(std::shared_ptr<Subscriptions> keeper)
        : subscriptions(std::move(keeper)), id(subscriptions->reserve()) {}

    /// Ends the subscription and, where the task is suspended already, takes it on. What comes
    /// after the first value does not matter.
    void end(std::optional<T> first, const std::exception_ptr& error) {
      if (std::exchange(hasEnded, true)) return;
      value = std::move(first);
      failure = error;
      subscriptions->end(id);
      if (hasMet.exchange(true)) awaiting.resume();
    }

    std::shared_ptr<Subscriptions> subscriptions;
    Subscriptions::ID id;
    std::coroutine_handle<> awaiting;
    std::optional<T> value;
    std::exception_ptr failure;
    bool hasEnded = false;
    /// Set by the outcome and by the suspension; the later of the two takes the task on.
    std::atomic<bool> hasMet = false;
  };

  platform::FailingPublisher<T> publisher_;
  std::shared_ptr<State> state_;
};

/// The publisher's first value; its failure, or `MissingOutputError` where it ends without a
/// value, is thrown. The subscription lives among `subscriptions` until then.
template <class T>
platform::Task<T> firstValue(platform::FailingPublisher<T> publisher,
                             std::shared_ptr<Subscriptions> subscriptions) {
  co_return co_await FirstValue<T>(std::move(publisher), std::move(subscriptions));
}

}  // namespace quenwick

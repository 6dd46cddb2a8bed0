#pragma once

#include <atomic>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "quenwick/platform/AnyPublisher.h"
#include "quenwick/platform/Executor.h"

namespace quenwick::platform {

/// Holds the latest value and sends every new one to its subscribers, on the sender's thread.
/// A subscriber gets the value of the moment first, inside `subscribe`.
template <class T>
class CurrentValueSubject {
 public:
  /// Begins with that value.
  explicit CurrentValueSubject(T value) : state_(std::make_shared<State>(std::move(value))) {}

  /// The latest value. From any thread.
  T value() const {
    std::lock_guard lock(state_->mutex);
    return state_->value;
  }

  /// Sets the value and sends it to the subscribers of the moment. From any thread, also from a
  /// subscriber.
  void send(T value) {
    std::vector<std::shared_ptr<Subscriber>> subscribers;
    {
      std::lock_guard lock(state_->mutex);
      for (const auto& [id, subscriber] : state_->subscribers) {
        subscriber->offer(value);
        subscribers.push_back(subscriber);
      }
      state_->value = std::move(value);
    }
    for (const auto& subscriber : subscribers) subscriber->deliver();
  }

  /// The values, for those who may not send any. It outlives the subject.
  AnyPublisher<T> publisher() const {
    return AnyPublisher<T>([state = state_](typename AnyPublisher<T>::Receive receive) {
      return state->subscribe(std::move(receive));
    });
  }

 private:
  /// Calls its receiver with each value in the order of the assignments, one call at a time: a
  /// value that comes while a call runs is delivered by the thread of that call.
  struct Subscriber {
    typename AnyPublisher<T>::Receive receive;
    std::atomic<bool> isLive = true;
    std::mutex mutex;
    std::deque<T> waiting;
    bool isDelivering = false;

    explicit Subscriber(typename AnyPublisher<T>::Receive toCall) : receive(std::move(toCall)) {}

    void offer(const T& value) {
      std::lock_guard lock(mutex);
      waiting.push_back(value);
    }

    void deliver() {
      std::unique_lock lock(mutex);
      if (std::exchange(isDelivering, true)) return;
      while (!waiting.empty()) {
        T value = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        runWork([&] {
          if (isLive) receive(value);
        });
        lock.lock();
      }
      isDelivering = false;
    }
  };

  struct State : std::enable_shared_from_this<State> {
    explicit State(T first) : value(std::move(first)) {}

    Cancellable subscribe(typename AnyPublisher<T>::Receive receive) {
      auto subscriber = std::make_shared<Subscriber>(std::move(receive));
      std::unique_lock lock(mutex);
      auto id = nextID++;
      subscribers.emplace(id, subscriber);
      subscriber->offer(value);
      lock.unlock();
      subscriber->deliver();
      return Cancellable([weak = this->weak_from_this(), subscriber, id] {
        subscriber->isLive = false;
        auto state = weak.lock();
        if (!state) return;
        std::lock_guard guard(state->mutex);
        state->subscribers.erase(id);
      });
    }

    std::mutex mutex;
    T value;
    std::map<int, std::shared_ptr<Subscriber>> subscribers;
    int nextID = 0;
  };

  std::shared_ptr<State> state_;
};

}  // namespace quenwick::platform

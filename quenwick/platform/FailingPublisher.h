#pragma once

#include <exception>
#include <functional>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>

#include "quenwick/platform/Executor.h"

namespace quenwick::platform {

/// What a publisher calls: `receive` with each value, then `complete` once, with what it failed
/// with or with null. Calls come one at a time. What `receive` throws is the last: `complete` gets
/// it, as it is.
template <class T>
struct Subscriber {
  std::function<void(T)> receive;
  std::function<void(const std::exception_ptr& failure)> complete;
};

/// A stream of values that ends, well or with a failure. Every subscription is a run of its own.
template <class T>
class FailingPublisher {
 public:
  explicit FailingPublisher(std::function<Cancellable(Subscriber<T>)> subscribe)
      : subscribe_(std::move(subscribe)) {}

  /// A publisher that has failed already; with null, one that ends without a value.
  static FailingPublisher ended(const std::exception_ptr& failure) {
    return FailingPublisher([failure](const Subscriber<T>& subscriber) {
      subscriber.complete(failure);
      return Cancellable();
    });
  }

  /// Calls the subscriber until the stream has ended or what is returned is destroyed. On which
  /// thread is told by who offers the publisher; it may be this one, inside `subscribe`.
  Cancellable subscribe(Subscriber<T> subscriber) const {
    auto guard = std::make_shared<Guard>(std::move(subscriber));
    return subscribe_(
        {.receive = [guard](T value) { guard->receive(std::move(value)); },
         .complete = [guard](const std::exception_ptr& failure) { guard->complete(failure); }});
  }

  /// Each value as `transform` makes it. What `transform` throws ends the stream.
  template <class Transform>
  auto map(const Transform& transform) const& {
    return FailingPublisher(*this).map(transform);
  }
  template <class Transform>
  auto map(const Transform& transform) && {
    using Mapped = std::invoke_result_t<Transform, T>;
    return FailingPublisher<Mapped>([subscribe = std::move(subscribe_),
                                     transform](Subscriber<Mapped> subscriber) {
      auto mapped = std::make_shared<Mapper<Mapped, Transform>>(transform, std::move(subscriber));
      return subscribe(Subscriber<T>{
          .receive = [mapped](T value) { mapped->receive(std::move(value)); },
          .complete = [mapped](const std::exception_ptr& failure) { mapped->complete(failure); }});
    });
  }

  /// Its failure as `transform` makes it.
  FailingPublisher mapError(
      const std::function<std::exception_ptr(const std::exception_ptr&)>& transform) const& {
    return FailingPublisher(*this).mapError(transform);
  }
  FailingPublisher mapError(
      const std::function<std::exception_ptr(const std::exception_ptr&)>& transform) && {
    return FailingPublisher(
        [subscribe = std::move(subscribe_), transform](Subscriber<T> subscriber) {
          subscriber.complete = [transform, complete = std::move(subscriber.complete)](
                                    const std::exception_ptr& failure) {
            complete(failure ? transform(failure) : nullptr);
          };
          return subscribe(std::move(subscriber));
        });
  }

 private:
  /// The subscriber at the end of all steps, which none of them is to hear of.
  struct Guard {
    explicit Guard(Subscriber<T> toCall) : subscriber(std::move(toCall)) {}

    void receive(T&& value) {
      if (hasEnded) return;
      std::exception_ptr failure;
      try {
        subscriber.receive(std::move(value));
      } catch (...) {
        failure = std::current_exception();
      }
      if (failure) complete(failure);
    }
    void complete(const std::exception_ptr& failure) {
      if (!std::exchange(hasEnded, true)) subscriber.complete(failure);
    }

    Subscriber<T> subscriber;
    bool hasEnded = false;
  };

  template <class Mapped, class Transform>
  struct Mapper {
    Mapper(Transform toApply, Subscriber<Mapped> toCall)
        : transform(std::move(toApply)), subscriber(std::move(toCall)) {}

    void receive(T&& value) {
      if (hasEnded) return;
      std::optional<Mapped> mapped;
      std::exception_ptr failure;
      try {
        mapped = transform(std::move(value));
      } catch (...) {
        failure = std::current_exception();
      }
      mapped ? subscriber.receive(*std::move(mapped)) : complete(failure);
    }
    void complete(const std::exception_ptr& failure) {
      if (!std::exchange(hasEnded, true)) subscriber.complete(failure);
    }

    Transform transform;
    Subscriber<Mapped> subscriber;
    bool hasEnded = false;
  };

  std::function<Cancellable(Subscriber<T>)> subscribe_;
};

}  // namespace quenwick::platform

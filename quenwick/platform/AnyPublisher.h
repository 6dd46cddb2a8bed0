#pragma once

#include <functional>
#include <utility>

#include "quenwick/platform/Cancellable.h"

namespace quenwick::platform::inline v0 {

/// A stream of values that never fails.
template <class T>
class AnyPublisher {
 public:
  using Receive = std::function<void(const T&)>;

  explicit AnyPublisher(std::function<Cancellable(Receive)> subscribe)
      : subscribe_(std::move(subscribe)) {}

  /// Calls `receive` with the values to come until what is returned is destroyed. What a call
  /// gives first, and on which thread calls come, is told by who offers the publisher.
  Cancellable subscribe(Receive receive) const { return subscribe_(std::move(receive)); }

 private:
  std::function<Cancellable(Receive)> subscribe_;
};

}  // namespace quenwick::platform::inline v0

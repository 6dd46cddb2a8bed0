#pragma once

#include <cstddef>
#include <map>
#include <mutex>

#include "quenwick/platform/Executor.h"

namespace quenwick {

/// Subscriptions that live until they have ended. From any thread.
class Subscriptions {
 public:
  using ID = std::size_t;

  /// A place for a subscription about to be made.
  ID reserve();

  /// Keeps the subscription in its place; where it has ended meanwhile it is dropped.
  void keep(ID id, platform::Cancellable subscription);

  /// Lets the subscription go.
  void end(ID id);

  std::size_t count() const;

 private:
  mutable std::mutex mutex_;
  std::map<ID, platform::Cancellable> live_;
  ID nextID_ = 0;
};

}  // namespace quenwick

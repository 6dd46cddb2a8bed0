#pragma once

#include <cstddef>
#include <vector>

#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/platform/SecItem.h"
#include "quenwick/platform/URLSession.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::bench {

inline constexpr auto kEventHost = "events.shop.example";
inline constexpr auto kEndpoint = "https://events.shop.example/v1/events";
inline constexpr auto kCredential = "aWRlbnRpZmllcjp0b2tlbg==";

/// The properties of a product that was looked at.
platform::Dictionary product(std::size_t number);

/// This process as a host whose events are enabled: its folder, its secrets, and a log that takes
/// every line and keeps none. One for a process.
class EventHost {
 public:
  EventHost(const platform::URLSessionConfiguration& basis, platform::SecItemBackendKind secrets);

  BehaviorEventManager& manager() { return manager_; }

  /// Offers that many events, of which so many are built before they are offered; how long each
  /// call took, in seconds.
  std::vector<double> offer(std::size_t count, std::size_t ahead);

  /// Waits until all that was offered is settled; whether so many were acknowledged since the last
  /// time that this was asked, and none was lost.
  bool areAcknowledged(std::size_t count);

 private:
  struct Prepared {
    Prepared(const tests::TemporaryDirectory& home, const platform::URLSessionConfiguration& basis,
             platform::SecItemBackendKind secrets);
  };
  tests::TemporaryDirectory home_;
  Prepared prepared_;
  BehaviorEventManager manager_;
  std::uint64_t acknowledged_ = 0;
};

}  // namespace quenwick::bench

#pragma once

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace quenwick {

/// Where an event stands, or how it ended and why.
enum class EventState {
  waiting,
  inFlight,
  acknowledged,
  refusedNotEnabled,   ///< events were not enabled when it was offered
  refusedUnsound,      ///< it lacks something, or JSON cannot hold it
  failedNoCredential,  ///< the keychain has none for the endpoint
  failedUnauthorized,  ///< the service took the credential for a wrong one
  failedStatus,        ///< the service answered with another error
  failedTransport,     ///< there was no whole answer
  failedAnswer,        ///< the answer is no acknowledgement
  failedOther,
  droppedSuperseded,  ///< a newer search came within the quiet period
  droppedOverflow,    ///< too much was waiting already
  droppedAtEnd,       ///< it waited when the library ended, or a search when its manager went
};

inline constexpr std::size_t kEventStates = 14;

/// The books at one moment. Every event that was offered is in exactly one state.
struct EventCounts {
  std::uint64_t offered = 0;
  std::array<std::uint64_t, kEventStates> in = {};

  std::uint64_t operator[](EventState state) const {
    return in.at(static_cast<std::size_t>(state));
  }
};

/// Keeps the books of events: each is counted when it is offered and when it changes its state,
/// and no figure is computed from others. From any thread.
class EventLedger {
 public:
  /// An event was offered, and is in that state from the start.
  void offer(EventState state);
  void move(EventState from, EventState to);

  EventCounts counts() const;

  /// Waits until nothing is waiting or in flight, at most for the duration; whether it is so.
  bool waitUntilIdle(std::chrono::nanoseconds atMost) const;

 private:
  std::uint64_t& count(EventState state) { return counts_.in[static_cast<std::size_t>(state)]; }
  bool isIdle() const {
    return counts_[EventState::waiting] == 0 && counts_[EventState::inFlight] == 0;
  }

  mutable std::mutex mutex_;
  mutable std::condition_variable idle_;
  EventCounts counts_;
};

}  // namespace quenwick

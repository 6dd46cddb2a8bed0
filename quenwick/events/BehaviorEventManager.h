#pragma once

#include <chrono>
#include <memory>
#include <stop_token>
#include <string>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/API/Repository/BehavioralEventRepository.h"
#include "quenwick/events/EventLedger.h"
#include "quenwick/events/Scheduler.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick {

class EventPipeline;
template <class T>
class Debounce;

/// Sends the events of the host to the service. Off until `start`: what comes before is refused.
///
/// Every call returns at once, from any thread, and never throws; payloads are made and sent on
/// the pool, in the order of the calls, and the log says what became of each. What was taken is
/// sent also where the manager has gone, except a search within its quiet period, unless `end` was
/// asked to stop before its turn. Nothing is kept across the end of the process.
class BehaviorEventManager {
 public:
  /// `scheduler` tells when a search has been quiet for long enough. `session` is handed back and
  /// no more: events go over that of the endpoint's own requester.
  explicit BehaviorEventManager(
      std::shared_ptr<platform::URLSession> session = platform::URLSession::shared(),
      std::shared_ptr<Scheduler> scheduler = Scheduler::main(), std::stop_token end = {});
  ~BehaviorEventManager();
  BehaviorEventManager(const BehaviorEventManager&) = delete;
  BehaviorEventManager& operator=(const BehaviorEventManager&) = delete;

  const std::shared_ptr<platform::URLSession>& session() const { return session_; }

  /// Enables events, which go to that endpoint from now on, those that wait included. Null changes
  /// nothing.
  void start(const platform::URL& endpoint);
  void start(std::shared_ptr<const BehavioralEventRepository> repository);

  /// Null until `start`.
  std::shared_ptr<const BehavioralEventRepository> repository() const;

  /// Whether events are enabled; where they are not, a line says so.
  bool eventsEnabled() const;

  /// Sends a payload as it stands. It is refused where JSON cannot hold it.
  void sendEvent(platform::Dictionary payload);

  void logCustomEvent(std::string name, platform::Dictionary properties);
  void productViewed(platform::Dictionary dictionary);
  void productViewed(ProductProperties properties);
  void productAdded(platform::Dictionary dictionary);
  void productAdded(ProductProperties properties);
  void productRemoved(platform::Dictionary dictionary);
  void productRemoved(ProductProperties properties);
  void orderCompleted(platform::Dictionary dictionary);
  void orderCompleted(OrderCompletedProperties properties);
  void categoryViewed(platform::Dictionary dictionary);
  void categoryViewed(ProductCategory category);
  /// Of searches that follow each other within half a second only the last is sent.
  void productSearched(platform::Dictionary dictionary);
  void productSearched(ProductSearchedProperties properties);
  void identifyUser(std::string id);

  /// The books: what became of every event offered so far.
  EventCounts counts() const;

  /// Sends a search that is within its quiet period now, and waits until nothing is waiting or in
  /// flight any more, at most for the duration; whether it is so. May be called on the main
  /// actor; never on the pool.
  bool flush(std::chrono::nanoseconds atMost);

 private:
  struct Search;

  template <class Container, class Properties>
  void offer(Properties properties);
  template <class Container, class Properties>
  void offerRead(platform::Dictionary dictionary);
  template <class Make>
  void offerSearch(std::size_t bytes, Make make);
  bool isTaken() const;

  const std::shared_ptr<platform::URLSession> session_;
  const std::shared_ptr<Scheduler> scheduler_;
  const std::shared_ptr<EventPipeline> pipeline_;
  const std::shared_ptr<Debounce<Search>> productSearchedDebouncer_;
};

}  // namespace quenwick

#include "quenwick/events/BehaviorEventManager.h"

#include <optional>
#include <utility>

#include "quenwick/API/Models/CustomEventContainer.h"
#include "quenwick/API/Models/IdentifyUserContainer.h"
#include "quenwick/API/Models/OrderCompletedContainer.h"
#include "quenwick/API/Models/RecordCoding.h"
#include "quenwick/API/Models/TrackContainer.h"
#include "quenwick/events/Debounce.h"
#include "quenwick/events/EventPipeline.h"
#include "quenwick/events/Footprint.h"
#include "quenwick/logging/Logger.h"

namespace quenwick {

using platform::Dictionary;
using Kind = EventPipeline::Kind;

/// A search within its quiet period, and what is held for it.
struct BehaviorEventManager::Search {
  ProductSearchedProperties properties;
  std::size_t bytes = 0;

  static void send(EventPipeline& pipeline, Search search) {
    auto make = [&] {
      return ProductSearchedContainer{std::move(search.properties)}.asDictionary();
    };
    auto payload = EventPipeline::made(make);
    if (!payload) return pipeline.settle(search.bytes, EventState::refusedUnsound);
    pipeline.enqueue({Kind::event, *std::move(payload), search.bytes});
  }
};

BehaviorEventManager::BehaviorEventManager(std::shared_ptr<platform::URLSession> session,
                                           std::shared_ptr<Scheduler> scheduler,
                                           std::stop_token end)
    : session_(std::move(session)),
      scheduler_(std::move(scheduler)),
      pipeline_(std::make_shared<EventPipeline>(std::move(end))),
      productSearchedDebouncer_(std::make_shared<Debounce<Search>>(scheduler_)) {
  productSearchedDebouncer_->setCompletion([pipeline = pipeline_](Search search) {
    pipeline->post([search = std::move(search)](EventPipeline& self) mutable {
      Search::send(self, std::move(search));
    });
  });
}

BehaviorEventManager::~BehaviorEventManager() {
  for (const auto& search : productSearchedDebouncer_->close()) {
    pipeline_->settle(search.bytes, EventState::droppedAtEnd);
  }
}

void BehaviorEventManager::start(const platform::URL& endpoint) {
  start(std::make_shared<const BehavioralEventRepository>(endpoint));
}

void BehaviorEventManager::start(std::shared_ptr<const BehavioralEventRepository> repository) {
  if (repository) pipeline_->setRepository(std::move(repository));
}

std::shared_ptr<const BehavioralEventRepository> BehaviorEventManager::repository() const {
  return pipeline_->repository();
}

bool BehaviorEventManager::eventsEnabled() const {
  if (pipeline_->isEnabled()) return true;
  Logger::log(QWLogType::behaviorEvent, "Could not log event - Events are not enabled");
  return false;
}

/// Whether an event that is offered is taken; where it is not it is in the books already.
bool BehaviorEventManager::isTaken() const {
  if (eventsEnabled()) return true;
  pipeline_->ledger().offer(EventState::refusedNotEnabled);
  return false;
}

template <class Container, class Properties>
void BehaviorEventManager::offer(Properties properties) {
  if (!isTaken()) return;
  auto bytes = footprint(properties);
  pipeline_->offer(Kind::event, bytes, [properties = std::move(properties)]() mutable {
    return Container{std::move(properties)}.asDictionary();
  });
}

template <class Container, class Properties>
void BehaviorEventManager::offerRead(Dictionary dictionary) {
  if (!isTaken()) return;
  auto bytes = footprint(dictionary);
  auto make = [dictionary = std::move(dictionary)]() mutable -> std::optional<Dictionary> {
    auto properties = Properties::from(std::move(dictionary));
    if (!properties) return std::nullopt;
    return Container{*std::move(properties)}.asDictionary();
  };
  pipeline_->offer(Kind::event, bytes, std::move(make));
}

void BehaviorEventManager::sendEvent(Dictionary payload) {
  if (!isTaken()) return;
  auto bytes = footprint(payload);
  pipeline_->offer(Kind::event, bytes, [payload = std::move(payload)]() mutable {
    return checked(std::move(payload));
  });
}

void BehaviorEventManager::logCustomEvent(std::string name, Dictionary properties) {
  if (!isTaken()) return;
  auto bytes = name.capacity() + footprint(properties);
  CustomEventContainer event{std::move(name), std::move(properties)};
  pipeline_->offer(Kind::event, bytes, [event = std::move(event)]() mutable {
    return std::move(event).asDictionary();
  });
}

void BehaviorEventManager::productViewed(Dictionary dictionary) {
  offerRead<ProductViewedContainer, ProductProperties>(std::move(dictionary));
}

void BehaviorEventManager::productViewed(ProductProperties properties) {
  offer<ProductViewedContainer>(std::move(properties));
}

void BehaviorEventManager::productAdded(Dictionary dictionary) {
  offerRead<ProductAddedContainer, ProductProperties>(std::move(dictionary));
}

void BehaviorEventManager::productAdded(ProductProperties properties) {
  offer<ProductAddedContainer>(std::move(properties));
}

void BehaviorEventManager::productRemoved(Dictionary dictionary) {
  offerRead<ProductRemovedContainer, ProductProperties>(std::move(dictionary));
}

void BehaviorEventManager::productRemoved(ProductProperties properties) {
  offer<ProductRemovedContainer>(std::move(properties));
}

// An order belongs to what led to it by the time of the call, and not to a link opened since.

void BehaviorEventManager::orderCompleted(Dictionary dictionary) {
  if (!isTaken()) return;
  auto bytes = footprint(dictionary);
  auto make = [dictionary = std::move(dictionary),
               context = OrderCompletedContext::current()]() mutable -> std::optional<Dictionary> {
    auto properties = OrderCompletedProperties::from(std::move(dictionary));
    if (!properties) return std::nullopt;
    return OrderCompletedContainer(*std::move(properties), std::move(context)).asDictionary();
  };
  pipeline_->offer(Kind::event, bytes, std::move(make));
}

void BehaviorEventManager::orderCompleted(OrderCompletedProperties properties) {
  if (!isTaken()) return;
  auto bytes = footprint(properties);
  OrderCompletedContainer order(std::move(properties));
  pipeline_->offer(Kind::event, bytes, [order = std::move(order)]() mutable {
    return std::move(order).asDictionary();
  });
}

void BehaviorEventManager::categoryViewed(Dictionary dictionary) {
  offerRead<CategoryViewedContainer, ProductCategory>(std::move(dictionary));
}

void BehaviorEventManager::categoryViewed(ProductCategory category) {
  offer<CategoryViewedContainer>(std::move(category));
}

void BehaviorEventManager::productSearched(Dictionary dictionary) {
  if (!isTaken()) return;
  auto bytes = footprint(dictionary);
  offerSearch(bytes, [dictionary = std::move(dictionary)]() mutable {
    return ProductSearchedProperties::from(std::move(dictionary));
  });
}

void BehaviorEventManager::productSearched(ProductSearchedProperties properties) {
  if (!isTaken()) return;
  auto bytes = footprint(properties);
  offerSearch(bytes, [properties = std::move(properties)]() mutable {
    return std::optional(std::move(properties));
  });
}

/// The quiet period counts from this call, whenever its turn comes.
template <class Make>
void BehaviorEventManager::offerSearch(std::size_t bytes, Make make) {
  auto step = [make = std::move(make), announcement = productSearchedDebouncer_->announce()](
                  EventPipeline& pipeline, std::size_t all) mutable {
    auto properties = EventPipeline::made(make);
    if (!properties) return pipeline.settle(all, EventState::refusedUnsound);
    auto alive = announcement.debounce();
    if (!alive) return pipeline.settle(all, EventState::droppedAtEnd);
    auto dropped = alive->setValue({*std::move(properties), all}, announcement.offered());
    if (!dropped) return;
    pipeline.settle(dropped->bytes,
                    alive->isClosed() ? EventState::droppedAtEnd : EventState::droppedSuperseded);
  };
  pipeline_->offerStep(bytes, std::move(step));
}

void BehaviorEventManager::identifyUser(std::string id) {
  if (!isTaken()) return;
  auto bytes = id.capacity();
  pipeline_->offer(Kind::identification, bytes, [id = std::move(id)]() mutable {
    return IdentifyUserContainer(std::move(id)).asDictionary();
  });
}

EventCounts BehaviorEventManager::counts() const { return pipeline_->ledger().counts(); }

bool BehaviorEventManager::flush(std::chrono::nanoseconds atMost) {
  pipeline_->post([debouncer = productSearchedDebouncer_](EventPipeline& pipeline) {
    for (auto& search : debouncer->take()) Search::send(pipeline, std::move(search));
  });
  return pipeline_->ledger().waitUntilIdle(atMost);
}

}  // namespace quenwick

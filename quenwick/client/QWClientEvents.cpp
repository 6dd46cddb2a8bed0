#include <utility>

#include "quenwick/client/QWClient.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {

// Each is one call of the shared client's event manager, which checks, builds and sends.

void QWClient::productViewed(Dictionary dictionary) {
  if (enter()) shared()->eventManager().productViewed(std::move(dictionary));
}

void QWClient::productViewedTyped(ProductProperties properties) {
  if (enter()) shared()->eventManager().productViewed(std::move(properties));
}

void QWClient::productAdded(Dictionary dictionary) {
  if (enter()) shared()->eventManager().productAdded(std::move(dictionary));
}

void QWClient::productAddedTyped(ProductProperties properties) {
  if (enter()) shared()->eventManager().productAdded(std::move(properties));
}

void QWClient::productRemoved(Dictionary dictionary) {
  if (enter()) shared()->eventManager().productRemoved(std::move(dictionary));
}

void QWClient::productRemovedTyped(ProductProperties properties) {
  if (enter()) shared()->eventManager().productRemoved(std::move(properties));
}

void QWClient::orderCompleted(Dictionary dictionary) {
  if (enter()) shared()->eventManager().orderCompleted(std::move(dictionary));
}

void QWClient::orderCompletedTyped(OrderCompletedProperties properties) {
  if (enter()) shared()->eventManager().orderCompleted(std::move(properties));
}

void QWClient::categoryViewed(Dictionary dictionary) {
  if (enter()) shared()->eventManager().categoryViewed(std::move(dictionary));
}

void QWClient::categoryViewedTyped(ProductCategory category) {
  if (enter()) shared()->eventManager().categoryViewed(std::move(category));
}

void QWClient::productSearched(Dictionary dictionary) {
  if (enter()) shared()->eventManager().productSearched(std::move(dictionary));
}

void QWClient::productSearchedTyped(ProductSearchedProperties properties) {
  if (enter()) shared()->eventManager().productSearched(std::move(properties));
}

void QWClient::identifyUser(std::string_view id) {
  if (enter()) shared()->eventManager().identifyUser(std::string(id));
}

void QWClient::identifyUser() {
  if (!enter()) return;
  if (auto user = Analytics::shared().qwu()) shared()->eventManager().identifyUser(*user);
}

void QWClient::logEvent(std::string_view name, Dictionary properties) {
  if (enter()) shared()->eventManager().logCustomEvent(std::string(name), std::move(properties));
}

}  // namespace quenwick

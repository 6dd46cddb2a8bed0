#include "quenwick/client/QWClient.h"
#include "quenwick/runtime/Records.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {

std::vector<Selector> eventSelectors() {
  return {
      selector(
          "productViewed:", [](Dictionary product) { QWClient::productViewed(std::move(product)); },
          "dictionary"),
      selector(
          "productViewedWithProperties:",
          [](ProductProperties product) { QWClient::productViewed(std::move(product)); },
          "properties"),
      selector(
          "productAdded:", [](Dictionary product) { QWClient::productAdded(std::move(product)); },
          "dictionary"),
      selector(
          "productAddedWithProperties:",
          [](ProductProperties product) { QWClient::productAdded(std::move(product)); },
          "properties"),
      selector(
          "productRemoved:",
          [](Dictionary product) { QWClient::productRemoved(std::move(product)); }, "dictionary"),
      selector(
          "productRemovedWithProperties:",
          [](ProductProperties product) { QWClient::productRemoved(std::move(product)); },
          "properties"),
      selector(
          "orderCompleted:", [](Dictionary order) { QWClient::orderCompleted(std::move(order)); },
          "dictionary"),
      selector(
          "orderCompletedWithProperties:",
          [](OrderCompletedProperties order) { QWClient::orderCompleted(std::move(order)); },
          "properties"),
      selector(
          "categoryViewed:",
          [](Dictionary category) { QWClient::categoryViewed(std::move(category)); }, "dictionary"),
      selector(
          "categoryViewedWithCategory:",
          [](ProductCategory category) { QWClient::categoryViewed(std::move(category)); },
          "category"),
      selector(
          "productSearched:",
          [](Dictionary search) { QWClient::productSearched(std::move(search)); }, "dictionary"),
      selector(
          "productSearchedWithProperties:",
          [](ProductSearchedProperties search) { QWClient::productSearched(std::move(search)); },
          "properties"),
      selector(
          "identifyUser:", [](const std::string& id) { QWClient::identifyUser(id); }, "id"),
      selector("identifyUser", [] { QWClient::identifyUser(); }),
      selector(
          "logEventWithName:properties:",
          [](const std::string& name, Dictionary properties) {
            QWClient::logEvent(name, std::move(properties));
          },
          "name", "properties"),
  };
}

}  // namespace quenwick::runtime

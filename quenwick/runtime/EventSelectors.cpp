#include "quenwick/client/QWClient.h"
#include "quenwick/runtime/Records.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {

namespace {

constexpr Selector kSelectors[] = {
    {"productViewed:", {"dictionary"}, calls([](Dictionary product) {
       QWClient::productViewed(std::move(product));
     })},
    {"productViewedWithProperties:", {"properties"}, calls([](ProductProperties product) {
       QWClient::productViewed(std::move(product));
     })},
    {"productAdded:", {"dictionary"}, calls([](Dictionary product) {
       QWClient::productAdded(std::move(product));
     })},
    {"productAddedWithProperties:", {"properties"}, calls([](ProductProperties product) {
       QWClient::productAdded(std::move(product));
     })},
    {"productRemoved:", {"dictionary"}, calls([](Dictionary product) {
       QWClient::productRemoved(std::move(product));
     })},
    {"productRemovedWithProperties:", {"properties"}, calls([](ProductProperties product) {
       QWClient::productRemoved(std::move(product));
     })},
    {"orderCompleted:", {"dictionary"}, calls([](Dictionary order) {
       QWClient::orderCompleted(std::move(order));
     })},
    {"orderCompletedWithProperties:", {"properties"}, calls([](OrderCompletedProperties order) {
       QWClient::orderCompleted(std::move(order));
     })},
    {"categoryViewed:", {"dictionary"}, calls([](Dictionary category) {
       QWClient::categoryViewed(std::move(category));
     })},
    {"categoryViewedWithCategory:", {"category"}, calls([](ProductCategory category) {
       QWClient::categoryViewed(std::move(category));
     })},
    {"productSearched:", {"dictionary"}, calls([](Dictionary search) {
       QWClient::productSearched(std::move(search));
     })},
    {"productSearchedWithProperties:", {"properties"}, calls([](ProductSearchedProperties search) {
       QWClient::productSearched(std::move(search));
     })},
    {"identifyUser:", {"id"}, calls([](const std::string& id) { QWClient::identifyUser(id); })},
    {"identifyUser", {}, calls([] { QWClient::identifyUser(); })},
    {"logEventWithName:properties:",
     {"name", "properties"},
     calls([](const std::string& name, Dictionary properties) {
       QWClient::logEvent(name, std::move(properties));
     })},
};
static_assert(areNamed(kSelectors));

}  // namespace

std::span<const Selector> eventSelectors() { return kSelectors; }

}  // namespace quenwick::runtime

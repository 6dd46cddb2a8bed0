#include "quenwick/API/Models/OrderCompletedContainer.h"

#include <utility>

#include "quenwick/API/Models/RecordCoding.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {
namespace {

using platform::Dictionary;

OrderCompletedContext contextOf(Analytics& analytics) {
  return {.campaign = {.rulesPicKey = analytics.rulesPicKey()}};
}

Dictionary encode(OrderCompletedContext context) {
  Dictionary campaign;
  setField(campaign, "rules_pic_key", std::move(context.campaign.rulesPicKey));
  Dictionary dictionary;
  dictionary.set("campaign", std::move(campaign));
  return dictionary;
}

}  // namespace

OrderCompletedContext OrderCompletedContext::current() { return contextOf(Analytics::shared()); }

OrderCompletedContainer::OrderCompletedContainer(OrderCompletedProperties orderProperties)
    : OrderCompletedContainer(std::move(orderProperties), OrderCompletedContext::current()) {}

OrderCompletedContainer::OrderCompletedContainer(OrderCompletedProperties orderProperties,
                                                 Analytics& analytics)
    : OrderCompletedContainer(std::move(orderProperties), contextOf(analytics)) {}

OrderCompletedContainer::OrderCompletedContainer(OrderCompletedProperties orderProperties,
                                                 OrderCompletedContext orderContext)
    : context(std::move(orderContext)), properties(std::move(orderProperties)) {}

std::optional<Dictionary> OrderCompletedContainer::asDictionary() const& {
  return OrderCompletedContainer(*this).asDictionary();
}

std::optional<Dictionary> OrderCompletedContainer::asDictionary() && {
  auto dictionary = eventFields(type, std::string(event));
  dictionary.set("context", encode(std::move(context)));
  dictionary.set("properties", quenwick::encode(std::move(properties)));
  return checked(std::move(dictionary));
}

}  // namespace quenwick

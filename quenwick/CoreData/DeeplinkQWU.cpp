#include "quenwick/CoreData/DeeplinkQWU.h"

#include <utility>

#include "quenwick/CoreData/ManagedObjectType.h"

namespace quenwick {
namespace {

constexpr auto kValue = "value";
constexpr auto kLastSeenAt = "lastSeenAt";

}  // namespace

static_assert(ManagedObjectType<DeeplinkQWU>);

// Never destroyed: work may still use it while the process exits.
std::string& DeeplinkQWU::entityName = *new std::string("DeeplinkQWU");

TypedFetchRequest<DeeplinkQWU> DeeplinkQWU::fetchRequest() {
  return TypedFetchRequest<DeeplinkQWU>(entityName);
}

platform::Predicate DeeplinkQWU::searchByValuePredicate(std::string value) {
  return platform::Predicate("value == %@", {std::move(value)});
}

platform::SortDescriptor DeeplinkQWU::createdAtSortDescriptor() {
  return {.key = kLastSeenAt, .ascending = false};
}

std::vector<platform::SortDescriptor> DeeplinkQWU::defaultSortDescriptors() {
  return {createdAtSortDescriptor()};
}

std::optional<std::string> DeeplinkQWU::value() const {
  return optionalForKey<std::string>(kValue);
}

void DeeplinkQWU::setValue(std::optional<std::string> value) {
  setOptionalForKey(kValue, std::move(value));
}

std::optional<platform::Date> DeeplinkQWU::lastSeenAt() const {
  return optionalForKey<platform::Date>(kLastSeenAt);
}

void DeeplinkQWU::setLastSeenAt(std::optional<platform::Date> date) {
  setOptionalForKey(kLastSeenAt, date);
}

}  // namespace quenwick

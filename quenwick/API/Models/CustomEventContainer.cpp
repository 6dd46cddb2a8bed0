#include "quenwick/API/Models/CustomEventContainer.h"

#include <utility>

#include "quenwick/API/Models/RecordCoding.h"

namespace quenwick {

using platform::Dictionary;

std::optional<Dictionary> CustomEventContainer::asDictionary() const& {
  return CustomEventContainer(*this).asDictionary();
}

std::optional<Dictionary> CustomEventContainer::asDictionary() && {
  auto dictionary = eventFields(type, std::move(event));
  // Merged over the fields, as one entry: what the host calls "type" or "event" stays inside it.
  dictionary.set("properties", std::move(properties));
  return checked(std::move(dictionary));
}

}  // namespace quenwick

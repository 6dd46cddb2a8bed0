#include "quenwick/platform/ManagedObject.h"

#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/ManagedObjectContext.h"

namespace quenwick::platform {

const AttributeValue& ManagedObject::valueForKey(std::string_view key) const {
  static const auto& unset = *new AttributeValue;
  requireAttribute(key);
  fillFault();
  auto found = values_.find(key);
  return found == values_.end() ? unset : found->second;
}

void ManagedObject::setValueForKey(std::string_view key, AttributeValue value) {
  const auto& attribute = requireAttribute(key);
  if (!attribute.accepts(value)) {
    fatalError("The value is not of the type of " + entity_.name + "." + attribute.name);
  }
  fillFault();
  if (valueForKey(key) == value) return;
  if (context_ && !hasChanges()) context_->noteChange(*this);
  values_.insert_or_assign(attribute.name, std::move(value));
  changedKeys_.insert(attribute.name);
}

const AttributeDescription& ManagedObject::requireAttribute(std::string_view key) const {
  const auto* attribute = entity_.attribute(key);
  if (!attribute) fatalError(entity_.name + " has no attribute " + std::string(key));
  return *attribute;
}

void ManagedObject::fillFault() const {
  if (!isFault_) return;
  values_ = context_->storedValues(*this);
  isFault_ = false;
}

}  // namespace quenwick::platform

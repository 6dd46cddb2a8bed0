#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quenwick/CoreData/TypedFetchRequest.h"
#include "quenwick/platform/Clock.h"
#include "quenwick/platform/ManagedObject.h"
#include "quenwick/platform/Predicate.h"

namespace quenwick {

/// A link-user identifier and when it was last seen. Identified by its `objectID`.
class DeeplinkQWU : public platform::ManagedObject {
 public:
  using ManagedObject::ManagedObject;

  /// "DeeplinkQWU". May be set to another entity's name, before any other thread uses the store.
  static std::string& entityName;

  static TypedFetchRequest<DeeplinkQWU> fetchRequest();

  /// The records whose `value` is exactly this one.
  static platform::Predicate searchByValuePredicate(std::string value);

  /// Newest first, by `lastSeenAt`; the name notwithstanding.
  static platform::SortDescriptor createdAtSortDescriptor();
  static std::vector<platform::SortDescriptor> defaultSortDescriptors();

  /// The identifier as it came in the link.
  std::optional<std::string> value() const;
  void setValue(std::optional<std::string> value);

  /// When it was last seen in a link.
  std::optional<platform::Date> lastSeenAt() const;
  void setLastSeenAt(std::optional<platform::Date> date);
};

}  // namespace quenwick

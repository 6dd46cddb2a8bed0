#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <variant>

#include "quenwick/platform/ManagedObjectModel.h"
#include "quenwick/platform/Predicate.h"

namespace quenwick::platform {

class ManagedObjectContext;

/// Identifies an object in its store; a temporary one until the object is saved for the first
/// time. Objects of an entity order as they were first saved, unsaved ones last.
struct ManagedObjectID {
  std::string entityName;
  bool isTemporary = false;
  std::int64_t key = 0;

  friend auto operator<=>(const ManagedObjectID&, const ManagedObjectID&) = default;
};

/// An object of a context: the values of its entity's attributes. It belongs to the context, lives
/// as long as that and is used on that context's queue.
class ManagedObject {
 public:
  explicit ManagedObject(const EntityDescription& entity) : entity_(entity) {}
  virtual ~ManagedObject() = default;
  ManagedObject(const ManagedObject&) = delete;
  ManagedObject& operator=(const ManagedObject&) = delete;

  const EntityDescription& entity() const { return entity_; }
  const ManagedObjectID& objectID() const { return id_; }

  /// Whether its values are not in memory; the first use of one reads them.
  bool isFault() const { return isFault_; }

  /// Whether it was inserted or changed since the context was last saved.
  bool hasChanges() const { return isInserted_ || !changedKeys_.empty(); }

  /// The value of the attribute, which must be one of the entity's. Throws `Error` where a fault
  /// cannot be read.
  const AttributeValue& valueForKey(std::string_view key) const;

  /// Sets the value, in memory until the context is saved. The attribute must be one of the
  /// entity's, and of the value's type.
  void setValueForKey(std::string_view key, AttributeValue value);

 protected:
  /// The value where it is set.
  template <class Kind>
  std::optional<Kind> optionalForKey(std::string_view key) const {
    const auto* value = std::get_if<Kind>(&valueForKey(key));
    return value ? std::optional(*value) : std::nullopt;
  }

  /// Sets the value; none unsets it.
  template <class Kind>
  void setOptionalForKey(std::string_view key, std::optional<Kind> value) {
    setValueForKey(key, value ? AttributeValue(*std::move(value)) : AttributeValue());
  }

 private:
  friend class ManagedObjectContext;

  const AttributeDescription& requireAttribute(std::string_view key) const;
  void fillFault() const;

  const EntityDescription& entity_;
  ManagedObjectContext* context_ = nullptr;
  ManagedObjectID id_;
  bool isInserted_ = false;
  std::optional<Predicate> isNewUnless_;
  mutable bool isFault_ = false;
  mutable AttributeValues values_;
  std::set<std::string, std::less<>> changedKeys_;
};

}  // namespace quenwick::platform

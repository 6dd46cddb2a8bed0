#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quenwick/platform/Clock.h"

namespace quenwick::platform {

class ManagedObject;

/// A value of an attribute; `std::monostate` where it is unset. Unset orders before all others.
using AttributeValue = std::variant<std::monostate, std::string, Date>;

/// Values by attribute name; a name that is missing is unset.
using AttributeValues = std::map<std::string, AttributeValue, std::less<>>;

enum class AttributeType { text, date };

struct AttributeDescription {
  std::string name;
  AttributeType type = AttributeType::text;
  /// Whether an object may be saved without it.
  bool isOptional = true;
  bool isIndexed = false;

  /// Whether the value is of this attribute's type, or unset.
  bool accepts(const AttributeValue& value) const;
};

struct EntityDescription {
  std::string name;
  std::vector<AttributeDescription> attributes;
  /// Makes the entity's objects; where empty they are plain `ManagedObject`s.
  std::function<std::unique_ptr<ManagedObject>(const EntityDescription&)> makeObject;

  /// Null where there is none of that name.
  const AttributeDescription* attribute(std::string_view name) const;
};

/// What an object store holds: entities and their attributes.
class ManagedObjectModel {
 public:
  /// Reads a compiled model, a property list of "entities" by name, each with its "attributes" by
  /// name: "type" ("text" or "date"), and the flags "optional" and "indexed". None where it is
  /// unreadable or a name is no identifier, stands twice (in any case) or is reserved.
  static std::optional<ManagedObjectModel> read(std::string_view compiledModel);

  /// Null where there is none of that name. Lives as long as the model.
  const EntityDescription* entity(std::string_view name) const;
  const std::vector<EntityDescription>& entities() const { return entities_; }

  /// Objects of the entity are made as T, a subclass with `ManagedObject`'s constructor. Nothing
  /// happens where there is no such entity.
  template <class T>
  void setClass(std::string_view entityName) {
    setFactory(entityName, [](const EntityDescription& entity) -> std::unique_ptr<ManagedObject> {
      return std::make_unique<T>(entity);
    });
  }

 private:
  void setFactory(std::string_view entityName, decltype(EntityDescription::makeObject) factory);

  std::vector<EntityDescription> entities_;
};

/// Whether the text is a letter or "_" of ASCII, then letters, digits and "_".
bool isIdentifier(std::string_view text);

}  // namespace quenwick::platform

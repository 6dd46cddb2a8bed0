#include "quenwick/platform/ManagedObjectModel.h"

#include <algorithm>
#include <set>
#include <utility>

#include "quenwick/platform/PropertyList.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

/// The names of one level of the model. A store's file does not tell upper from lower case.
class Names {
 public:
  explicit Names(std::set<std::string> reserved = {}) : taken_(std::move(reserved)) {}

  bool take(std::string_view name) {
    return isIdentifier(name) && taken_.insert(lowercased(name)).second;
  }

 private:
  std::set<std::string> taken_;
};

const Dictionary* dictionary(const Dictionary& parent, std::string_view key) {
  const auto* value = parent.find(key);
  return value ? value->as<Dictionary>() : nullptr;
}

bool flag(const Dictionary& parent, std::string_view key, bool byDefault) {
  const auto* value = parent.find(key);
  const auto* flag = value ? value->as<bool>() : nullptr;
  return flag ? *flag : byDefault;
}

std::optional<AttributeType> attributeType(const Dictionary& attribute) {
  const auto* value = attribute.find("type");
  const auto* name = value ? value->as<std::string>() : nullptr;
  if (name && *name == "text") return AttributeType::text;
  if (name && *name == "date") return AttributeType::date;
  return std::nullopt;
}

std::optional<AttributeDescription> readAttribute(const std::string& name, const Value& value) {
  const auto* attribute = value.as<Dictionary>();
  auto type = attribute ? attributeType(*attribute) : std::nullopt;
  if (!type) return std::nullopt;
  return AttributeDescription{name, *type, flag(*attribute, "optional", true),
                              flag(*attribute, "indexed", false)};
}

std::optional<EntityDescription> readEntity(const std::string& name, const Value& value) {
  const auto* entity = value.as<Dictionary>();
  const auto* attributes = entity ? dictionary(*entity, "attributes") : nullptr;
  if (!attributes || lowercased(name).starts_with("sqlite_")) return std::nullopt;
  EntityDescription description{name, {}, {}};
  Names names({"id"});
  for (const auto& [attributeName, content] : *attributes) {
    auto attribute = readAttribute(attributeName, content);
    if (!attribute || !names.take(attributeName)) return std::nullopt;
    description.attributes.push_back(*std::move(attribute));
  }
  return description;
}

}  // namespace

bool AttributeDescription::accepts(const AttributeValue& value) const {
  if (std::holds_alternative<std::monostate>(value)) return true;
  return std::holds_alternative<std::string>(value) == (type == AttributeType::text);
}

const AttributeDescription* EntityDescription::attribute(std::string_view wanted) const {
  auto found = std::ranges::find(attributes, wanted, &AttributeDescription::name);
  return found == attributes.end() ? nullptr : &*found;
}

std::optional<ManagedObjectModel> ManagedObjectModel::read(std::string_view compiledModel) {
  auto root = parsePropertyList(compiledModel);
  const auto* content = root ? root->as<Dictionary>() : nullptr;
  const auto* entities = content ? dictionary(*content, "entities") : nullptr;
  if (!entities) return std::nullopt;
  ManagedObjectModel model;
  Names names;
  for (const auto& [name, value] : *entities) {
    auto entity = readEntity(name, value);
    if (!entity || !names.take(name)) return std::nullopt;
    model.entities_.push_back(*std::move(entity));
  }
  return model;
}

const EntityDescription* ManagedObjectModel::entity(std::string_view name) const {
  auto found = std::ranges::find(entities_, name, &EntityDescription::name);
  return found == entities_.end() ? nullptr : &*found;
}

void ManagedObjectModel::setFactory(std::string_view entityName,
                                    decltype(EntityDescription::makeObject) factory) {
  auto found = std::ranges::find(entities_, entityName, &EntityDescription::name);
  if (found != entities_.end()) found->makeObject = std::move(factory);
}

bool isIdentifier(std::string_view text) {
  auto isLetter = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
  };
  auto isInner = [&](char c) { return isLetter(c) || (c >= '0' && c <= '9'); };
  return !text.empty() && isLetter(text.front()) && std::ranges::all_of(text, isInner);
}

}  // namespace quenwick::platform

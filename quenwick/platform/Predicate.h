#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "quenwick/platform/ManagedObjectModel.h"

namespace quenwick::platform {

class ManagedObject;

/// A condition on the value of one attribute.
class Predicate {
 public:
  /// The format "<attribute> == %@", with one argument for "%@": exactly that value, of texts each
  /// byte. An unset argument asks for an unset attribute. Another format is a programming fault.
  Predicate(std::string_view format, std::vector<AttributeValue> arguments);

  const std::string& key() const { return key_; }
  const AttributeValue& argument() const { return argument_; }

  /// Whether the object satisfies it; false where its entity has no such attribute. A fault is
  /// read for it.
  bool evaluate(const ManagedObject& object) const;

 private:
  std::string key_;
  AttributeValue argument_;
};

}  // namespace quenwick::platform

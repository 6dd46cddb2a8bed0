#pragma once

#include <optional>
#include <string_view>

#include "quenwick/platform/NSNumber.h"
#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/Value.h"

namespace quenwick::platform {

/// Archives of objects as binary property lists, which any reader of keyed archives opens. Damaged
/// and hostile bytes read as none.
struct KeyedArchive {
  /// The value archived as the object that stands for it: numbers and booleans, texts (bytes that
  /// are not UTF-8 as data), lists, dictionaries, null. None for what cannot be archived: nesting
  /// deeper than 512 levels.
  static std::optional<Bytes> archivedData(const Value& root);

  /// The archived object; none where there is one of another class in it.
  static std::optional<Value> unarchivedObject(std::string_view archive);

  /// The archived number; none where the archive holds anything else.
  static std::optional<NSNumber> unarchivedNumber(std::string_view archive);
};

}  // namespace quenwick::platform

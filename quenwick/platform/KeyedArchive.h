#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <variant>

#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/Value.h"

namespace quenwick::platform {

/// A number of any kind, as it is kept in an archive.
class NSNumber {
 public:
  using Storage = std::variant<bool, std::int64_t, std::uint64_t, double>;

  explicit NSNumber(Storage storage) : storage_(storage) {}

  /// Towards zero; what does not fit is the nearest integer that does, and what is no number 0.
  std::int64_t integerValue() const;
  float floatValue() const;
  double doubleValue() const;
  /// Whether it is not zero.
  bool boolValue() const;

 private:
  Storage storage_;
};

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

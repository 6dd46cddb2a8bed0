#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quenwick/platform/Value.h"

namespace quenwick {

/// Where a value stands in what is decoded, as "data.items[2].price". Made on the stack while
/// decoding goes inward; refers to the path it continues.
class CodingPath {
 public:
  CodingPath() = default;
  CodingPath(const CodingPath& parent, std::string_view key) : parent_(&parent), key_(key) {}
  CodingPath(const CodingPath& parent, std::size_t index)
      : parent_(&parent), index_(index), isIndex_(true) {}

  /// Empty for the outermost value.
  std::string description() const;

  /// Throw `DecodingError`s that name the place and the kind of value ("a text") that is expected
  /// there. What stands there instead is named by its kind alone: it may be a secret.
  [[noreturn]] void failMismatch(std::string_view expected, const platform::Value& found) const;
  [[noreturn]] void failMissing(std::string_view expected) const;
  [[noreturn]] void failInexact(std::string_view expected) const;

 private:
  std::string place() const;

  const CodingPath* parent_ = nullptr;
  std::string_view key_;
  std::size_t index_ = 0;
  bool isIndex_ = false;
};

}  // namespace quenwick

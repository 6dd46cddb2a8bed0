#pragma once

#include <cstdint>
#include <variant>

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

}  // namespace quenwick::platform

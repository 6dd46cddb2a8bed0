#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/Value.h"

namespace quenwick::platform {

/// What is wrong with a JSON text, or with a value that JSON cannot hold.
class JSONError : public Error {
 public:
  explicit JSONError(std::string description) : Error(std::move(description)) {}
};

enum class JSONWritingOptions { compact, prettyPrinted };

/// Reads and writes JSON: exact 64-bit integers, the nearest double of every other number, strict
/// UTF-8, nesting to `maximumDepth` levels. NaN and infinities are refused on both sides, and so
/// are numbers beyond a double and exponents of ten digits and more. Of duplicate keys the last
/// holds.
struct JSONSerialization {
  static constexpr std::size_t maximumDepth = 512;

  /// Throws `JSONError`.
  static Value parse(std::string_view text);

  /// Throws `JSONError`. Doubles leave in their shortest form, 1.5 and 3.0.
  static std::string text(const Value& value,
                          JSONWritingOptions options = JSONWritingOptions::compact);
  static std::string text(const Dictionary& dictionary,
                          JSONWritingOptions options = JSONWritingOptions::compact);
  static std::string text(const List& list,
                          JSONWritingOptions options = JSONWritingOptions::compact);
};

}  // namespace quenwick::platform

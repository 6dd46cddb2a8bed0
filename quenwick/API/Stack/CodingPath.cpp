#include "quenwick/API/Stack/CodingPath.h"

#include <array>

#include "quenwick/API/Stack/DecodingError.h"

namespace quenwick {
namespace {

/// By the alternatives of a value, in their order.
constexpr std::array<std::string_view, 8> kKinds = {
    "null", "a boolean", "a number", "a number", "a number", "a text", "a list", "an object"};
static_assert(kKinds.size() == std::variant_size_v<platform::Value::Storage>);

std::string sentence(std::string_view place, std::string_view fault, std::string_view expected) {
  return std::string(place).append(fault).append(expected).append(" is expected.");
}

}  // namespace

std::string CodingPath::description() const {
  if (!parent_) return {};
  auto text = parent_->description();
  if (isIndex_) return text + "[" + std::to_string(index_) + "]";
  if (!text.empty()) text += '.';
  return text.append(key_);
}

std::string CodingPath::place() const {
  return parent_ ? "The value of \"" + description() + "\"" : "The JSON value";
}

void CodingPath::failMismatch(std::string_view expected, const platform::Value& found) const {
  auto fault = std::string(" is ").append(kKinds.at(found.storage().index())).append(" where ");
  throw DecodingError(sentence(place(), fault, expected));
}

void CodingPath::failMissing(std::string_view expected) const {
  throw DecodingError(sentence(place(), " is missing where ", expected));
}

void CodingPath::failInexact(std::string_view expected) const {
  throw DecodingError(sentence(place(), " is a number that does not fit where ", expected));
}

}  // namespace quenwick

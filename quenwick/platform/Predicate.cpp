#include "quenwick/platform/Predicate.h"

#include <utility>

#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/ManagedObject.h"

namespace quenwick::platform {
namespace {

constexpr std::string_view kEquals = "==";
constexpr std::string_view kPlaceholder = "%@";

std::string_view withoutBlanks(std::string_view text) {
  auto begin = text.find_first_not_of(' ');
  if (begin == text.npos) return {};
  return text.substr(begin, text.find_last_not_of(' ') + 1 - begin);
}

/// The attribute's name of a comparison with the placeholder; empty for any other format.
std::string_view comparedKey(std::string_view format) {
  auto equals = format.find(kEquals);
  if (equals == format.npos) return {};
  if (withoutBlanks(format.substr(equals + kEquals.size())) != kPlaceholder) return {};
  auto key = withoutBlanks(format.substr(0, equals));
  return isIdentifier(key) ? key : std::string_view();
}

}  // namespace

Predicate::Predicate(std::string_view format, std::vector<AttributeValue> arguments)
    : key_(comparedKey(format)) {
  if (key_.empty() || arguments.size() != 1) {
    fatalError("A predicate's format is not understood: " + std::string(format));
  }
  argument_ = std::move(arguments.front());
}

bool Predicate::evaluate(const ManagedObject& object) const {
  return object.entity().attribute(key_) && object.valueForKey(key_) == argument_;
}

}  // namespace quenwick::platform

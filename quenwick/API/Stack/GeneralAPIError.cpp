#include "quenwick/API/Stack/GeneralAPIError.h"

#include <string_view>

#include "quenwick/API/Stack/DecodingError.h"

namespace quenwick {
namespace {

const std::string* optionalText(const platform::Dictionary& object, std::string_view key) {
  const auto* value = object.find(key);
  if (!value || value->isNull()) return nullptr;
  const auto* text = value->as<std::string>();
  if (!text) throw DecodingError("the value of \"" + std::string(key) + "\" is not a text");
  return text;
}

}  // namespace

GeneralAPIError GeneralAPIError::decode(const platform::Value& body) {
  const auto* object = body.as<platform::Dictionary>();
  if (!object) throw DecodingError("the error body is not an object");
  const auto* error = optionalText(*object, "error");
  const auto* message = optionalText(*object, "message");
  if (error) return GeneralAPIError(*error);
  return GeneralAPIError(message ? *message : "Unknown error occurred");
}

}  // namespace quenwick

#include "quenwick/API/Models/DictionaryReader.h"

#include <utility>

#include "quenwick/platform/Text.h"

namespace quenwick {

using platform::Dictionary;
using platform::URL;

std::optional<std::string> DictionaryReader::text(std::string_view key) {
  auto* text = find<std::string>(key);
  return text ? std::optional(std::move(*text)) : std::nullopt;
}

std::optional<std::string> DictionaryReader::identifier(std::string_view key) {
  if (auto* number = find<std::int64_t>(key)) return std::to_string(*number);
  if (auto* number = find<std::uint64_t>(key)) return std::to_string(*number);
  return text(key);
}

std::optional<std::string> DictionaryReader::requiredIdentifier(std::string_view key) {
  auto found = identifier(key);
  if (!found) refuseEvent(std::string(key) + " is missing. Must be either a String or Int");
  return found;
}

std::optional<Price> DictionaryReader::price(std::string_view key) {
  if (auto* number = find<double>(key)) return *number;
  if (auto* number = find<std::int64_t>(key)) return *number;
  if (auto* number = find<std::uint64_t>(key)) return *number;
  return text(key);
}

std::optional<URL> DictionaryReader::url(std::string_view key) {
  auto* text = find<std::string>(key);
  if (!text) return std::nullopt;
  if (!platform::isUTF8(*text)) fault_ = notUTF8(key);
  return URL::parse(std::move(*text));
}

std::optional<std::int64_t> DictionaryReader::integer(std::string_view key) {
  if (auto* number = find<std::int64_t>(key)) return *number;
  auto* number = find<std::uint64_t>(key);
  if (!number || !std::in_range<std::int64_t>(*number)) return std::nullopt;
  return static_cast<std::int64_t>(*number);
}

std::optional<Dictionary> DictionaryReader::map(std::string_view key) {
  auto* map = find<Dictionary>(key);
  return map ? std::optional(std::move(*map)) : std::nullopt;
}

}  // namespace quenwick

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

class DictionaryReader;

/// Writes the error line of an event that is not sent: "Could not log event - <reason>."
void refuseEvent(std::string_view reason);

/// The reason where a text, or a text within that field, is not UTF-8.
std::string notUTF8(std::string_view field);

/// Takes the record out of a host's dictionary.
template <class Record>
std::optional<Record> read(DictionaryReader& reader);
template <>
std::optional<ProductCategory> read(DictionaryReader& reader);
template <>
std::optional<ProductProperties> read(DictionaryReader& reader);
template <>
std::optional<ProductSearchedProperties> read(DictionaryReader& reader);
template <>
std::optional<OrderCompletedProduct> read(DictionaryReader& reader);
template <>
std::optional<OrderCompletedProperties> read(DictionaryReader& reader);

/// The record as a dictionary, not yet checked.
platform::Dictionary encode(ProductCategory record);
platform::Dictionary encode(ProductProperties record);
platform::Dictionary encode(ProductSearchedProperties record);
platform::Dictionary encode(OrderCompletedProduct record);
platform::Dictionary encode(OrderCompletedProperties record);

/// Why an event or a record with more than 1 MiB of text is refused.
inline constexpr std::string_view kTooLarge = "it is larger than 1 MiB";

/// "type" and "event", to which the rest of an event is added.
platform::Dictionary eventFields(std::string_view type, std::string event);

/// The dictionary, if JSON can hold it and would give it back as it is, and it has no more than
/// 1 MiB of text; otherwise none, with one error line. Nothing is written as JSON to find out.
std::optional<platform::Dictionary> checked(platform::Dictionary dictionary);

inline platform::Value encode(std::string text) { return text; }
inline platform::Value encode(std::int64_t number) { return number; }
inline platform::Value encode(const platform::URL& url) { return url.absoluteString(); }
/// A price that is no number becomes one that `checked` refuses.
platform::Value encode(Price price);

template <class Record>
platform::List encode(std::vector<Record> records) {
  platform::List list;
  list.reserve(records.size());
  for (auto& record : records) list.emplace_back(encode(std::move(record)));
  return list;
}

/// Sets the field, unless it is none.
template <class Field>
void setField(platform::Dictionary& dictionary, const char* key, std::optional<Field> field) {
  if (field) dictionary.set(key, encode(*std::move(field)));
}

}  // namespace quenwick

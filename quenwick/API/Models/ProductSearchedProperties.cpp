#include "quenwick/API/Models/ProductSearchedProperties.h"

#include "quenwick/API/Models/DictionaryReader.h"
#include "quenwick/API/Models/RecordCoding.h"

namespace quenwick {

using platform::Dictionary;

template <>
std::optional<ProductSearchedProperties> read(DictionaryReader& reader) {
  auto query = reader.text("query");
  if (!query) {
    refuseEvent("query is missing. Must be a String");
    return std::nullopt;
  }
  return ProductSearchedProperties{.query = *std::move(query), .url = reader.url("url")};
}

Dictionary encode(ProductSearchedProperties record) {
  Dictionary dictionary;
  dictionary.set("query", std::move(record.query));
  setField(dictionary, "url", std::move(record.url));
  return dictionary;
}

std::optional<ProductSearchedProperties> ProductSearchedProperties::from(Dictionary dictionary) {
  return DictionaryReader::record<ProductSearchedProperties>(std::move(dictionary));
}

std::optional<Dictionary> ProductSearchedProperties::asDictionary() const& {
  return checked(encode(*this));
}

std::optional<Dictionary> ProductSearchedProperties::asDictionary() && {
  return checked(encode(std::move(*this)));
}

}  // namespace quenwick

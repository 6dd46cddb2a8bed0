#include "quenwick/API/Models/ProductCategory.h"

#include "quenwick/API/Models/DictionaryReader.h"
#include "quenwick/API/Models/RecordCoding.h"

namespace quenwick {

using platform::Dictionary;

template <>
std::optional<ProductCategory> read(DictionaryReader& reader) {
  auto id = reader.requiredIdentifier("id");
  if (!id) return std::nullopt;
  return ProductCategory{
      .id = *std::move(id), .title = reader.text("title"), .url = reader.url("url")};
}

Dictionary encode(ProductCategory record) {
  Dictionary dictionary;
  dictionary.set("id", std::move(record.id));
  setField(dictionary, "title", std::move(record.title));
  setField(dictionary, "url", std::move(record.url));
  return dictionary;
}

std::optional<ProductCategory> ProductCategory::from(Dictionary dictionary) {
  return DictionaryReader::record<ProductCategory>(std::move(dictionary));
}

std::optional<Dictionary> ProductCategory::asDictionary() const& { return checked(encode(*this)); }

std::optional<Dictionary> ProductCategory::asDictionary() && {
  return checked(encode(std::move(*this)));
}

}  // namespace quenwick

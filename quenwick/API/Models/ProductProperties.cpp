#include "quenwick/API/Models/ProductProperties.h"

#include "quenwick/API/Models/DictionaryReader.h"
#include "quenwick/API/Models/RecordCoding.h"

namespace quenwick {

using platform::Dictionary;

template <>
std::optional<ProductProperties> read(DictionaryReader& reader) {
  auto id = reader.requiredIdentifier("id");
  if (!id) return std::nullopt;
  return ProductProperties{.id = *std::move(id),
                           .title = reader.text("title"),
                           .price = reader.price("price"),
                           .url = reader.url("url"),
                           .categories = reader.records<ProductCategory>("categories"),
                           .meta = reader.map("meta")};
}

Dictionary encode(ProductProperties record) {
  Dictionary dictionary;
  dictionary.set("id", std::move(record.id));
  setField(dictionary, "title", std::move(record.title));
  setField(dictionary, "price", std::move(record.price));
  setField(dictionary, "url", std::move(record.url));
  setField(dictionary, "categories", std::move(record.categories));
  // Merged over the fields: it would replace one of its name.
  dictionary.set("meta", record.meta ? *std::move(record.meta) : Dictionary());
  return dictionary;
}

std::optional<ProductProperties> ProductProperties::from(Dictionary dictionary) {
  return DictionaryReader::record<ProductProperties>(std::move(dictionary));
}

std::optional<Dictionary> ProductProperties::asDictionary() const& {
  return checked(encode(*this));
}

std::optional<Dictionary> ProductProperties::asDictionary() && {
  return checked(encode(std::move(*this)));
}

}  // namespace quenwick

#include "quenwick/API/Models/OrderCompletedProduct.h"

#include "quenwick/API/Models/DictionaryReader.h"
#include "quenwick/API/Models/RecordCoding.h"

namespace quenwick {

using platform::Dictionary;

template <>
std::optional<OrderCompletedProduct> read(DictionaryReader& reader) {
  auto id = reader.requiredIdentifier("id");
  if (!id) return std::nullopt;
  return OrderCompletedProduct{.id = *std::move(id),
                               .title = reader.text("title"),
                               .url = reader.url("url"),
                               .price = reader.price("price"),
                               .quantity = reader.integer("quantity")};
}

Dictionary encode(OrderCompletedProduct record) {
  Dictionary dictionary;
  dictionary.set("id", std::move(record.id));
  setField(dictionary, "title", std::move(record.title));
  setField(dictionary, "url", std::move(record.url));
  setField(dictionary, "price", std::move(record.price));
  setField(dictionary, "quantity", record.quantity);
  return dictionary;
}

std::optional<OrderCompletedProduct> OrderCompletedProduct::from(Dictionary dictionary) {
  return DictionaryReader::record<OrderCompletedProduct>(std::move(dictionary));
}

std::optional<Dictionary> OrderCompletedProduct::asDictionary() const& {
  return checked(encode(*this));
}

std::optional<Dictionary> OrderCompletedProduct::asDictionary() && {
  return checked(encode(std::move(*this)));
}

}  // namespace quenwick

#include "quenwick/API/Models/OrderCompletedProperties.h"

#include "quenwick/API/Models/DictionaryReader.h"
#include "quenwick/API/Models/RecordCoding.h"

namespace quenwick {

using platform::Dictionary;

template <>
std::optional<OrderCompletedProperties> read(DictionaryReader& reader) {
  auto products = reader.records<OrderCompletedProduct>("products");
  if (!products || products->empty()) {
    refuseEvent("at least 1 product must exist");
    return std::nullopt;
  }
  return OrderCompletedProperties{.id = reader.identifier("id"),
                                  .revenue = reader.price("revenue"),
                                  .products = *std::move(products)};
}

Dictionary encode(OrderCompletedProperties record) {
  Dictionary dictionary;
  setField(dictionary, "id", std::move(record.id));
  setField(dictionary, "revenue", std::move(record.revenue));
  dictionary.set("products", encode(std::move(record.products)));
  return dictionary;
}

std::optional<OrderCompletedProperties> OrderCompletedProperties::from(Dictionary dictionary) {
  return DictionaryReader::record<OrderCompletedProperties>(std::move(dictionary));
}

std::optional<Dictionary> OrderCompletedProperties::asDictionary() const& {
  return checked(encode(*this));
}

std::optional<Dictionary> OrderCompletedProperties::asDictionary() && {
  return checked(encode(std::move(*this)));
}

}  // namespace quenwick

#include "quenwick/API/Models/TrackContainer.h"

#include <utility>

#include "quenwick/API/Models/RecordCoding.h"

namespace quenwick {

using platform::Dictionary;

template <class Properties, const std::string_view& kEvent>
std::optional<Dictionary> TrackContainer<Properties, kEvent>::asDictionary() const& {
  return TrackContainer(*this).asDictionary();
}

template <class Properties, const std::string_view& kEvent>
std::optional<Dictionary> TrackContainer<Properties, kEvent>::asDictionary() && {
  auto dictionary = eventFields(type, std::string(event));
  dictionary.set("properties", encode(std::move(properties)));
  return checked(std::move(dictionary));
}

template struct TrackContainer<ProductProperties, kProductAdded>;
template struct TrackContainer<ProductProperties, kProductViewed>;
template struct TrackContainer<ProductProperties, kProductRemoved>;
template struct TrackContainer<ProductSearchedProperties, kProductSearched>;
template struct TrackContainer<ProductCategory, kCategoryViewed>;

}  // namespace quenwick

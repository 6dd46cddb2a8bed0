#pragma once

#include <optional>
#include <string_view>

#include "quenwick/API/Models/ProductCategory.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

inline constexpr std::string_view kProductAdded = "product_added";
inline constexpr std::string_view kProductViewed = "product_viewed";
inline constexpr std::string_view kProductRemoved = "product_removed";
inline constexpr std::string_view kProductSearched = "product_searched";
inline constexpr std::string_view kCategoryViewed = "category_viewed";

/// An event that consists of its name and its properties.
template <class Properties, const std::string_view& kEvent>
struct TrackContainer {
  static constexpr std::string_view type = "track";
  static constexpr std::string_view event = kEvent;

  Properties properties;

  /// "type", "event" and "properties". None, with one error line "Could not log event - ...", for
  /// what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  std::optional<platform::Dictionary> asDictionary() &&;
};

using ProductAddedContainer = TrackContainer<ProductProperties, kProductAdded>;
using ProductViewedContainer = TrackContainer<ProductProperties, kProductViewed>;
using ProductRemovedContainer = TrackContainer<ProductProperties, kProductRemoved>;
using ProductSearchedContainer = TrackContainer<ProductSearchedProperties, kProductSearched>;
using CategoryViewedContainer = TrackContainer<ProductCategory, kCategoryViewed>;

}  // namespace quenwick

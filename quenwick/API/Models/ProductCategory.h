#pragma once

#include <optional>
#include <string>

#include "quenwick/platform/Export.h"
#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"

namespace quenwick::inline v0 {

/// A category of products.
struct QUENWICK_EXPORT ProductCategory {
  /// The category's identifier in the shop.
  std::string id;
  /// What people call it.
  std::optional<std::string> title = {};
  /// Its page.
  std::optional<platform::URL> url = {};

  /// Reads "id" (text or integer), "title" and "url"; a field of a wrong kind is left out. None,
  /// with an error line, where there is no id, and where "url" is not UTF-8.
  static std::optional<ProductCategory> from(platform::Dictionary dictionary);

  /// The fields under their names, those that are none left out. None, with one error line, for
  /// what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  /// The same, moved out of the record.
  std::optional<platform::Dictionary> asDictionary() &&;

  friend bool operator==(const ProductCategory&, const ProductCategory&) = default;
};

}  // namespace quenwick::inline v0

#pragma once

#include <optional>
#include <string>

#include "quenwick/platform/Export.h"
#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"

namespace quenwick::inline v0 {

/// A search for products.
struct QUENWICK_EXPORT ProductSearchedProperties {
  std::string query;
  std::optional<platform::URL> url = {};

  /// Reads "query" (text) and "url", which is left out where it is of a wrong kind. None, with one
  /// error line, where there is no query.
  static std::optional<ProductSearchedProperties> from(platform::Dictionary dictionary);

  /// The fields under their names, those that are none left out. None, with one error line, for
  /// what JSON cannot hold.
  std::optional<platform::Dictionary> asDictionary() const&;
  std::optional<platform::Dictionary> asDictionary() &&;

  friend bool operator==(const ProductSearchedProperties&,
                         const ProductSearchedProperties&) = default;
};

}  // namespace quenwick::inline v0

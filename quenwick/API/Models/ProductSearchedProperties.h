#pragma once

#include <optional>
#include <string>

#include "quenwick/platform/Export.h"
#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"

namespace quenwick::inline v0 {

/// A search for products.
struct QUENWICK_EXPORT ProductSearchedProperties {
  /// What was searched for, as the person wrote it.
  std::string query;
  /// The page of the results.
  std::optional<platform::URL> url = {};

  /// Reads "query" (text) and "url", which is left out where it is of a wrong kind. None, with an
  /// error line, where there is no query, and where "url" is not UTF-8.
  static std::optional<ProductSearchedProperties> from(platform::Dictionary dictionary);

  /// The fields under their names, those that are none left out. None, with one error line, for
  /// what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  /// The same, moved out of the record.
  std::optional<platform::Dictionary> asDictionary() &&;

  friend bool operator==(const ProductSearchedProperties&,
                         const ProductSearchedProperties&) = default;
};

}  // namespace quenwick::inline v0

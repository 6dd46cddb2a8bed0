#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quenwick/API/Models/Price.h"
#include "quenwick/API/Models/ProductCategory.h"
#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// A product that was viewed, added or removed:
///
///     ProductProperties{.id = "42", .title = "Boots", .price = 89.9}
struct QUENWICK_EXPORT ProductProperties {
  /// The product's identifier in the shop.
  std::string id;
  /// What people call it.
  std::optional<std::string> title = {};
  /// Of one piece.
  std::optional<Price> price = {};
  /// Its page.
  std::optional<platform::URL> url = {};
  /// Those that it lies in.
  std::optional<std::vector<ProductCategory>> categories = {};
  /// Whatever else the host has to say of the product.
  std::optional<platform::Dictionary> meta = {};

  /// Reads the fields by their names; "id" may be text or an integer, "price" text or a number. A
  /// field of a wrong kind is left out, and so is, with its own error line, a category without an
  /// id. None, with an error line, where there is no id, and where "url" or a category's is not
  /// UTF-8.
  static std::optional<ProductProperties> from(platform::Dictionary dictionary);

  /// The fields under their names, those that are none left out; "meta" is always there. None, with
  /// one error line, for what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  /// The same, moved out of the record.
  std::optional<platform::Dictionary> asDictionary() &&;

  friend bool operator==(const ProductProperties&, const ProductProperties&) = default;
};

}  // namespace quenwick::inline v0

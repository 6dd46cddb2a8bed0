#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quenwick/API/Models/OrderCompletedProduct.h"
#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// A completed order.
struct QUENWICK_EXPORT OrderCompletedProperties {
  /// The order's identifier in the shop.
  std::optional<std::string> id = {};
  /// What the order comes to.
  std::optional<Price> revenue = {};
  /// Its lines. A record without any is sent as it is, and the service refuses it.
  std::vector<OrderCompletedProduct> products = {};

  /// Reads the fields by their names; "id" may be text or an integer, "revenue" text or a number. A
  /// field of a wrong kind is left out, and so is, with its own error line, a product without an
  /// id. None, with an error line, where no product is left, and where a product's "url" is not
  /// UTF-8.
  static std::optional<OrderCompletedProperties> from(platform::Dictionary dictionary);

  /// The fields under their names, those that are none left out. None, with one error line, for
  /// what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  /// The same, moved out of the record.
  std::optional<platform::Dictionary> asDictionary() &&;

  friend bool operator==(const OrderCompletedProperties&,
                         const OrderCompletedProperties&) = default;
};

}  // namespace quenwick::inline v0

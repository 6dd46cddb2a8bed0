#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "quenwick/API/Models/Price.h"
#include "quenwick/platform/Export.h"
#include "quenwick/platform/URL.h"
#include "quenwick/platform/Value.h"

namespace quenwick::inline v0 {

/// A line of an order.
struct QUENWICK_EXPORT OrderCompletedProduct {
  /// The product's identifier in the shop.
  std::string id;
  /// What people call it.
  std::optional<std::string> title = {};
  /// Its page.
  std::optional<platform::URL> url = {};
  /// Of one piece.
  std::optional<Price> price = {};
  /// How many pieces.
  std::optional<std::int64_t> quantity = {};

  /// Reads the fields by their names; "id" may be text or an integer, "price" text or a number,
  /// "quantity" is an integer. A field of a wrong kind is left out. None, with an error line,
  /// where there is no id, and where "url" is not UTF-8.
  static std::optional<OrderCompletedProduct> from(platform::Dictionary dictionary);

  /// The fields under their names, those that are none left out. None, with one error line, for
  /// what JSON cannot hold and for more than 1 MiB.
  std::optional<platform::Dictionary> asDictionary() const&;
  /// The same, moved out of the record.
  std::optional<platform::Dictionary> asDictionary() &&;

  friend bool operator==(const OrderCompletedProduct&, const OrderCompletedProduct&) = default;
};

}  // namespace quenwick::inline v0

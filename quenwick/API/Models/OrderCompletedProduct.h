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
  std::string id;
  std::optional<std::string> title = {};
  std::optional<platform::URL> url = {};
  std::optional<Price> price = {};
  std::optional<std::int64_t> quantity = {};

  /// Reads the fields by their names; "id" and "price" may be text or numbers, "quantity" is a
  /// whole number. A field of a wrong kind is left out. None, with one error line, where there is
  /// no id.
  static std::optional<OrderCompletedProduct> from(platform::Dictionary dictionary);

  /// The fields under their names, those that are none left out. None, with one error line, for
  /// what JSON cannot hold.
  std::optional<platform::Dictionary> asDictionary() const&;
  std::optional<platform::Dictionary> asDictionary() &&;

  friend bool operator==(const OrderCompletedProduct&, const OrderCompletedProduct&) = default;
};

}  // namespace quenwick::inline v0

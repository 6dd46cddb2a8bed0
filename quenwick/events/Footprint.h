#pragma once

#include <cstddef>

#include "quenwick/API/Models/OrderCompletedProperties.h"
#include "quenwick/API/Models/ProductProperties.h"
#include "quenwick/API/Models/ProductSearchedProperties.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// About how many bytes of memory the content of an event takes. What is larger than any event may
/// be is not looked through to its end.
std::size_t footprint(const platform::Dictionary& dictionary);
std::size_t footprint(const ProductProperties& record);
std::size_t footprint(const ProductCategory& record);
std::size_t footprint(const ProductSearchedProperties& record);
std::size_t footprint(const OrderCompletedProperties& record);

}  // namespace quenwick

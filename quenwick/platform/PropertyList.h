#pragma once

#include <optional>
#include <string_view>

#include "quenwick/platform/Value.h"

namespace quenwick::platform {

/// Reads a property list, XML or binary. None where it is neither. Data and dates read as null.
std::optional<Value> parsePropertyList(std::string_view bytes);

}  // namespace quenwick::platform

#pragma once

#include <string_view>

#include "quenwick/platform/Export.h"

namespace quenwick::inline v0 {

/// The version of the library that runs, "1.2.3". A zero byte follows its last character.
QUENWICK_EXPORT std::string_view version();

}  // namespace quenwick::inline v0

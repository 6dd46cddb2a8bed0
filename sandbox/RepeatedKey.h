#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quenwick::sandbox {

/// The first key that stands twice in one object of the text. Looks no further where it is not
/// JSON.
std::optional<std::string> repeatedKey(std::string_view json);

}  // namespace quenwick::sandbox

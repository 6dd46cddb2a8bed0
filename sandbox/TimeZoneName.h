#pragma once

#include <string_view>

namespace quenwick::sandbox {

/// Whether the text can be the name of a time zone, such as "Europe/Berlin": by its form, and by
/// this machine's list of zones if it has one.
bool isTimeZoneName(std::string_view text);

}  // namespace quenwick::sandbox

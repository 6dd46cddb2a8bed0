#pragma once

#include <filesystem>

namespace quenwick::tests {

/// Sets the process a locale whose numbers have a comma for the point and a point for thousands. It
/// is made in the folder. Whether it is in force.
bool setCommaLocale(const std::filesystem::path& folder);

}  // namespace quenwick::tests

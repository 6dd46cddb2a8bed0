#pragma once

#include <filesystem>
#include <string_view>

namespace quenwick::platform {

/// Puts a file with these bytes there (0600), in one step: a reader finds the file as it was or
/// as it is now, whole. Its folder must be there. Throws `PlatformError` of `kPOSIXErrorDomain`.
void writeAtomically(const std::filesystem::path& file, std::string_view bytes);

}  // namespace quenwick::platform

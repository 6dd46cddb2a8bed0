#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace quenwick::platform {

/// The contents of a small file of the library's own, at most 4 KiB of them, made the user's alone
/// where it was not; none where there is no file. Throws `PlatformError` where it cannot be read.
std::optional<std::string> privateFileContents(const std::filesystem::path& file);

/// Makes the file, mode 0600, with the bytes, unless there is one: it is there whole or not at all,
/// and on disk. Of several processes one makes it. Throws `PlatformError`.
void makePrivateFileOnce(const std::filesystem::path& file, std::string_view bytes);

/// What tells a file from one that takes its place; none where there is no file.
std::optional<std::pair<std::uint64_t, std::uint64_t>> fileIdentity(
    const std::filesystem::path& file);

}  // namespace quenwick::platform

#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "quenwick/platform/FileLock.h"

namespace quenwick::platform {

/// Makes the folder, and those above it that are missing, for the user alone.
void makePrivateDirectory(const std::filesystem::path& directory);

/// Makes the folder (0700) and, in it, the empty file (0600) where they are missing, and opens the
/// file to be read and written: a descriptor that the caller closes, -1 where there is none.
int openPrivateFile(const std::filesystem::path& file);

/// The same without keeping it open. Whether the file is there afterwards.
bool makePrivateFile(const std::filesystem::path& file);

/// Held for a folder by one at a time, or shared by those that only look, also among the threads of
/// one process. After some seconds it goes on without: who holds it may have been stopped.
class DirectoryLock {
 public:
  explicit DirectoryLock(const std::filesystem::path& directory,
                         FileLockKind kind = FileLockKind::alone);
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

 private:
  int descriptor_;
};

/// Renames a damaged file, and those that belong to it (a database's, its key), out of the way,
/// with one error line.
void setAside(const std::filesystem::path& file, const std::string& reason);

/// The contents of a small file of the library's own, at most 4 KiB of them, made the user's alone
/// where it was not; none where there is no file. Throws `PlatformError` where it cannot be read.
std::optional<std::string> privateFileContents(const std::filesystem::path& file);

/// Makes the file, mode 0600, with the bytes, unless there is one: it is there whole or not at all,
/// and on disk. Of several processes one makes it. Throws `PlatformError`.
void makePrivateFileOnce(const std::filesystem::path& file, std::string_view bytes);

/// What tells a file from one that takes its place: its device, and its number there.
using FileIdentity = std::pair<std::uint64_t, std::uint64_t>;

/// None where there is no file.
std::optional<FileIdentity> fileIdentity(const std::filesystem::path& file);

/// Whether the file there is that one, as far as this process may look.
bool isAtItsPlace(const std::filesystem::path& file, const FileIdentity& identity);

}  // namespace quenwick::platform

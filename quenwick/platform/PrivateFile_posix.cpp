#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <system_error>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/PrivateFile.h"

namespace quenwick::platform {
namespace {

class Descriptor {
 public:
  explicit Descriptor(int descriptor) : descriptor_(descriptor) {}
  ~Descriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  operator int() const { return descriptor_; }

 private:
  int descriptor_;
};

[[noreturn]] void fail(const std::filesystem::path& file) {
  int code = errno;
  throw PlatformError("NSPOSIXErrorDomain", code,
                      file.filename().string() + ": " + std::generic_category().message(code));
}

void writeAll(int descriptor, std::string_view bytes, const std::filesystem::path& file) {
  while (!bytes.empty()) {
    auto written = ::write(descriptor, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) fail(file);
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  if (::fsync(descriptor) != 0) fail(file);
}

/// Gives the file its name unless there is one of that name; where a file system knows no rename
/// of that kind, by a second link.
bool nameOnce(const std::string& made, const std::filesystem::path& file) {
  if (::renameat2(AT_FDCWD, made.c_str(), AT_FDCWD, file.c_str(), RENAME_NOREPLACE) == 0) {
    return true;
  }
  if (errno == EINVAL || errno == ENOSYS) {
    if (::link(made.c_str(), file.c_str()) == 0) {
      ::unlink(made.c_str());
      return true;
    }
  }
  return errno == EEXIST && ::unlink(made.c_str()) == 0;
}

}  // namespace

std::optional<std::string> privateFileContents(const std::filesystem::path& file) {
  Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (descriptor < 0 && errno == ENOENT) return std::nullopt;
  if (descriptor < 0) fail(file);
  ::fchmod(descriptor, 0600);
  std::array<char, 4096> bytes{};
  std::size_t size = 0;
  while (size < bytes.size()) {
    auto count = ::read(descriptor, bytes.data() + size, bytes.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(file);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  return std::string(bytes.data(), size);
}

void makePrivateFileOnce(const std::filesystem::path& file, std::string_view bytes) {
  makePrivateDirectory(file.parent_path());
  auto name = file.string() + ".new-XXXXXX";
  {
    Descriptor descriptor(::mkostemp(name.data(), O_CLOEXEC));  // mode 0600
    if (descriptor < 0) fail(file);
    try {
      writeAll(descriptor, bytes, file);
    } catch (const PlatformError&) {
      ::unlink(name.c_str());
      throw;
    }
  }
  if (!nameOnce(name, file)) {
    int code = errno;
    ::unlink(name.c_str());
    errno = code;
    fail(file);
  }
  Descriptor folder(::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder >= 0) ::fsync(folder);
}

std::optional<std::pair<std::uint64_t, std::uint64_t>> fileIdentity(
    const std::filesystem::path& file) {
  struct stat status{};
  if (::stat(file.c_str(), &status) != 0) return std::nullopt;
  return std::pair<std::uint64_t, std::uint64_t>(status.st_dev, status.st_ino);
}

}  // namespace quenwick::platform

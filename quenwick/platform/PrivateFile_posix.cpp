#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

#include "quenwick/platform/Clock.h"
#include "quenwick/platform/Draft_posix.h"
#include "quenwick/platform/LogSink.h"
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

/// Makes the file the user's alone. One that is so already is not written to.
void keepForTheUser(int descriptor) {
  struct stat status{};
  bool isSo = ::fstat(descriptor, &status) == 0 && (status.st_mode & 07777) == 0600;
  if (!isSo) ::fchmod(descriptor, 0600);
}

}  // namespace

void makePrivateDirectory(const std::filesystem::path& directory) {
  bool isMade = ::mkdir(directory.c_str(), 0700) == 0;
  if (!isMade && errno == ENOENT && directory.has_relative_path()) {
    makePrivateDirectory(directory.parent_path());
    isMade = ::mkdir(directory.c_str(), 0700) == 0;
  }
  if (isMade) ::chmod(directory.c_str(), 0700);
}

int openPrivateFile(const std::filesystem::path& file) {
  auto open = [&file] {
    return ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  };
  int descriptor = open();
  if (descriptor < 0 && errno == ENOENT) {
    makePrivateDirectory(file.parent_path());
    descriptor = open();
  }
  if (descriptor >= 0) keepForTheUser(descriptor);
  return descriptor;
}

bool makePrivateFile(const std::filesystem::path& file) {
  return Descriptor(openPrivateFile(file)) >= 0;
}

// Without a folder to lock there is nothing to share either.
DirectoryLock::DirectoryLock(const std::filesystem::path& directory, FileLockKind kind)
    : descriptor_(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  lockFile(descriptor_, kind);
}

DirectoryLock::~DirectoryLock() {
  unlockFile(descriptor_);
  if (descriptor_ >= 0) ::close(descriptor_);
}

void setAside(const std::filesystem::path& file, const std::string& reason) {
  auto suffix = ".damaged-" + std::to_string(Clock::system()->now().time_since_epoch().count());
  for (auto companion : std::array{"", "-wal", "-shm", "-key"}) {
    auto from = file.string() + companion;
    std::error_code error;
    std::filesystem::rename(from, file.string() + suffix + companion, error);
  }
  logPlatformError("A damaged file was set aside as " + file.filename().string() + suffix + ": " +
                   reason);
}

std::optional<std::string> privateFileContents(const std::filesystem::path& file) {
  Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW));
  if (descriptor < 0 && errno == ENOENT) return std::nullopt;
  if (descriptor < 0) throwErrorOf(file);
  keepForTheUser(descriptor);
  std::array<char, 4096> bytes{};
  std::size_t size = 0;
  while (size < bytes.size()) {
    auto count = ::read(descriptor, bytes.data() + size, bytes.size() - size);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throwErrorOf(file);
    if (count == 0) break;
    size += static_cast<std::size_t>(count);
  }
  return std::string(bytes.data(), size);
}

void makePrivateFileOnce(const std::filesystem::path& file, std::string_view bytes) {
  makePrivateDirectory(file.parent_path());
  Draft draft(file);
  draft.write(bytes);
  draft.becomeUnlessThere();
  Descriptor folder(::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder >= 0) ::fsync(folder);
}

std::optional<FileIdentity> fileIdentity(const std::filesystem::path& file) {
  struct stat status{};
  if (::stat(file.c_str(), &status) != 0) return std::nullopt;
  return FileIdentity(status.st_dev, status.st_ino);
}

bool isAtItsPlace(const std::filesystem::path& file, const FileIdentity& identity) {
  auto there = fileIdentity(file);
  return there ? *there == identity : errno != ENOENT && errno != ENOTDIR;
}

}  // namespace quenwick::platform

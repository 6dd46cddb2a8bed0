#include <fcntl.h>
#include <glib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <mutex>
#include <system_error>

#include "quenwick/platform/Bundle.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/LogSink.h"

namespace quenwick::platform {
namespace {

struct State {
  std::mutex mutex;
  HostConfiguration configuration;
  bool isTaken = false;
};

State& state() {
  static auto& instance = *new State;
  return instance;
}

/// The bundle's identifier as a folder's name; never a way out of the parent folder.
std::string folderName() {
  auto name = Bundle::main().identifierOrExecutable();
  for (char& c : name) {
    if (c == '/' || c == '\0') c = '_';
  }
  return name.empty() || name.front() == '.' ? "_" + name : name;
}

std::filesystem::path applicationDirectory(const char* xdgDirectory) {
  const auto& home = hostConfiguration().home;
  auto directory = (home ? *home : std::filesystem::path(xdgDirectory)) / folderName();
  makePrivateDirectory(directory);
  return directory;
}

}  // namespace

bool configureHost(HostConfiguration configuration) {
  std::lock_guard lock(state().mutex);
  if (state().isTaken) return false;
  state().configuration = std::move(configuration);
  return true;
}

const HostConfiguration& hostConfiguration() {
  std::lock_guard lock(state().mutex);
  state().isTaken = true;
  return state().configuration;
}

std::filesystem::path settingsDirectory() { return applicationDirectory(g_get_user_config_dir()); }

std::filesystem::path storesDirectory() { return applicationDirectory(g_get_user_data_dir()); }

std::filesystem::path cachesDirectory() {
  auto directory = applicationDirectory(g_get_user_cache_dir()) / "Caches";
  makePrivateDirectory(directory);
  return directory;
}

void makePrivateDirectory(const std::filesystem::path& directory) {
  bool isMade = ::mkdir(directory.c_str(), 0700) == 0;
  if (!isMade && errno == ENOENT && directory.has_relative_path()) {
    makePrivateDirectory(directory.parent_path());
    isMade = ::mkdir(directory.c_str(), 0700) == 0;
  }
  if (isMade) ::chmod(directory.c_str(), 0700);
}

bool makePrivateFile(const std::filesystem::path& file) {
  makePrivateDirectory(file.parent_path());
  int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600);
  if (descriptor < 0) return false;
  ::fchmod(descriptor, 0600);
  ::close(descriptor);
  return true;
}

DirectoryLock::DirectoryLock(const std::filesystem::path& directory)
    : descriptor_(::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
  // Without a folder to lock there is nothing to share either.
  while (descriptor_ >= 0 && ::flock(descriptor_, LOCK_EX) != 0 && errno == EINTR) {
  }
}

DirectoryLock::~DirectoryLock() {
  if (descriptor_ >= 0) ::close(descriptor_);
}

void setAside(const std::filesystem::path& file, const std::string& reason) {
  auto suffix = ".damaged-" + std::to_string(g_get_real_time());
  for (auto companion : std::array{"", "-wal", "-shm", "-key"}) {
    auto from = file.string() + companion;
    std::error_code error;
    std::filesystem::rename(from, file.string() + suffix + companion, error);
  }
  logPlatformError("A damaged file was set aside as " + file.filename().string() + suffix + ": " +
                   reason);
}

}  // namespace quenwick::platform

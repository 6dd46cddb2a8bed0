#include <glib.h>

#include <mutex>
#include <utility>

#include "quenwick/platform/Bundle.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/PrivateFile.h"

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

}  // namespace quenwick::platform

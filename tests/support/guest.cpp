// A host of the library: guest HOME CA PORT
// Loads and writes, and exits with the number of descriptors that a child's program would be left
// with.

#include <dirent.h>
#include <fcntl.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>

#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/URLSession.h"
#include "quenwick/platform/UserDefaults.h"

using namespace quenwick::platform;

namespace {

std::set<int> descriptors() {
  std::set<int> all;
  auto* directory = opendir("/proc/self/fd");
  while (auto* entry = readdir(directory)) {
    int descriptor = std::atoi(entry->d_name);
    if (entry->d_name[0] != '.' && descriptor != dirfd(directory)) all.insert(descriptor);
  }
  closedir(directory);
  return all;
}

int countReachingDescriptors(const std::shared_ptr<URLSession>& session) {
  auto before = descriptors();
  auto outcome = wait(session->data({.url = URL::parse("https://a.example/ok")}));
  if (outcome.data != "ok") return 100;
  UserDefaults::standard().setObject(2.0, "key");
  UserDefaults::standard().synchronize();
  int count = 0;
  for (int descriptor : descriptors()) {
    if (before.contains(descriptor) || (fcntl(descriptor, F_GETFD) & FD_CLOEXEC) != 0) continue;
    std::printf("descriptor %d reaches a child\n", descriptor);
    ++count;
  }
  return count;
}

}  // namespace

int main(int count, char** words) {
  if (count != 4) return 2;
  configureHost({.bundleIdentifier = "com.example.guest", .home = words[1]});
  std::ifstream authority(words[2]);
  URLSessionConfiguration configuration;
  configuration.additionalTrustAnchors = {std::istreambuf_iterator<char>(authority), {}};
  auto port = static_cast<std::uint16_t>(std::atoi(words[3]));
  configuration.connectTo = {{"a.example", 443, "127.0.0.1", port}};
  auto session = URLSession::make(configuration, std::make_shared<URLSessionTaskDelegate>());
  return countReachingDescriptors(session);
}

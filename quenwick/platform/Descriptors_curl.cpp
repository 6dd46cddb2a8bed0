#include "quenwick/platform/Descriptors_curl.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <termios.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace quenwick::platform {
namespace {

std::vector<int> openDescriptors() {
  std::vector<int> descriptors;
  auto* directory = opendir("/proc/self/fd");
  if (!directory) return descriptors;
  while (auto* entry = readdir(directory)) {
    int descriptor = std::atoi(entry->d_name);
    bool isNumber = entry->d_name[0] != '.';
    if (isNumber && descriptor != dirfd(directory)) descriptors.push_back(descriptor);
  }
  closedir(directory);
  return descriptors;
}

bool isLocalSocket(int descriptor) {
  int domain = 0;
  socklen_t size = sizeof domain;
  return getsockopt(descriptor, SOL_SOCKET, SO_DOMAIN, &domain, &size) == 0 && domain == AF_UNIX;
}

/// Whether a byte waits in the socket, or in its peer.
bool isWaitedFor(int descriptor) {
  char byte = 0;
  int unread = 0;
  return recv(descriptor, &byte, 1, MSG_PEEK | MSG_DONTWAIT) == 1 ||
         (ioctl(descriptor, TIOCOUTQ, &unread) == 0 && unread > 0);
}

}  // namespace

// The pair of sockets by which a multi handle is woken cannot be asked for. They are those that
// are there since the handle is, and between which a byte waits once it has been woken; what the
// host opens at the same moment does not look like that.
CURLM* makeCloseOnExecMulti() {
  auto before = openDescriptors();
  auto* multi = curl_multi_init();
  curl_multi_wakeup(multi);
  for (int descriptor : openDescriptors()) {
    bool isNew = std::ranges::find(before, descriptor) == before.end();
    if (isNew && isLocalSocket(descriptor) && isWaitedFor(descriptor)) {
      fcntl(descriptor, F_SETFD, FD_CLOEXEC);
    }
  }
  curl_multi_poll(multi, nullptr, 0, 0, nullptr);
  return multi;
}

curl_socket_t openCloseOnExecSocket(void*, curlsocktype, curl_sockaddr* address) {
  return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

}  // namespace quenwick::platform

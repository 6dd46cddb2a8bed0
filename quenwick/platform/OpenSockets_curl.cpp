#include "quenwick/platform/OpenSockets_curl.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <optional>

#include "quenwick/platform/Descriptors_curl.h"

namespace quenwick::platform {
namespace {

/// None where the descriptor is not that of a socket.
std::optional<std::uint64_t> cookieOf(curl_socket_t socket) {
  std::uint64_t cookie = 0;
  socklen_t size = sizeof cookie;
  if (getsockopt(socket, SOL_SOCKET, SO_COOKIE, &cookie, &size) != 0) return std::nullopt;
  return cookie;
}

}  // namespace

OpenSockets& OpenSockets::shared() {
  static auto& instance = *new OpenSockets;
  return instance;
}

curl_socket_t OpenSockets::open(const curl_sockaddr& address) {
  auto copy = address;
  auto socket = openCloseOnExecSocket(nullptr, CURLSOCKTYPE_IPCXN, &copy);
  forgetClosed();
  if (auto cookie = cookieOf(socket)) sockets_.push_back({socket, *cookie});
  return socket;
}

void OpenSockets::forgetClosed() {
  std::erase_if(sockets_,
                [](const Socket& socket) { return cookieOf(socket.descriptor) != socket.cookie; });
}

void OpenSockets::setHeld(int isHeld) {
  forgetClosed();
  for (const auto& socket : sockets_) {
    setsockopt(socket.descriptor, IPPROTO_TCP, TCP_CORK, &isHeld, sizeof isHeld);
  }
}

}  // namespace quenwick::platform

#include "quenwick/platform/OpenSockets_curl.h"

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

#include "quenwick/platform/Descriptors_curl.h"

namespace quenwick::platform {

OpenSockets& OpenSockets::shared() {
  static auto& instance = *new OpenSockets;
  return instance;
}

curl_socket_t OpenSockets::open(const curl_sockaddr& address) {
  auto copy = address;
  auto socket = openCloseOnExecSocket(nullptr, CURLSOCKTYPE_IPCXN, &copy);
  if (socket != CURL_SOCKET_BAD) sockets_.push_back(socket);
  return socket;
}

int OpenSockets::close(void* sockets, curl_socket_t socket) {
  std::erase(static_cast<OpenSockets*>(sockets)->sockets_, socket);
  return ::close(socket);
}

void OpenSockets::setHeld(int isHeld) const {
  for (auto socket : sockets_) setsockopt(socket, IPPROTO_TCP, TCP_CORK, &isHeld, sizeof isHeld);
}

}  // namespace quenwick::platform

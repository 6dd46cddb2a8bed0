#include "sandbox/OpenSockets.h"

#include <sys/socket.h>
#include <unistd.h>

namespace quenwick::sandbox {

OpenSockets::Entry::Entry(OpenSockets& sockets, int socket) : sockets_(sockets), socket_(socket) {
  const std::lock_guard lock(sockets_.mutex_);
  sockets_.sockets_.insert(socket);
  if (sockets_.isShutDown_) ::shutdown(socket, SHUT_RDWR);
}

OpenSockets::Entry::~Entry() {
  {
    const std::lock_guard lock(sockets_.mutex_);
    sockets_.sockets_.erase(socket_);
  }
  // A process started meanwhile may hold a copy of the socket; shutting down ends it there too.
  ::shutdown(socket_, SHUT_RDWR);
  ::close(socket_);
}

void OpenSockets::shutDown() {
  const std::lock_guard lock(mutex_);
  isShutDown_ = true;
  for (const int socket : sockets_) ::shutdown(socket, SHUT_RDWR);
}

}  // namespace quenwick::sandbox

#pragma once

#include <curl/curl.h>

#include <cstdint>
#include <vector>

namespace quenwick::platform {

/// The sockets of the loading thread's connections. For that thread alone.
class OpenSockets {
 public:
  static OpenSockets& shared();

  curl_socket_t open(const curl_sockaddr& address);

  /// What is written from `hold` until `letGo` leaves in as few packets as hold it.
  void hold() { setHeld(1); }
  void letGo() { setHeld(0); }

 private:
  /// Told by its cookie from another with the same descriptor, as curl does not say of each that
  /// it was closed.
  struct Socket {
    curl_socket_t descriptor;
    std::uint64_t cookie;
  };

  void forgetClosed();
  void setHeld(int isHeld);

  std::vector<Socket> sockets_;
};

}  // namespace quenwick::platform

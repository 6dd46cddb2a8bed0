#pragma once

#include <curl/curl.h>

#include <vector>

namespace quenwick::platform {

/// The sockets of the loading thread's connections. For that thread alone.
class OpenSockets {
 public:
  static OpenSockets& shared();

  curl_socket_t open(const curl_sockaddr& address);
  static int close(void* sockets, curl_socket_t socket);

  /// What is written from `hold` until `letGo` leaves in as few packets as hold it.
  void hold() const { setHeld(1); }
  void letGo() const { setHeld(0); }

 private:
  void setHeld(int isHeld) const;

  std::vector<curl_socket_t> sockets_;
};

}  // namespace quenwick::platform

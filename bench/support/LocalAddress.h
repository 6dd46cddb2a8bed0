#pragma once

#include <arpa/inet.h>
#include <netinet/in.h>

#include <cstdint>

namespace quenwick::bench {

/// The port on 127.0.0.1.
inline sockaddr_in localAddress(std::uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

}  // namespace quenwick::bench

#pragma once

#include <openssl/types.h>

#include <cstdint>
#include <memory>
#include <thread>

namespace quenwick::sandbox {

struct Service;

/// Listens on a port of 127.0.0.1 and answers from construction to destruction.
class Server {
 public:
  /// Port 0 takes a free one; without a context it speaks plain HTTP. Throws `std::runtime_error`
  /// when the port cannot be had.
  Server(std::uint16_t port, SSL_CTX* context, Service& service);

  /// Cuts all connections and waits for the threads; answers that the service's pause delays must
  /// have been let go before.
  ~Server();

  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  std::uint16_t port() const { return port_; }

 private:
  class Listener;

  std::unique_ptr<Listener> listener_;
  std::uint16_t port_ = 0;
  std::thread thread_;
};

}  // namespace quenwick::sandbox

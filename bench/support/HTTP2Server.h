#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "quenwick/platform/URLSession.h"
#include "tests/support/Daemon.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::bench {

/// nginx on 127.0.0.1, which acknowledges every request that it gets over HTTP/2 at once.
class HTTP2Server {
 public:
  /// It shows a certificate for that host.
  explicit HTTP2Server(const std::string& host);

  std::uint16_t port() const { return port_; }

  /// A session's configuration that trusts the server and finds the host there.
  platform::URLSessionConfiguration configuration() const;

 private:
  void writeCertificate() const;
  void writeConfiguration() const;

  std::string host_;
  std::uint16_t port_;
  tests::TemporaryDirectory folder_;
  std::unique_ptr<tests::Daemon> server_;
};

/// A socket on 127.0.0.1 that takes connections and never says a word.
class SilentServer {
 public:
  SilentServer();
  ~SilentServer();
  SilentServer(const SilentServer&) = delete;
  SilentServer& operator=(const SilentServer&) = delete;

  std::uint16_t port() const;

 private:
  int socket_;
};

}  // namespace quenwick::bench

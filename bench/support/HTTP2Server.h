#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quenwick/platform/URLSession.h"
#include "tests/support/Daemon.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::bench {

/// nginx on 127.0.0.1, over HTTP/2. It acknowledges every request at once, or hands it on.
class HTTP2Server {
 public:
  /// It shows a certificate for those hosts. With a port requests are answered by the HTTP server
  /// that listens there on 127.0.0.1.
  explicit HTTP2Server(std::vector<std::string> hosts,
                       std::optional<std::uint16_t> behind = std::nullopt);

  std::uint16_t port() const { return port_; }

  /// A session's configuration that trusts the server and finds the hosts there.
  platform::URLSessionConfiguration configuration() const;

  /// How many connections have had a request answered.
  std::size_t connections() const;

 private:
  void writeCertificate() const;
  void writeConfiguration() const;

  std::vector<std::string> hosts_;
  std::optional<std::uint16_t> behind_;
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

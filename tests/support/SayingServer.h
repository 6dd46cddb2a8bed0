#pragma once

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <utility>

namespace quenwick::tests {

/// A server on this machine that answers each connection with the same bytes, whatever it is asked.
class SayingServer {
 public:
  explicit SayingServer(std::string answer) : answer_(std::move(answer)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    auto* any = reinterpret_cast<sockaddr*>(&address);
    if (bind(listener_, any, size) != 0 || listen(listener_, 8) != 0) return;
    getsockname(listener_, any, &size);
    host_ = "://127.0.0.1:" + std::to_string(ntohs(address.sin_port)) + "/";
    thread_ = std::thread([this] { serve(); });
  }
  ~SayingServer() {
    shutdown(listener_, SHUT_RDWR);
    if (thread_.joinable()) thread_.join();
    close(listener_);
  }
  SayingServer(const SayingServer&) = delete;
  SayingServer& operator=(const SayingServer&) = delete;

  /// Its root, by the scheme.
  std::string url(const char* scheme) const { return scheme + host_; }

 private:
  void serve() const {
    for (;;) {
      int connection = accept(listener_, nullptr, nullptr);
      if (connection < 0) return;
      char asked[4096];
      if (read(connection, asked, sizeof asked) > 0) {
        send(connection, answer_.data(), answer_.size(), MSG_NOSIGNAL);
      }
      close(connection);
    }
  }

  std::string answer_;
  std::string host_;
  int listener_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  std::thread thread_;
};

}  // namespace quenwick::tests

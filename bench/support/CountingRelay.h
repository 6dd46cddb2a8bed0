#pragma once

#include <atomic>
#include <cstdint>
#include <thread>

namespace quenwick::bench {

/// Bytes that went over connections, as their sockets carried them: TLS included, the headers of
/// TCP and IP not.
struct Traffic {
  std::uint64_t up = 0;
  std::uint64_t down = 0;
  bool operator==(const Traffic&) const = default;
};

/// Stands between a client and a server on 127.0.0.1, hands on what each says, and counts it.
class CountingRelay {
 public:
  /// To the server that listens on that port.
  explicit CountingRelay(std::uint16_t server);
  /// Cuts all connections.
  ~CountingRelay();
  CountingRelay(const CountingRelay&) = delete;
  CountingRelay& operator=(const CountingRelay&) = delete;

  /// Where clients connect to.
  std::uint16_t port() const { return port_; }

  /// What went through since the last time that this was asked, once nothing goes through any more.
  Traffic take();

 private:
  void run(const std::stop_token& stop) const;

  const std::uint16_t server_;
  int listener_;
  std::uint16_t port_;
  mutable std::atomic<std::uint64_t> up_ = 0;
  mutable std::atomic<std::uint64_t> down_ = 0;
  Traffic taken_;
  std::jthread thread_;
};

}  // namespace quenwick::bench

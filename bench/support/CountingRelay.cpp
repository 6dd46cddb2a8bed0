#include "bench/support/CountingRelay.h"

#include <arpa/inet.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <stdexcept>
#include <vector>

#include "bench/support/LocalAddress.h"

namespace quenwick::bench {
namespace {

constexpr int kPatience = 20;  // milliseconds between looks at the stop token

/// One connection of a client, and the one to the server that belongs to it.
struct Pair {
  int client = -1;
  int server = -1;
};

int makeSocket() {
  int made = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (made < 0) throw std::runtime_error("no socket");
  return made;
}

int listening() {
  int listener = makeSocket();
  auto address = localAddress(0);
  if (::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      ::listen(listener, 64) != 0) {
    throw std::runtime_error("no port");
  }
  return listener;
}

std::uint16_t portOf(int socket) {
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &size);
  return ntohs(address.sin_port);
}

int connected(std::uint16_t port) {
  int made = makeSocket();
  int yes = 1;
  ::setsockopt(made, IPPROTO_TCP, TCP_NODELAY, &yes, sizeof yes);
  auto address = localAddress(port);
  ::connect(made, reinterpret_cast<sockaddr*>(&address), sizeof address);
  return made;
}

/// Hands on what can be read; false where the connection has ended.
bool handOn(int from, int to, std::atomic<std::uint64_t>& count) {
  std::array<char, 65536> bytes;
  auto size = ::recv(from, bytes.data(), bytes.size(), 0);
  for (ssize_t sent = 0; sent < size;) {
    auto part =
        ::send(to, bytes.data() + sent, static_cast<std::size_t>(size - sent), MSG_NOSIGNAL);
    if (part <= 0) return false;
    sent += part;
  }
  if (size > 0) count += static_cast<std::uint64_t>(size);
  return size > 0;
}

void close(const Pair& pair) {
  ::close(pair.client);
  ::close(pair.server);
}

}  // namespace

CountingRelay::CountingRelay(std::uint16_t server)
    : server_(server),
      listener_(listening()),
      port_(portOf(listener_)),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

CountingRelay::~CountingRelay() {
  thread_.request_stop();
  thread_.join();
  ::close(listener_);
}

void CountingRelay::run(const std::stop_token& stop) const {
  std::vector<Pair> pairs;
  while (!stop.stop_requested()) {
    std::vector<pollfd> waiting{{listener_, POLLIN, 0}};
    for (const auto& pair : pairs) {
      waiting.push_back({pair.client, POLLIN, 0});
      waiting.push_back({pair.server, POLLIN, 0});
    }
    ::poll(waiting.data(), waiting.size(), kPatience);
    for (std::size_t i = pairs.size(); i-- > 0;) {
      auto [client, server] = pairs[i];
      bool isOpen = (waiting[2 * i + 1].revents == 0 || handOn(client, server, up_)) &&
                    (waiting[2 * i + 2].revents == 0 || handOn(server, client, down_));
      if (isOpen) continue;
      close(pairs[i]);
      pairs.erase(pairs.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (waiting[0].revents == 0) continue;
    pairs.push_back({::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC), connected(server_)});
  }
  for (const auto& pair : pairs) close(pair);
}

Traffic CountingRelay::take() {
  constexpr std::chrono::milliseconds kQuiet(100);
  for (Traffic seen, now;; seen = now) {
    now = {up_, down_};
    if (now == seen) break;
    std::this_thread::sleep_for(kQuiet);
  }
  Traffic all{up_, down_};
  Traffic result{all.up - taken_.up, all.down - taken_.down};
  taken_ = all;
  return result;
}

}  // namespace quenwick::bench

// What a server answers to the first request, the second, and so on, as bytes, with "\n--\n"
// between them. Behind the last it answers with an empty page.

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <mutex>
#include <thread>
#include <vector>

#include "fuzz/Target.h"
#include "quenwick/deeplink/DeeplinkManager.h"
#include "quenwick/deeplink/DeeplinkResolutionError.h"
#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/deeplink/URLSessionRedirectDelegate.h"
#include "quenwick/platform/Text.h"
#include "tests/support/SilentLog.h"

namespace quenwick::fuzz {
namespace {

using platform::URL;

constexpr std::size_t kLargestBody = 100'000;
constexpr auto kEmptyPage = "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n";

/// Answers one connection after another with what it was told to.
class Server {
 public:
  Server() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    auto* any = reinterpret_cast<sockaddr*>(&address);
    socklen_t length = sizeof address;
    holds(bind(socket_, any, length) == 0 && listen(socket_, 64) == 0 &&
              getsockname(socket_, any, &length) == 0,
          "the server listens");
    port_ = ntohs(address.sin_port);
    std::thread([this] { serve(); }).detach();
  }

  std::uint16_t port() const { return port_; }

  void answerWith(std::vector<std::string> answers) {
    std::lock_guard lock(mutex_);
    answers_ = std::move(answers);
    requests_.clear();
  }
  std::vector<std::string> requests() {
    std::lock_guard lock(mutex_);
    return requests_;
  }

 private:
  void serve() {
    for (;;) {
      int connection = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
      if (connection < 0) continue;
      auto head = headFrom(connection);
      if (!head.empty()) answer(connection, std::move(head));
      close(connection);
    }
  }

  /// Empty where something else comes, as the beginning of TLS.
  static std::string headFrom(int connection) {
    std::string head;
    std::array<char, 4096> bytes;
    while (head.find("\r\n\r\n") == head.npos) {
      pollfd ready{.fd = connection, .events = POLLIN, .revents = 0};
      auto count = poll(&ready, 1, 20'000) == 1 ? read(connection, bytes.data(), bytes.size()) : 0;
      if (count <= 0) return {};
      head.append(bytes.data(), static_cast<std::size_t>(count));
      if (head.front() == '\x16') return {};
    }
    return head;
  }

  void answer(int connection, std::string head) {
    std::string text = kEmptyPage;
    {
      std::lock_guard lock(mutex_);
      if (requests_.size() < answers_.size()) text = answers_[requests_.size()];
      requests_.push_back(std::move(head));
    }
    for (std::string_view left = text; !left.empty();) {
      auto count = send(connection, left.data(), left.size(), MSG_NOSIGNAL);
      if (count <= 0) return;
      left.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  int socket_;
  std::uint16_t port_ = 0;
  std::mutex mutex_;
  std::vector<std::string> answers_;
  std::vector<std::string> requests_;
};

/// The library's own watcher, which notes where it went instead of keeping what it found.
class Watcher : public URLSessionRedirectDelegate {
 public:
  using URLSessionRedirectDelegate::urlSession;

  platform::Task<std::optional<platform::URLRequest>> urlSession(
      platform::URLSession& session, platform::URLSessionTask& task,
      platform::HTTPURLResponse response, platform::URLRequest next) override {
    check(response, *next.url);
    auto chosen = co_await URLSessionRedirectDelegate::urlSession(session, task, response, next);
    holds(chosen.has_value() == !shouldHaltRedirects(*next.url),
          "a redirect is followed unless its target says not to", next.url->absoluteString());
    if (!isMapped(*next.url)) chosen.reset();
    if (chosen) visited.push_back(*next.url);
    wasHalted = !chosen;
    co_return chosen;
  }
  void setQWUFromDeeplink(const URL& url) override { qwuValue(url); }
  void setRulesPicKeyFromDeeplink(const URL& url) override { findRPKey(url.path()); }

  std::vector<URL> visited;
  bool wasHalted = false;

 private:
  /// Whether the loader would connect to this machine, where it would connect at all.
  static bool isMapped(const URL& url) {
    auto origin = url.origin();
    bool isWeb = origin.starts_with("http:") || origin.starts_with("https:");
    return !isWeb || origin.ends_with(":80") || origin.ends_with(":443");
  }

  void check(const platform::HTTPURLResponse& response, const URL& target) const {
    static constexpr std::array kStatuses{301, 302, 303, 307, 308};
    holds(std::ranges::count(kStatuses, response.statusCode) == 1, "only a redirect is followed");
    holds(visited.size() <= platform::URLSession::kMaximumRedirects, "a chain ends somewhere");
    holds(response.url == visited.back(), "a response is that of the last request");
    holds(!target.scheme().empty(), "a target is a whole URL", target.absoluteString());
  }
};

/// The head that the loader sends for the URL, and nothing that a server has put there.
void checkRequest(std::string_view head, const URL& url) {
  Input lines(reinterpret_cast<const std::uint8_t*>(head.data()), head.size());
  auto first = lines.until("\r\n");
  holds(first.starts_with("GET /") && first.ends_with(" HTTP/1.1") &&
            std::ranges::count(first, ' ') == 2,
        "a request has one line", head);
  for (auto line = lines.until("\r\n"); !line.empty(); line = lines.until("\r\n")) {
    auto name = line.substr(0, line.find(": "));
    static constexpr std::array<std::string_view, 5> kNames{"Host", "User-Agent", "Accept",
                                                            "Accept-Encoding", "Cookie"};
    bool isOfUser = name == "Authorization" && url.authority()->find('@') != head.npos;
    holds(isOfUser || std::ranges::count(kNames, name) == 1,
          "a server puts no field into a request", head);
    // A host that is escaped, of another alphabet, or an address as a number is written otherwise.
    bool isPlain = std::ranges::all_of(*url.host(), [](char c) { return c > ' ' && c != '%'; });
    bool isNumber = url.host()->find_first_not_of("0123456789abcdefxABCDEFX.") == url.host()->npos;
    if (name == "Host" && isPlain && !isNumber) {
      holds(platform::lowercased(line.substr(6)).starts_with(platform::lowercased(*url.host())) ||
                line.substr(6).starts_with('['),
            "a request names the host of its URL", head);
    }
  }
  holds(lines.isEmpty(), "a request has one head", head);
}

struct Fixture {
  Server server;
  platform::URLSessionConfiguration configuration{
      .requestTimeout = 40,
      .resourceTimeout = 60,
      .connectTo = {{"", 80, "127.0.0.1", server.port()}, {"", 443, "127.0.0.1", server.port()}},
      .maximumBodySize = kLargestBody};
  URL link = *URL::parse("http://links.example/p/go/1f");
};

void check(Fixture& fixture) {
  auto watcher = std::make_shared<Watcher>();
  watcher->visited.push_back(fixture.link);
  auto session = platform::URLSession::make(fixture.configuration, watcher);
  std::optional<URL> destination;
  const auto begin = std::chrono::steady_clock::now();
  try {
    auto outcome = platform::wait(session->data({.url = fixture.link}));
    holds(outcome.data.size() <= kLargestBody, "a body is no larger than it may be");
    holds(outcome.response->url == watcher->visited.back(),
          "the response is that of the last request");
    destination = DeeplinkManager::destination(outcome, fixture.link);
  } catch (const platform::PlatformError& error) {
    holds(error.code() != platform::URLErrorCode::cancelled, "nobody cancelled");
    destination = DeeplinkManager::destination(error, fixture.link);
    bool isTooLong = error.code() == platform::URLErrorCode::httpTooManyRedirects;
    holds(isTooLong || destination == watcher->visited.back(), "an error names what failed");
  } catch (const DeeplinkResolutionError&) {
    holds(!watcher->wasHalted, "a chain that was ended has a destination");
  }
  auto seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  holds(seconds < 30, "a server that closes its connections keeps nobody waiting");

  auto requests = fixture.server.requests();
  std::vector<URL> loaded;
  for (const auto& url : watcher->visited) {
    if (platform::lowercased(url.scheme()) == "http") loaded.push_back(url);
  }
  holds(requests.size() <= loaded.size(), "each URL is asked for once");
  for (std::size_t i = 0; i < requests.size(); ++i) checkRequest(requests[i], loaded[i]);
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  [[maybe_unused]] static const bool isSilent = tests::SilentLog::install();
  static auto& fixture = *new fuzz::Fixture;
  std::vector<std::string> answers;
  for (fuzz::Input input(data, size); !input.isEmpty();)
    answers.emplace_back(input.until("\n--\n"));
  fixture.server.answerWith(std::move(answers));
  fuzz::check(fixture);
  return 0;
}

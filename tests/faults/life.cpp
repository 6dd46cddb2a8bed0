// A host that lives among faults: life CA PORT JOURNAL PREFIX SEED CLOCK
//
// Does at random what hosts do, until a line comes on standard input: offers events, each with an
// identifier of its own that is in the journal before it is offered; hands links in; resolves some
// on demand; sets its user. Then it ends in order and prints its books as one line of JSON.

#include <fcntl.h>
#include <malloc.h>
#include <poll.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "quenwick/client/QWClient.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/platform/URLSession.h"
#include "tests/faults/JumpingClock.h"

using namespace quenwick;
using namespace std::chrono_literals;

namespace {

constexpr auto kPatience = 60s;
constexpr auto kFirstTurns = 100;
constexpr std::uint64_t kMostWaiting = 500;
constexpr auto kLink = "https://links.shop.example/p/go/1f";

/// The names of everything that was begun. A line is there whole, whenever the process is killed.
class Journal {
 public:
  Journal(const char* file, std::string prefix)
      : file_(open(file, O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600)),
        prefix_(std::move(prefix)) {}

  std::string next() {
    auto name = prefix_ + "-" + std::to_string(++count_);
    auto line = name + "\n";
    if (write(file_, line.data(), line.size()) != static_cast<ssize_t>(line.size())) abort();
    return name;
  }
  int count() const { return count_; }

 private:
  const int file_;
  const std::string prefix_;
  int count_ = 0;
};

struct Links {
  std::atomic<int> handedIn = 0;
  std::atomic<int> outcomes = 0;
};

/// Handshakes that were asked for.
class Handshakes {
 public:
  void add(std::optional<TaskHandle> begun) {
    std::erase_if(underWay_, [](const auto& each) { return each.waitFor(0s); });
    if (begun) underWay_.push_back(*std::move(begun));
  }
  void wait() const {
    for (const auto& each : underWay_) each.waitFor(kPatience);
  }

 private:
  std::vector<TaskHandle> underWay_;
};

Configuration configuration(char** words) {
  std::ifstream authority(words[1]);
  auto port = static_cast<std::uint16_t>(std::atoi(words[2]));
  return {.serviceURL = "https://api.shop.example",
          .trustAnchors = {std::istreambuf_iterator<char>(authority), {}},
          .connectTo = {{"", 443, "127.0.0.1", port}},
          .bundleIdentifier = "com.example.life",
          .bundleVersion = "1.0.0"};
}

/// One thing that hosts do.
void act(unsigned chance, Journal& journal, Links& links, Handshakes& handshakes) {
  if (chance < 60) return QWClient::logEvent("step", {{"id", journal.next()}});
  if (chance < 80) return QWClient::productViewed({{"id", journal.next()}, {"price", 3.5}});
  if (chance < 88) {
    if (QWClient::handleUniversalLink(kLink)) ++links.handedIn;
    return;
  }
  if (chance < 94) {
    ++links.handedIn;
    return QWClient::resolve(kLink, [&links](const DeeplinkResult&) { ++links.outcomes; },
                             {.deadline = 500ms});
  }
  if (chance < 97) return QWClient::setQWU("user-" + std::to_string(chance));
  handshakes.add(QWClient::registerForBehaviors("demo-key"));
}

/// Kilobytes of memory that no file stands behind.
long anonymousMemory() {
  malloc_trim(0);
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    long kilobytes = 0;
    if (word == "RssAnon:" && status >> kilobytes) return kilobytes;
  }
  return 0;
}

/// What a host holds while it has nothing to do, without connections kept for the next load.
struct Holdings {
  long memory = 0;
  std::ptrdiff_t descriptors = 0;
};

Holdings holdings() {
  platform::URLSession::closeIdleConnections();
  std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return {.memory = anonymousMemory(), .descriptors = std::distance(begin(descriptors), {})};
}

/// On a busy machine a host offers more than is sent, and would then wait long for its end.
std::uint64_t waitingEvents() {
  auto state = static_cast<std::size_t>(EventState::waiting);
  return QWClient::shared()->eventManager().counts().in.at(state);
}

bool isToEnd(int milliseconds) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, milliseconds) > 0;
}

/// Waits for the outcomes of links that were handed in.
bool settle(const Links& links) {
  auto end = std::chrono::steady_clock::now() + kPatience;
  while (links.outcomes < links.handedIn && std::chrono::steady_clock::now() < end) {
    std::this_thread::sleep_for(1ms);
  }
  return links.outcomes == links.handedIn;
}

/// Of the states of an event, in the order of the enumeration.
constexpr auto kStateNames = std::to_array<std::string_view>(
    {"waiting", "in flight", "acknowledged", "refused: events were not enabled", "refused: unsound",
     "failed: no credential", "failed: unauthorized", "failed: status", "failed: transport",
     "failed: answer", "failed: other", "dropped: superseded", "dropped: overflow",
     "dropped: at the end"});
static_assert(kStateNames.size() == kEventStates);

void printBooks(const EventCounts& books, const Journal& journal, const Links& links) {
  std::printf(R"({"journal": %d, "offered": %llu, "states": {)", journal.count(),
              static_cast<unsigned long long>(books.offered));
  for (std::size_t state = 0; state < kEventStates; ++state) {
    auto name = kStateNames.at(state);
    std::printf(R"(%s"%.*s": %llu)", state ? ", " : "", static_cast<int>(name.size()), name.data(),
                static_cast<unsigned long long>(books.in.at(state)));
  }
  std::printf(R"(}, "links": %d, "outcomes": %d)", links.handedIn.load(), links.outcomes.load());
}

}  // namespace

int main(int count, char** words) {
  if (count != 7) return 2;
  tests::followClock(words[6]);
  Journal journal(words[3], words[4]);
  Links links;
  Handshakes handshakes;
  std::mt19937 random(static_cast<unsigned>(std::atoi(words[5])));
  if (!configure(configuration(words))) return 3;
  QWClient::start({.apiKey = "demo-key",
                   .deeplinkDomains = {"links.shop.example"},
                   .deeplinkHandler = [&](const DeeplinkResult&) { ++links.outcomes; }});
  auto live = [&] { act(random() % 100, journal, links, handshakes); };
  auto isToEndSoon = [&] { return isToEnd(static_cast<int>(random() % 4)); };
  for (int turn = 0; turn < kFirstTurns; ++turn, isToEndSoon()) live();
  QWClient::flush(kPatience);
  settle(links);
  handshakes.wait();
  auto first = holdings();
  while (!isToEndSoon()) {
    if (waitingEvents() < kMostWaiting) live();
  }
  bool isFlushed = QWClient::flush(kPatience);
  bool isSettled = settle(links);
  handshakes.wait();
  printBooks(QWClient::shared()->eventManager().counts(), journal, links);
  auto last = holdings();
  bool isShutDown = QWClient::shutdown(10s);
  std::printf(R"(, "flushed": %s, "settled": %s, "shutDown": %s, "grown": %ld, "opened": %td})",
              isFlushed ? "true" : "false", isSettled ? "true" : "false",
              isShutDown ? "true" : "false", last.memory - first.memory,
              last.descriptors - first.descriptors);
  std::puts("");
}

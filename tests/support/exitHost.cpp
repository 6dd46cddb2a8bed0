// A host that uses the whole facade from several threads and exits in the middle of it:
//   exit_host HOME CA PORT SERVICE KEYCHAIN SEED   KEYCHAIN is "sealed" or "keyring"
//   exit_host HOME CA PORT SERVICE KEYCHAIN look
// It prints "found N", the number that the last one left, "set N" before it exits, where N is the
// last number that it has set, and "flushed N" whenever a flush has said that N is kept. The seed
// picks when and how it exits.

#include <openssl/ssl.h>
#include <unistd.h>

#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <iterator>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include "quenwick/client/QWClient.h"

/// Asked by the leak checker of a sanitizer build: what is under way at the exit is left as it is.
extern "C" int __lsan_is_turned_off() { return 1; }

using namespace quenwick;
using namespace std::chrono_literals;

namespace {

enum class Way { returnFromMain, exitOnMain, exitOnThread, inHandler, inReceiver, inHook, count };

/// What of the host is destroyed at exit. No handler may be called after that.
struct Belongings {
  std::vector<std::string> seen = std::vector<std::string>(100, std::string(100, 'x'));
  ~Belongings() { isGone = true; }
  static inline std::atomic<bool> isGone = false;
} belongings;

std::atomic<int> lastSet = 0;
std::atomic<bool> isDue = false;
std::atomic<bool> isLeaving = false;
Way way = Way::returnFromMain;

void print(const std::string& line) {
  auto text = line + "\n";
  if (write(STDOUT_FILENO, text.data(), text.size()) < 0) _exit(98);
}

/// Exits, if it is time to and nobody else does: two that exit at once are the host's own fault.
void leaveIfDue() {
  if (!isDue || isLeaving.exchange(true)) return;
  print("set " + std::to_string(lastSet));
  std::exit(0);
}

/// What every function of the host's does that the library calls.
void called(Way place) {
  if (Belongings::isGone) _exit(97);
  if (belongings.seen.at(static_cast<std::size_t>(lastSet % 100)).size() != 100) _exit(96);
  if (place == way) leaveIfDue();
}

void takeLine(LogLevel, std::string_view message) {
  for (auto fault : {"damaged", "cannot be", "escaped", "failed to"}) {
    if (message.find(fault) != message.npos) print("fault: " + std::string(message));
  }
  called(Way::inHook);
}

/// A loop of the host's own, which outlives everything.
void runLater(std::function<void()> work) {
  struct Loop {
    std::mutex mutex;
    std::condition_variable changed;
    std::deque<std::function<void()>> waiting;
    void run() {
      for (std::unique_lock lock(mutex);;) {
        changed.wait(lock, [this] { return !waiting.empty(); });
        auto next = std::move(waiting.front());
        waiting.pop_front();
        lock.unlock();
        next();
        lock.lock();
      }
    }
    Loop() {
      std::thread([this] { run(); }).detach();
    }
  };
  static auto& loop = *new Loop;
  std::lock_guard lock(loop.mutex);
  loop.waiting.push_back(std::move(work));
  loop.changed.notify_one();
}

void keep() {
  for (int number = lastSet + 1;; ++number) {
    QWClient::setQWU(std::to_string(number));
    lastSet = number;
    QWClient::productSearched({{"query", number}});
    if (number % 20 == 0 && QWClient::flush(50ms)) print("flushed " + std::to_string(number));
    std::this_thread::sleep_for(1ms);
  }
}

void openLinks() {
  for (;;) {
    QWClient::handleUniversalLink("https://l.example/p/go/1f");
    std::stop_source stop;
    QWClient::resolve("https://l.example/slow", [](const auto&) { called(Way::inHandler); },
                      {.deadline = 5ms, .stop = stop.get_token()});
    QWClient::addHandleablePaths({{"l.example", {"/slow"}}});
    stop.request_stop();
    std::this_thread::sleep_for(5ms);
  }
}

void report() {
  for (int round = 0;; ++round) {
    auto subscription =
        QWClient::storedDeeplinkPublisher().subscribe([](const auto&) { called(Way::inReceiver); });
    QWClient::productViewed({{"id", 42}, {"price", 3.5}});
    QWClient::orderCompleted({{"products", List{Dictionary{{"id", "a"}}}}});
    QWClient::identifyUser();
    if (round % 10 == 0) QWClient::registerForBehaviors("key");
    std::this_thread::sleep_for(5ms);
  }
}

void configureFrom(char** words, std::mt19937& random) {
  std::ifstream authority(words[2]);
  auto port = static_cast<std::uint16_t>(std::atoi(words[3]));
  Configuration configuration{.serviceURL = words[4],
                              .trustAnchors = {std::istreambuf_iterator<char>(authority), {}},
                              .connectTo = {{.toAddress = "127.0.0.1", .toPort = port}},
                              .bundleIdentifier = "com.example.shop",
                              .bundleVersion = "2.5.0",
                              .logHook = takeLine};
  if (std::string(words[5]) == "keyring") {
    for (auto name : {"XDG_CONFIG_HOME", "XDG_DATA_HOME"}) setenv(name, words[1], 1);
  } else {
    configuration.home = words[1];
  }
  if (random() % 2 == 0) configuration.mainExecutor = runLater;
  if (!configure(configuration)) _exit(95);
}

void wait(std::chrono::microseconds duration) {
  std::this_thread::sleep_for(duration);
  isDue = true;
  if (way == Way::returnFromMain) return;
  if (way == Way::exitOnMain) leaveIfDue();
  if (way == Way::exitOnThread) std::thread(leaveIfDue).detach();
  // A handler comes soon. Nobody else exits then.
  std::this_thread::sleep_for(10s);
  leaveIfDue();
  for (;;) std::this_thread::sleep_for(1s);
}

}  // namespace

int main(int count, char** words) {
  if (count != 7) return 2;
  bool isLook = std::string(words[6]) == "look";
  std::mt19937 random(isLook ? 0U : static_cast<unsigned>(std::atoi(words[6])));
  way = static_cast<Way>(random() % static_cast<unsigned>(Way::count));
  auto tls = random() % 3;
  if (tls == 0) OPENSSL_init_ssl(0, nullptr);
  configureFrom(words, random);
  lastSet = std::atoi(QWClient::qwU().value_or("0").c_str());
  print("found " + std::to_string(lastSet));
  if (isLook) return 0;
  QWClient::start({.apiKey = "key",
                   .deeplinkDomains = {"l.example"},
                   .deeplinkHandler = [](const auto&) { called(Way::inHandler); }});
  QWClient::setEventsEnabledHandler([] { called(Way::inHandler); });
  for (auto work : {keep, openLinks, report}) std::thread(work).detach();
  if (tls == 1) OPENSSL_init_ssl(0, nullptr);
  wait(std::chrono::microseconds(random() % 50'000));
  isLeaving = true;
  print("set " + std::to_string(lastSet));
  return 0;
}

// The smallest host: it starts the library, waits until events are enabled, offers some, and says
// what that took. Built with BARE it does the same without the library.
//
// usage: host HOME SERVICE AUTHORITY EVENTS [HOST ADDRESS PORT]...

#include <malloc.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#ifndef BARE
#include "quenwick/quenwick.h"
#endif

namespace {

void say(const char* name, double value) { std::printf("%s %.9g\n", name, value); }

/// A field of this process's status, which is in units of 1024 bytes.
void sayStatus(const char* name, const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(field + ":")) say(name, std::stod(line.substr(field.size() + 1)) * 1024);
  }
}

#ifdef BARE

void run(const std::vector<std::string>&) {}

#else

using namespace quenwick;

constexpr std::chrono::minutes kPatience(1);

/// Something that happens once, on another thread.
class Event {
 public:
  void happen() {
    std::lock_guard lock(mutex_);
    hasHappened_ = true;
    changed_.notify_all();
  }
  bool wait() {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kPatience, [this] { return hasHappened_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool hasHappened_ = false;
};

void configureFrom(const std::vector<std::string>& words) {
  Configuration configuration{.serviceURL = words[1],
                              .bundleIdentifier = "com.example.bench",
                              .bundleVersion = "1.0",
                              .home = words[0],
                              .logHook = [](LogLevel, std::string_view) {}};
  std::ifstream authority(words[2], std::ios::binary);
  configuration.trustAnchors = {std::istreambuf_iterator<char>(authority), {}};
  for (std::size_t i = 4; i + 2 < words.size(); i += 3) {
    auto port = static_cast<std::uint16_t>(std::stoi(words[i + 2]));
    configuration.connectTo.push_back(
        {.host = words[i], .toAddress = words[i + 1], .toPort = port});
  }
  configure(std::move(configuration));
}

/// Starts the library and waits until events are enabled.
void start() {
  Event enabled;
  auto begin = std::chrono::steady_clock::now();
  QWClient::start({.apiKey = "bench-key",
                   .deeplinkDomains = {"links.shop.example"},
                   .deeplinkHandler = [](const DeeplinkResult&) {}});
  std::chrono::duration<double> taken = std::chrono::steady_clock::now() - begin;
  say("start", taken.count());
  std::fflush(stdout);
  QWClient::setEventsEnabledHandler([&] { enabled.happen(); });
  if (!enabled.wait()) std::exit(1);
  QWClient::setEventsEnabledHandler({});
}

void offer(int count) {
  for (int i = 0; i < count; ++i) {
    QWClient::productViewed({{"id", i}, {"title", "A shoe"}, {"price", 19.9}});
  }
  if (!QWClient::flush(kPatience)) std::exit(1);
}

void run(const std::vector<std::string>& words) {
  configureFrom(words);
  start();
  auto events = std::stoi(words[3]);
  if (events == 0) return;
  sayStatus("idle", "VmRSS");
  std::ofstream("/proc/self/clear_refs") << "5";  // the highest mark begins anew
  offer(events);
  sayStatus("highest", "VmHWM");
  sayStatus("afterwards", "VmRSS");
  malloc_trim(0);
  sayStatus("trimmed", "VmRSS");
}

#endif

}  // namespace

int main(int count, char** words) {
  run({words + 1, words + count});
  sayStatus("anonymous", "RssAnon");
  std::fflush(stdout);
}

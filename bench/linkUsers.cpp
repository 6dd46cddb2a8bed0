// How the store of link users grows from 1 to 10,000: the time to note one, and to note many at
// once.
//
// usage: bench_linkUsers [HOME COUNT]    with both: so many are stored there, and no more

#include <chrono>
#include <cstdlib>
#include <string>

#include "bench/support/Row.h"
#include "bench/support/Run.h"
#include "quenwick/CoreData/CoreDataManager.h"
#include "quenwick/CoreData/DeeplinkQWU.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/Writer.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::bench {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::minutes kPatience(5);

std::string user(std::size_t number) { return "link-user-" + std::to_string(number); }

/// Notes the users of those numbers, as redirects do, and waits until that is on disk; how long it
/// took, in seconds.
double note(std::size_t first, std::size_t count) {
  auto begin = Clock::now();
  for (std::size_t i = 0; i < count; ++i) {
    Analytics::shared().setQWUDeeplink(user(first + i),
                                       CoreDataManager::shared().backgroundContext());
  }
  platform::writer().drain(kPatience);
  return std::chrono::duration<double>(Clock::now() - begin).count();
}

std::size_t stored() {
  std::size_t count = 0;
  auto context = CoreDataManager::shared().backgroundContext();
  context->performAndWait([&] { count = DeeplinkQWU::fetchRequest().execute(*context).size(); });
  return count;
}

void print(const char* what, std::size_t size, double ours) {
  bench::print({.table = "growth", .what = what, .ours = ours, .size = static_cast<double>(size)});
}

int fill(const char* home, const char* count) {
  platform::configureHost({.bundleIdentifier = "com.example.bench", .home = home});
  note(0, std::strtoul(count, nullptr, 10));
  return stored() == std::strtoul(count, nullptr, 10) ? 0 : 1;
}

int run() {
  tests::TemporaryDirectory folder;
  platform::configureHost({.bundleIdentifier = "com.example.bench", .home = folder.path()});
  note(0, 1);  // opens the store
  std::size_t known = 1;
  for (auto size : std::initializer_list<std::size_t>{1, 10, 100, 1'000, 10'000}) {
    if (size > known) {
      print("link users noted at once: the time of each", size,
            note(known, size - known) / static_cast<double>(size - known));
    }
    known = size;
    std::vector<double> times;
    for (int round = 0; round < rounds(100); ++round) {
      times.push_back(note(static_cast<std::size_t>(round) % known, 1));
    }
    print("link users stored: noting one of them again", size, median(times));
    if (stored() != known) return 1;
  }
  return 0;
}

}  // namespace
}  // namespace quenwick::bench

int main(int count, char** words) {
  return count == 3 ? quenwick::bench::fill(words[1], words[2]) : quenwick::bench::run();
}

// What a host's thread pays for looking at a link and at a setting.

#include <benchmark/benchmark.h>

#include "quenwick/Stored/Stored.h"
#include "quenwick/deeplink/DeeplinkPath.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick {
namespace {

/// A link of 80 characters.
std::string link(const std::string& path) {
  std::string text = "https://links.shop.example" + path + "?utm_source=";
  return text + std::string(80 - text.size(), 'x');
}

void classify(benchmark::State& state, const std::string& path) {
  auto url = *platform::URL::parse(link(path));
  for (auto _ : state) benchmark::DoNotOptimize(DeeplinkPath::path(url));
}
BENCHMARK_CAPTURE(classify, rpLink, "/p/rpm/1f2e3d/mail/url");
BENCHMARK_CAPTURE(classify, goLinks, "/p/go/1f2e3d4c5b6a");
BENCHMARK_CAPTURE(classify, none, "/products/shoes/42/red");
BENCHMARK_CAPTURE(classify, nearMiss, "/p/rp/p/rpm/p/cp/p/cpm");

void readSetting(benchmark::State& state) {
  static tests::TemporaryDirectory folder;
  auto& defaults = platform::UserDefaults::make(folder.path() / "preferences.sqlite");
  for (int i = 0; i < 100; ++i) {
    defaults.setObject(double(i), "com.quenwick.sdk.other" + std::to_string(i));
  }
  StoredOptional<std::string> setting("com.quenwick.sdk.qwuDeeplink", defaults);
  setting.setWrappedValue("an identifier of some thirty chars");
  defaults.synchronize();
  for (auto _ : state) benchmark::DoNotOptimize(setting.wrappedValue());
}
BENCHMARK(readSetting);

}  // namespace
}  // namespace quenwick

BENCHMARK_MAIN();

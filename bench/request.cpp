// Sending a request and writing its JSON, side by side with plain libcurl and with the JSON
// library called directly.

#include <boost/json.hpp>

#include "bench/support/CurlPost.h"
#include "bench/support/Interleaved.h"
#include "quenwick/API/Stack/APISource.h"
#include "quenwick/API/Stack/DataContainer.h"
#include "quenwick/API/Stack/RequestConvertible.h"
#include "quenwick/API/Stack/Requester.h"
#include "quenwick/platform/HostConfiguration.h"
#include "tests/support/SandboxService.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::bench {
namespace {

using platform::Dictionary;
using platform::List;

constexpr auto kScenario = R"({"answers": [
  {"at": "https://api.example/events", "json": {"data": {"request_id": "5f0c"}}}]})";
constexpr auto kBase = "https://api.example";
constexpr auto kAnswer = R"({"data":{"request_id":"5f0c"}})";
constexpr int kInARow = 50;

struct Accepted {
  std::string requestID;
  static constexpr auto fields() { return std::tuple{Field{"request_id", &Accepted::requestID}}; }
};
using Answer = DataContainer<Accepted>;

/// An order of ten products, as an event carries it.
Dictionary payload() {
  List products;
  for (int i = 0; i < 10; ++i) {
    products.push_back(Dictionary{{"id", 1000 + i},
                                  {"name", "A shoe of number " + std::to_string(i)},
                                  {"brand", "Käfer \"& Söhne\""},
                                  {"price", 19.9 + i},
                                  {"quantity", i % 3 + 1},
                                  {"in_stock", i % 2 == 0},
                                  {"url", "https://shop.example/products/" + std::to_string(i)}});
  }
  return {{"event", "order_completed"},
          {"user_id", "2b1f0c3e"},
          {"anonymous_id", "anon-1790000000000-12345678901"},
          {"timezone", "Europe/Vienna"},
          {"timestamp", 1790000000000},
          {"channel", Dictionary{{"app", Dictionary{{"name", "sdk"}}}}},
          {"order", Dictionary{{"id", "A-42"}, {"total", 244.5}, {"products", products}}}};
}

BaseRequest request() { return {HTTPMethod::post, "/events", payload()}; }

/// Sends one request after the other, as a task of the library does.
platform::Task<bool> sendInARow(Requester requester) {
  auto event = request();
  for (int i = 0; i < kInARow; ++i) {
    auto answer = co_await requester.requestAPI<Answer>(event);
    if (answer.value.requestID != "5f0c") co_return false;
  }
  co_return true;
}

bool sendInARow(CurlPost& curl) {
  for (int i = 0; i < kInARow; ++i) {
    if (curl.send() != kAnswer) return false;
  }
  return true;
}

bool comparePosts() {
  tests::SandboxService service{kScenario};
  auto configuration = service.configuration();
  Requester requester(APISource::manager({.basis = configuration}), *platform::URL::parse(kBase));
  auto event = request();
  CurlPost curl(configuration, RequestConvertible({.url = *requester.url(event),
                                                   .method = event.method(),
                                                   .parameters = *event.parameters(),
                                                   .headers = event.headers()})
                                   .asURLRequest());
  return compare({.table = "compared",
                  .name = "one POST through `Requester`, warm connection",
                  .target = Target{1.15},
                  .rounds = 60,
                  .pieces = kInARow,
                  .ours = [&] { return platform::wait(sendInARow(requester)); },
                  .theirs = [&] { return sendInARow(curl); }});
}

bool compareJSON() {
  auto event = payload();
  auto expected = platform::JSONSerialization::text(event);
  auto prepared = boost::json::parse(expected);
  return compare(
      {.table = "compared",
       .name = "JSON of an event with ten products",
       .other = "Boost.JSON",
       .target = Target{1.30},
       .rounds = 300,
       .repeats = 200,
       .ours = [&] { return platform::JSONSerialization::text(event).size() == expected.size(); },
       .theirs = [&] { return !boost::json::serialize(prepared).empty(); }});
}

int run() {
  tests::TemporaryDirectory home;
  platform::configureHost({.bundleIdentifier = "com.example.bench", .home = home.path()});
  bool isComplete = comparePosts();
  isComplete &= compareJSON();
  return isComplete ? 0 : 1;
}

}  // namespace
}  // namespace quenwick::bench

int main() { return quenwick::bench::run(); }

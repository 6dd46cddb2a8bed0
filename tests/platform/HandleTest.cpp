#include <gtest/gtest.h>

#include <optional>
#include <tuple>
#include <vector>

#include "quenwick/platform/URLSession.h"
#include "tests/support/ChangingServer.h"

namespace quenwick::platform {
namespace {

/// The statuses of that many loads at once; 0 for one that failed.
std::vector<int> statuses(const std::shared_ptr<URLSession>& session, std::size_t count,
                          const char* method = "GET") {
  std::vector<int> found(count);
  std::vector<TaskHandle> loads;
  auto load = [](std::shared_ptr<URLSession> from, const char* method, int* status) -> Task<void> {
    try {
      auto answer =
          co_await from->data({.url = URL::parse("https://a.example/"), .httpMethod = method});
      *status = dynamic_cast<const HTTPURLResponse&>(*answer.response).statusCode;
    } catch (const PlatformError&) {
      *status = 0;
    }
  };
  for (auto& status : found) loads.push_back(startTask(load(session, method, &status)));
  for (const auto& each : loads) each.wait();
  return found;
}

// Some versions of curl would take the first field for more of one that the transfer before had,
// and that is gone. An address sanitizer tells.
TEST(Handle, ThatSpokeHTTP2MeetsAConnectionOfHTTP1AsIfItWereNew) {
  tests::ChangingServer server(4);
  auto session = URLSession::make(server.configuration());
  const std::vector<int> one{200};
  const std::vector<int> two{200, 200};
  // One connection is known to be of HTTP/2 before others could be opened beside it.
  EXPECT_EQ(statuses(session, 1), one);
  EXPECT_EQ(statuses(session, 2), two);
  EXPECT_EQ(statuses(session, 1), one);
  EXPECT_EQ(server.connections(), 1);

  server.waitForEndOfHTTP2();
  EXPECT_EQ(statuses(session, 1), one);
  EXPECT_EQ(server.connections(), 2);
  server.setFolded(true);
  for (int round = 0; round < 3; ++round) statuses(session, 2);
  server.setFolded(false);
  EXPECT_EQ(statuses(session, 2), two);
}

// One that is asked for more streams than it has room for is left for another by curl.
TEST(Handle, OfManyLoadsAtOnceSharesOneConnectionOfHTTP2) {
  tests::ChangingServer server(1000);
  auto session = URLSession::make(server.configuration());
  EXPECT_EQ(statuses(session, 1), std::vector<int>(1, 200));
  EXPECT_EQ(statuses(session, 300), std::vector<int>(300, 200));
  EXPECT_EQ(server.connections(), 1);
}

// Nobody knows whether the service has taken what was sent last: what only asks may ask again.
TEST(Handle, OfAKeptConnectionOfHTTP2ThatEndsAsksOnceMore) {
  for (auto [method, status, connections] : {std::tuple("GET", 200, 2), {"POST", 0, 1}}) {
    tests::ChangingServer server(1, tests::ChangingServer::Closes::withRequest);
    auto session = URLSession::make(server.configuration());
    EXPECT_EQ(statuses(session, 1), std::vector<int>(1, 200));
    EXPECT_EQ(statuses(session, 1, method), std::vector<int>(1, status)) << method;
    EXPECT_EQ(server.connections(), connections) << method;
  }
}

}  // namespace
}  // namespace quenwick::platform

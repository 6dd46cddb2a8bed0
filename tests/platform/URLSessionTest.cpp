#include "quenwick/platform/URLSession.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <future>
#include <set>
#include <thread>

#include "tests/support/SandboxService.h"
#include "tests/support/SayingServer.h"

namespace quenwick::platform {
namespace {

constexpr auto kScenario = R"({
  "links": [
    {"link": "https://a.example/start", "chain": [
       {"status": 302, "to": "https://b.example/middle", "headers": {"Set-Cookie": "seen=1; Path=/"}},
       {"status": 307, "to": "/end"}], "end": {"status": 200, "body": "arrived"}},
    {"link": "https://a.example/loop", "chain": [{"status": 302, "to": "https://a.example/loop"}]},
    {"link": "https://a.example/app", "chain": [{"status": 302, "to": "shopapp://product/42"}]},
    {"link": "http://plain.example/x", "chain": [{"status": 301, "to": "http://plain.example/y"}]},
    {"link": "https://a.example/broken-bodies", "chain": [
       {"status": 302, "to": "/b1", "body": "half of this", "cut": "during"},
       {"status": 302, "to": "/b2", "body": "no gzip", "headers": {"Content-Encoding": "gzip"}},
       {"status": 302, "to": "/b3", "repeatBody": 100000000}],
     "end": {"status": 200, "body": "there", "headers": {"X-Empty": ""}}},
    {"link": "https://a.example/long-and-away", "chain": [
       {"status": 302, "to": "https://wrong.example/", "repeatBody": 100000000}]},
    {"link": "https://a.example/away", "chain": [
       {"status": 307, "to": "/near"}, {"status": 307, "to": "https://b.example/far"},
       {"status": 307, "to": "https://a.example/back"}], "end": {"status": 200, "body": "back"}},
    {"link": "https://a.example/clear", "chain": [
       {"status": 308, "to": "http://a.example/open", "body": "in clear"}]},
    {"link": "https://a.example/slow-chain", "chain": [{"status": 302, "to": "/slow", "delay": 10}],
     "end": {"status": 200, "delay": 30000}}
  ],
  "answers": [
    {"at": "https://a.example/echo", "status": 200, "body": "echo"},
    {"at": "https://a.example/missing", "status": 404, "body": "gone"},
    {"at": "https://a.example/cut-before", "status": 200, "cut": "before"},
    {"at": "https://a.example/cut-during", "status": 200, "body": "half of this", "cut": "during"},
    {"at": "https://a.example/huge", "status": 200, "repeatBody": 100000000},
    {"at": "https://a.example/endless", "status": 200, "repeatBody": 100000000, "chunked": true},
    {"at": "https://wrong.example/", "status": 200}, {"at": "https://expired.example/", "status": 200},
    {"at": "https://stranger.example/", "status": 200},
    {"at": "https://xn--strae-oqa.example/", "status": 200, "body": "abroad"}
  ],
  "certificates": {"wrong.example": "wrong-host", "expired.example": "expired",
                   "stranger.example": "unknown-issuer"}
})";

class URLSessionTest : public testing::Test {
 protected:
  URLRequest request(const char* url) { return {.url = URL::parse(url)}; }

  /// The error's code, and the failing URL behind it; 0 where the load succeeds.
  std::pair<int, std::string> failure(const char* url, URLSessionConfiguration configuration) {
    try {
      wait(URLSession::make(std::move(configuration))->data(request(url)));
      return {0, ""};
    } catch (const PlatformError& error) {
      EXPECT_EQ(error.domain(), kURLErrorDomain);
      EXPECT_FALSE(error.localizedDescription().empty());
      auto failing = error.userInfo().find(NSURLErrorFailingURLStringErrorKey);
      return {error.code(), failing == error.userInfo().end() ? "" : failing->second};
    }
  }
  std::pair<int, std::string> failure(const char* url) {
    return failure(url, service_.configuration());
  }

  tests::SandboxService service_{kScenario};
};

using Failure = std::pair<int, std::string>;

TEST_F(URLSessionTest, FollowsRedirectsOverHostsToTheEnd) {
  auto session = URLSession::make(service_.configuration());
  auto outcome = wait(session->data(request("https://a.example/start")));
  const auto& response = dynamic_cast<const HTTPURLResponse&>(*outcome.response);
  EXPECT_EQ(response.statusCode, 200);
  EXPECT_EQ(response.url->absoluteString(), "https://b.example/end");
  EXPECT_EQ(outcome.data, "arrived");
  EXPECT_EQ(service_.received(),
            (std::vector<std::string>{"GET a.example/start", "GET b.example/middle",
                                      "GET b.example/end"}));
  auto plain = wait(session->data(request("http://plain.example/x")));
  EXPECT_EQ(plain.response->url->absoluteString(), "http://plain.example/y");
}

// The test's own locale is "C", as that of any program that has set none.
TEST_F(URLSessionTest, AnInternationalHostIsFoundInEveryLocale) {
  auto session = URLSession::make(service_.configuration());
  for (const auto* url : {"https://straße.example/", "https://stra%C3%9Fe.example/",
                          "https://xn--strae-oqa.example/"}) {
    auto outcome = wait(session->data(request(url)));
    EXPECT_EQ(outcome.data, "abroad");
    EXPECT_EQ(outcome.response->url->absoluteString(), url);
  }
}

TEST_F(URLSessionTest, SendsMethodHeadersAndBodyAsGiven) {
  auto configuration = service_.configuration();
  configuration.additionalHeaders = {{"X-Both", "session"}, {"X-Session", "s"}};
  auto session = URLSession::make(configuration);
  for (auto method : {"POST", "PUT", "DELETE", "PATCH"}) {
    auto sent = request("https://a.example/echo");
    sent.httpMethod = method;
    sent.httpBody = std::string("a\0b", 3);
    sent.headerFields = {{"X-Both", "request"},
                         {"X-Empty", ""},
                         {"User-Agent", "u"},
                         {"X-Line", "a\r\nX-Forged: 1"},
                         {"Accept-Encoding", "gzip\r\nX-Forged: 1"}};
    EXPECT_EQ(wait(session->data(sent)).data, "echo");
  }
  auto got = service_.sandbox().requests();
  for (auto part : {R"("X-Both":"request")", R"("X-Session":"s")", R"("X-Empty":"")",
                    R"("User-Agent":"u")", R"("method":"PATCH")", R"(a\u0000b)"}) {
    EXPECT_NE(got.find(part), got.npos) << part << got;
  }
  EXPECT_EQ(got.find("\"Expect\""), got.npos);
  EXPECT_EQ(got.find("\"X-Forged\""), got.npos);
}

/// A name with a longer label than there are, which nobody asks the network for.
constexpr auto kNoHost =
    "https://a-label-of-a-name-has-sixty-three-letters-at-most-and-this-one-more.example/";

TEST_F(URLSessionTest, FailuresHaveTheirCodeAndTheURLThatFailed) {
  const std::pair<const char*, Failure> table[] = {
      {"https://a.example/app", {URLErrorCode::unsupportedURL, "shopapp://product/42"}},
      {"file:///etc/hostname", {URLErrorCode::unsupportedURL, "file:///etc/hostname"}},
      {"https:/a.example", {URLErrorCode::badURL, "https:/a.example"}},
      {"https://wrong.example/",
       {URLErrorCode::serverCertificateUntrusted, "https://wrong.example/"}},
      {"https://expired.example/",
       {URLErrorCode::serverCertificateHasBadDate, "https://expired.example/"}},
      {"https://stranger.example/",
       {URLErrorCode::serverCertificateHasUnknownRoot, "https://stranger.example/"}},
      {"https://a.example/cut-before",
       {URLErrorCode::networkConnectionLost, "https://a.example/cut-before"}},
      {"https://a.example/cut-during",
       {URLErrorCode::networkConnectionLost, "https://a.example/cut-during"}},
      {"https://a.example/huge",
       {URLErrorCode::dataLengthExceedsMaximum, "https://a.example/huge"}},
      {"https://a.example/endless",
       {URLErrorCode::dataLengthExceedsMaximum, "https://a.example/endless"}},
      {"https://127.0.0.1:1/", {URLErrorCode::cannotConnectToHost, "https://127.0.0.1:1/"}},
      {kNoHost, {URLErrorCode::cannotFindHost, kNoHost}},
  };
  for (const auto& [url, expected] : table) EXPECT_EQ(failure(url), expected) << url;
  for (const auto& line : service_.received()) {
    EXPECT_TRUE(line.starts_with("GET a.example/")) << "sent to an unverified server: " << line;
  }
}

TEST_F(URLSessionTest, AnAnswerThatIsNoHTTPAndNoTLSIsTheServersFault) {
  for (const auto* answer :
       {"SSH-2.0-none of ours\r\n", "HTTP/7.1 200 OK\r\n\r\nbody", "HTTP/1.1 many OK\r\n\r\n"}) {
    tests::SayingServer server(answer);
    for (auto [url, code] :
         {std::pair(server.url("http"), URLErrorCode::cannotParseResponse),
          std::pair(server.url("https"), URLErrorCode::secureConnectionFailed)}) {
      EXPECT_EQ(failure(url.c_str()), (Failure{code, url})) << answer;
    }
  }
}

// The service may have taken it before the connection went: only what asks may be asked again.
TEST_F(URLSessionTest, WhatDoesSomethingIsSentOnceThoughAKeptConnectionEnds) {
  auto session = URLSession::make(service_.configuration());
  auto sentTo = [&](const char* method) {
    URLRequest sent = request("https://a.example/cut-before");
    sent.httpMethod = method;
    if (*method == 'P') sent.httpBody = "one order";
    wait(session->data(request("https://a.example/echo")));
    service_.sandbox().forgetRequests();
    EXPECT_THROW(wait(session->data(sent)), PlatformError);
    return service_.received().size();
  };
  EXPECT_EQ(sentTo("POST"), 1U);
  EXPECT_EQ(sentTo("PATCH"), 1U);
  EXPECT_EQ(sentTo("GET"), 2U) << "the connection was not a kept one";
}

TEST_F(URLSessionTest, ARedirectIsFollowedWhateverBecomesOfItsBody) {
  auto session = URLSession::make(service_.configuration());
  auto there = wait(session->data(request("https://a.example/broken-bodies")));
  EXPECT_EQ(there.data, "there");
  const auto& response = dynamic_cast<const HTTPURLResponse&>(*there.response);
  EXPECT_EQ(*headerField(response.headerFields, "X-Empty"), "");
  EXPECT_EQ(failure("https://a.example/long-and-away"),
            (Failure{URLErrorCode::serverCertificateUntrusted, "https://wrong.example/"}));
}

struct Throwing : URLSessionTaskDelegate {
  Task<std::optional<URLRequest>> urlSession(URLSession&, URLSessionTask&, HTTPURLResponse,
                                             URLRequest newRequest) override {
    throw std::runtime_error("host fault");
    co_return newRequest;
  }
  void urlSession(URLSession&, URLSessionTask&, const PlatformError*) override {
    throw std::runtime_error("host fault");
  }
};

TEST_F(URLSessionTest, ADelegateThatThrowsHoldsNothingUp) {
  auto session = URLSession::make(service_.configuration(), std::make_shared<Throwing>());
  EXPECT_EQ(wait(session->data(request("https://a.example/start"))).data, "arrived");
}

// The delegate's queue may be any executor; its answers then come from other threads.
TEST_F(URLSessionTest, ADelegateOnAQueueOfItsOwnIsAskedThere) {
  auto session = URLSession::make(service_.configuration(),
                                  std::make_shared<URLSessionTaskDelegate>(), makeStrand());
  EXPECT_EQ(wait(session->data(request("https://a.example/start"))).data, "arrived");
}

TEST_F(URLSessionTest, TrustOfOneSessionIsNotAnothers) {
  auto trusting = service_.configuration();
  auto other = trusting;
  other.additionalTrustAnchors.clear();
  EXPECT_EQ(failure("https://a.example/echo", trusting).first, 0);
  EXPECT_EQ(failure("https://a.example/echo", other).first,
            URLErrorCode::serverCertificateHasUnknownRoot)
      << "the pool handed over a connection that this session would not have made";
}

TEST_F(URLSessionTest, ConnectionsGoToAnAddressOfIPv6WithBracketsOrWithout) {
  for (const char* address : {"::ffff:127.0.0.1", "[::ffff:127.0.0.1]"}) {
    auto configuration = service_.configuration();
    configuration.connectTo = {{"", 443, address, service_.sandbox().port()}};
    EXPECT_EQ(failure("https://a.example/echo", configuration), Failure(0, "")) << address;
  }
}

TEST_F(URLSessionTest, CredentialsStayWithTheServerThatWasAskedWhoeverGaveThem) {
  auto configuration = service_.configuration();
  configuration.additionalHeaders = {{"Authorization", "Basic secret"}, {"X-Session", "s"}};
  auto own = request("https://a.example/away");
  own.headerFields = {{"Cookie", "secret=1"}};
  own.httpMethod = "POST";
  own.httpBody = "body";
  auto session = URLSession::make(configuration);
  for (int i = 0; i < 2; ++i) {  // the second time on a handle that has loaded before
    service_.sandbox().forgetRequests();
    EXPECT_EQ(wait(session->data(own)).data, "back");
    auto list = service_.requests();
    ASSERT_EQ(list.size(), 4U);
    for (std::size_t hop = 0; hop < list.size(); ++hop) {
      const auto& fields = *list[hop].find("headers")->as<Dictionary>();
      bool isAtHome = hop < 2;
      EXPECT_EQ(fields.find("Authorization") != nullptr, isAtHome) << hop;
      EXPECT_EQ(fields.find("Cookie") != nullptr, isAtHome) << hop;
      EXPECT_TRUE(fields.find("X-Session")) << hop;
      EXPECT_EQ(*list[hop].find("body"), "body") << hop;
    }
  }
}

TEST_F(URLSessionTest, ABodyThatWasSentEncryptedIsNotSentInClear) {
  auto own = request("https://a.example/clear");
  auto session = URLSession::make(service_.configuration());
  EXPECT_EQ(wait(session->data(own)).response->url->scheme(), "http") << "there is no body";
  service_.sandbox().forgetRequests();
  own.httpMethod = "POST";
  own.httpBody = "secret";
  auto outcome = wait(session->data(own));
  EXPECT_EQ(dynamic_cast<const HTTPURLResponse&>(*outcome.response).statusCode, 308);
  EXPECT_EQ(outcome.data, "in clear");
  EXPECT_EQ(service_.received(), std::vector<std::string>{"POST a.example/clear"});
}

TEST_F(URLSessionTest, ALoopEndsAfterTwentyRedirects) {
  EXPECT_EQ(failure("https://a.example/loop"),
            Failure(URLErrorCode::httpTooManyRedirects, "https://a.example/loop"));
  EXPECT_EQ(service_.received().size(), 21U);
}

TEST_F(URLSessionTest, TimeOutsAreTheRequestsTheSessionsAndTheResources) {
  constexpr double kSeconds = 6;  // in which a busy machine, too, gets past the redirect
  auto session = service_.configuration();
  session.requestTimeout = kSeconds;
  auto resource = service_.configuration();
  resource.resourceTimeout = kSeconds;
  auto own = request("https://a.example/slow-chain");
  own.timeoutInterval = kSeconds;

  auto begin = std::chrono::steady_clock::now();
  auto ofSession = std::async(std::launch::async,
                              [&] { return failure("https://a.example/slow-chain", session); });
  auto ofResource = std::async(
      std::launch::async, [&] { return failure("https://a.example/slow-chain", resource).first; });
  EXPECT_THROW(wait(URLSession::make(service_.configuration())->data(own)), PlatformError);
  EXPECT_EQ(ofSession.get(), Failure(URLErrorCode::timedOut, "https://a.example/slow"));
  EXPECT_EQ(ofResource.get(), URLErrorCode::timedOut);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

Task<void> cancelled(std::shared_ptr<URLSession> session, URLRequest request, std::stop_token stop,
                     std::shared_ptr<int> code) {
  try {
    co_await session->data(std::move(request), stop);
  } catch (const PlatformError& error) {
    *code = error.userInfo().empty() ? error.code() : 0;
  }
}

TEST_F(URLSessionTest, ACancelledLoadEndsAtOnceAndNamesNoFailingURL) {
  auto session = URLSession::make(service_.configuration());
  for (int milliseconds : {0, 5, 50}) {
    auto code = std::make_shared<int>(0);
    std::stop_source stop;
    auto handle = startTask(
        cancelled(session, request("https://a.example/slow-chain"), stop.get_token(), code), stop);
    handle.waitFor(std::chrono::milliseconds(milliseconds));
    handle.cancel();
    ASSERT_TRUE(handle.waitFor(std::chrono::seconds(20)));
    EXPECT_EQ(*code, URLErrorCode::cancelled);
  }
}

/// Stops where it is told to, and writes down what it saw.
struct Watcher : URLSessionTaskDelegate {
  Task<std::optional<URLRequest>> urlSession(URLSession&, URLSessionTask& task,
                                             HTTPURLResponse response,
                                             URLRequest newRequest) override {
    seen.push_back(std::to_string(response.statusCode) + " " + newRequest.url->absoluteString());
    EXPECT_EQ(task.originalRequest.url->absoluteString(), "https://a.example/start");
    if (newRequest.url->path() == stopAt) co_return std::nullopt;
    co_return newRequest;
  }
  void urlSession(URLSession&, URLSessionTask&, const PlatformError* error) override {
    seen.push_back(error ? "failed" : "completed");
  }
  std::string stopAt;
  std::vector<std::string> seen;
};

TEST_F(URLSessionTest, TheDelegateIsAskedAtEachRedirectAndMayEndTheChain) {
  auto watcher = std::make_shared<Watcher>();
  auto session = URLSession::make(service_.configuration(), watcher);
  wait(session->data(request("https://a.example/start")));
  EXPECT_EQ(watcher->seen, (std::vector<std::string>{"302 https://b.example/middle",
                                                     "307 https://b.example/end", "completed"}));
  watcher->stopAt = "/end";
  auto outcome = wait(session->data(request("https://a.example/start")));
  const auto& response = dynamic_cast<const HTTPURLResponse&>(*outcome.response);
  EXPECT_EQ(response.statusCode, 307);
  EXPECT_EQ(response.url->absoluteString(), "https://b.example/middle");
}

TEST_F(URLSessionTest, CookiesEndWithTheirLoad) {
  auto session = URLSession::make(service_.configuration());
  wait(session->data(request("https://a.example/start")));
  wait(session->data(request("https://a.example/echo")));
  auto got = service_.sandbox().requests();
  EXPECT_EQ(got.find("\"Cookie\""), got.npos) << got;
}

TEST_F(URLSessionTest, ManyLoadsAtOnceShareThreadAndConnections) {
  auto session = URLSession::make(service_.configuration());
  auto arrivedOf = [&](int count, const char* url) {
    std::vector<TaskHandle> handles;
    std::atomic<int> arrived = 0;
    auto load = [](std::shared_ptr<URLSession> from, URLRequest what,
                   std::atomic<int>* found) -> Task<void> {
      if ((co_await from->data(std::move(what))).data == "arrived") ++*found;
    };
    for (int i = 0; i < count; ++i) {
      handles.push_back(startTask(load(session, request(url), &arrived)));
    }
    for (const auto& handle : handles) handle.wait();
    return arrived.load();
  };
  EXPECT_EQ(arrivedOf(200, "https://a.example/start"), 200);
  service_.sandbox().forgetRequests();
  for (int count : {100, 1, 1, 1, 1, 1, 1, 1, 1, 100}) {
    EXPECT_EQ(arrivedOf(count, "https://b.example/end"), count);
  }
  std::set<std::int64_t> connections;
  for (const auto& request : service_.requests()) {
    connections.insert(*request.find("connection")->as<std::int64_t>());
  }
  EXPECT_LE(connections.size(), 6U);
}

}  // namespace
}  // namespace quenwick::platform

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <tuple>
#include <utility>
#include <vector>

#include "sandbox/Address.h"
#include "tests/sandbox/SandboxFixture.h"
#include "tests/support/FileContents.h"

namespace quenwick::sandbox {
namespace {

using tests::contents;
using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
namespace fs = std::filesystem;

/// A client that sends a text and then neither reads nor ends its connection.
class Peer {
 public:
  Peer(std::uint16_t port, const std::string& text) : socket_(::socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    EXPECT_EQ(::connect(socket_, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::send(socket_, text.data(), text.size(), MSG_NOSIGNAL),
              static_cast<ssize_t>(text.size()));
  }
  ~Peer() { ::close(socket_); }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

 private:
  int socket_;
};

class SandboxTest : public SandboxFixture {
 protected:
  /// Waits until a request has been received whose record holds the text as a value.
  void awaitRequest(const std::string& text) const {
    const auto deadline = Clock::now() + 20s;
    while (sandbox_->requests().find("\"" + text + "\"") == std::string::npos) {
      ASSERT_LT(Clock::now(), deadline) << text;
      std::this_thread::yield();
    }
  }
};

TEST(Address, RedirectTargetsResolveAgainstTheAddressThatSentThem) {
  struct Case {
    std::string target, scheme, host, path;
  };
  const std::vector<Case> cases = {
      {"https://Other.Example:8443/A/b?q=/../x#f", "https", "other.example", "/A/b"},
      {"HTTP://u:p@other.example", "http", "other.example", "/"},
      {"//other.example/x", "https", "other.example", "/x"},
      {"/x%2Fy/../z/", "https", "shop.example", "/z/"},
      {"x", "https", "shop.example", "/p/go/x"},
      {"../x?y=../z", "https", "shop.example", "/p/x"},
      {"../../../../x/.", "https", "shop.example", "/x/"},
      {"?qw_u=alice", "https", "shop.example", "/p/go/1f"},
      {"", "https", "shop.example", "/p/go/1f"},
      {"../go:x/..", "https", "shop.example", "/p/"},
      {"ShopApp://product/42", "shopapp", "", "/"}};
  const Address base = parseAddress("https://Shop.example/p/go/1f?qw_u=bob").value_or(Address{});
  for (const auto& [target, scheme, host, path] : cases) {
    const Address address = resolve(base, target).value_or(Address{});
    EXPECT_EQ(std::tie(address.scheme, address.host, address.path), std::tie(scheme, host, path))
        << target;
  }
  for (const char* target : {"https:x", "https:///x", "http://a b/", "//"}) {
    EXPECT_FALSE(resolve(base, target)) << target;
  }
}

TEST_F(SandboxTest, BuiltInChainsLeadToTheirEnds) {
  struct Case {
    std::string link, outcome, body;
  };
  const std::string links = "https://links.shop.example/p/";
  const std::vector<Case> cases = {
      {links + "go/1f", "200 2 https://shop.example/products/42?utm_source=mail", "Product"},
      {links + "rp/deadbeef/url", "200 1 https://shop.example/products/7?qw_u=bob", "end of"},
      {links + "rpm/0a1b/mail/url", "200 1 https://links.shop.example/landing?qw_u=carol",
       "end of"},
      {links + "cp/x/c", "200 1 https://www.shop.example/campaign/spring", "end of"},
      {links + "go/a5", "200 3 https://www.shop.example/sale?qw_u=erin", "end of"},
      {links + "go/5e0", "200 5 https://hop.shop.example/five-statuses", "after all five"},
      {links + "go/404", "410 1 https://shop.example/gone", "offer is over"},
      {"http://links.shop.example/p/go/477", "200 2 http://shop.example/plain", "end of"},
      {"https://localhost/p/go/ff", "200 1 https://localhost/any-host", "end of"},
      {"http://any.host.example/p/go/ff", "200 1 http://any.host.example/any-host", "end"}};
  start();
  for (const auto& [link, outcome, body] : cases) {
    const tests::Finished fetched =
        curl("-L -w ' %{http_code} %{num_redirects} %{url_effective}' '" + link + "'");
    EXPECT_EQ(fetched.exitCode, 0) << link;
    EXPECT_NE(fetched.output.find(body), std::string::npos) << fetched.output;
    EXPECT_TRUE(fetched.output.ends_with(" " + outcome)) << fetched.output;
  }
  const tests::Finished app =
      curl("-w '%{http_code} %header{location}' https://hop.shop.example/p/rp/beef/url");
  EXPECT_EQ(app.output, "302 shopapp://product/42");
  EXPECT_EQ(curl("-L --max-redirs 9 https://links.shop.example/p/go/100b").exitCode, 47);
}

TEST_F(SandboxTest, AnswersAreSentAsTheScenarioSpellsThem) {
  start(R"({"answers": [
    {"at": "/headers", "status": 418, "headers": {"X-Odd": "a%2Fb"}, "type": "text/x", "body": "b"},
    {"at": "/nowhere", "status": 302},
    {"at": "/json", "json": {"data": [1, "\u00e9"]}},
    {"at": "/bytes", "bodyBase64": "AP+AAQ=="},
    {"at": "/repeated", "body": "abc", "repeatBody": 100000},
    {"at": "/chunked", "body": "abc", "repeatBody": 100000, "chunked": true},
    {"at": "https://own.example/both", "body": "own"}, {"at": "/both", "body": "any"}]})");
  std::string repeated;
  while (repeated.size() < 100'000) repeated += "abc";
  repeated.resize(100'000);
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"-w ' %{http_code} %{content_type} %header{x-odd}' http://h/headers", "b 418 text/x a%2Fb"},
      {"-X POST http://h/headers", "b"},
      {"-d body -w ' %{http_code}' http://h/headers", "b 418"},
      {"-X DELETE http://h/headers", "b"},
      {"-I -o /dev/null -w '%{http_code} %header{content-length}%header{accept-ranges}' "
       "http://h/headers",
       "418 1"},
      {"-w '%{http_code} %header{location}' http://h/nowhere", "302 "},
      {"-w ' %{content_type}' http://h/json", "{\"data\":[1,\"\xC3\xA9\"]} application/json"},
      {"http://h/bytes", std::string("\0\xFF\x80\x01", 4)},
      {"-H 'Range: bytes=1-2' http://h/bytes", std::string("\0\xFF\x80\x01", 4)},
      {"--compressed http://h/repeated", repeated},
      {"http://h/chunked", repeated},
      {"-o /dev/null -w '%header{transfer-encoding}' http://h/chunked", "chunked"},
      {"https://OWN.example/both", "own"},
      {"http://other.example/both", "any"},
      {"http://h/missing", "Nothing is served at h/missing\n"}};
  for (const auto& [arguments, expected] : cases) EXPECT_EQ(curl(arguments).output, expected);
}

TEST_F(SandboxTest, FaultsReachTheClient) {
  struct Case {
    std::string address;
    std::vector<int> exits;
    std::string message;
  };
  const std::vector<Case> cases = {{"https://hop.shop.example/cut-before", {52, 56}, ""},
                                   {"http://hop.shop.example/cut-before", {52, 56}, ""},
                                   {"https://hop.shop.example/cut-during", {18}, ""},
                                   {"http://hop.shop.example/cut-during", {18}, ""},
                                   {"https://expired.shop.example/", {60}, "has expired"},
                                   {"https://EXPIRED.shop.example/", {60}, "has expired"},
                                   {"https://not-yet-valid.shop.example/", {60}, "not yet valid"},
                                   {"https://wrong-host.shop.example/", {60}, "subject name"},
                                   {"https://unknown-issuer.shop.example/", {60}, "local issuer"}};
  start();
  for (const Case& each : cases) {
    const tests::Finished fetched = curl(each.address);
    EXPECT_NE(std::ranges::find(each.exits, fetched.exitCode), each.exits.end())
        << each.address << " " << fetched.exitCode << " " << fetched.output;
    EXPECT_NE(fetched.output.find(each.message), std::string::npos)
        << each.address << " " << fetched.output;
  }
}

TEST_F(SandboxTest, RequestsAreRecordedAsTheyCameAndInTheirOrder) {
  start();
  curl("-H 'X-Odd: a%2Fb' -H 'X-Odd: c' 'https://shop.example/first?q=%41+b'");
  curl("-d '{\"a\":\"%20\"}' http://www.shop.example/second");
  curl("-F a=b https://www.shop.example/third");
  curl("--data-binary '\xFF' https://www.shop.example/fourth");
  const std::string recorded = curl("http://any.example/_sandbox/requests").output;
  EXPECT_EQ(recorded, sandbox_->requests());

  std::size_t position = 0;
  for (const char* part :
       {R"({"requests":[{"method":"GET","scheme":"https","host":"shop.example","path":"/first",)",
        R"("query":"q=%41+b",)", R"("X-Odd":"a%2Fb, c")", R"("receivedAt":)", R"("connection":1})",
        R"("method":"POST","scheme":"http","host":"www.shop.example","path":"/second")",
        R"("Content-Type":"application/x-www-form-urlencoded")", R"("body":"{\"a\":\"%20\"}")",
        R"("path":"/third")", R"(Content-Disposition: form-data; name=\"a\")",
        R"("path":"/fourth")", R"("bodyBase64":"/w==")"}) {
    position = recorded.find(part, position);
    ASSERT_NE(position, std::string::npos) << part << " in " << recorded;
  }
  EXPECT_EQ(recorded.find("_sandbox"), std::string::npos);

  EXPECT_EQ(curl("-X DELETE -w '%{http_code}' https://shop.example/_sandbox/requests").output,
            "204");
  EXPECT_EQ(sandbox_->requests(), R"({"requests":[]})");
}

TEST_F(SandboxTest, BadScenariosAreRefusedNamingThePlace) {
  expectRefused(
      {{"{\n  \"links\": [}", "line 2, column 13: "},
       {R"({} x)", "line 1, column 4: "},
       {R"({"links": [)", "line 1, column 12: "},
       {R"([])", "scenario: must be an object"},
       {R"({"linkz": []})", "linkz: unknown key"},
       {R"({"links": [{}]})", "links[0].link: is missing"},
       {R"({"links": [{"link": "shop.example/x"}]})", "links[0].link: must be"},
       {R"({"links": [{"link": "/a"}, {"link": "/b", "chain": [{"status": 200, "to": "/c"}]}]})",
        "links[1].chain[0].status: must be 301"},
       {R"({"links": [{"link": "/a", "chain": [{"to": "https://"}]}]})",
        "links[0].chain[0].to: names no host"},
       {R"({"links": [{"link": "/a", "chain": [{"to": "a\r\nb"}]}]})",
        "links[0].chain[0].to: holds a control character"},
       {R"({"links": [{"link": "/a", "chain": [{"to": "app://x"}, {"to": "/b"}]}]})",
        "links[0].chain[1]: follows a target that no server answers"},
       {R"({"links": [{"link": "/a", "chain": [{"to": "/b"}]}],
           "answers": [{"at": "/a"}]})",
        "answers[0]: another answer stands at /a already"},
       {R"({"answers": [{"at": "/a", "delay": -1}]})", "answers[0].delay: must be a whole number"},
       {R"({"answers": [{"at": "/a", "cut": "after"}]})", "answers[0].cut: must be \"before\""},
       {R"({"answers": [{"at": "/a", "bodyBase64": "A"}]})",
        "answers[0].bodyBase64: is not Base64"},
       {R"({"answers": [{"at": "/a", "body": "A", "json": 1}]})",
        "answers[0].json: there is another"},
       {R"({"certificates": {"a.example": "bad"}})", "certificates.a.example: must be"},
       {R"({"certificates": {"a example": "expired"}})",
        "certificates.a example: is no host name"}});
}

TEST_F(SandboxTest, TheAuthorityIsKeptBetweenStartsAndItsKeyIsPrivate) {
  start();
  const fs::path file = sandbox_->certificateAuthority();
  const fs::path key = state_ / "ca-key.pem";
  const std::string first = contents(file);
  EXPECT_EQ(fs::status(key).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  EXPECT_EQ(fs::status(state_).permissions(), fs::perms::owner_all);

  start();
  EXPECT_EQ(contents(file), first);
  EXPECT_EQ(curl("https://shop.example/").exitCode, 0);

  std::ofstream(key) << "damaged";
  start();
  EXPECT_NE(contents(file), first);
  EXPECT_EQ(curl("https://shop.example/").exitCode, 0);
}

TEST_F(SandboxTest, HundredsOfHeldConnectionsAreServedAtOnce) {
  start(R"({"answers": [{"at": "https://shop.example/held", "delay": 1000}]})");
  const auto begun = Clock::now();
  const tests::Finished fetched = curl(
      "-Z --parallel-immediate --parallel-max 300 -o /dev/null -w '%{http_code}\\n' "
      "'https://shop.example/held?[1-300]'");
  EXPECT_EQ(fetched.exitCode, 0);
  EXPECT_EQ(count(fetched.output, "200\n"), 300);
  EXPECT_LT(Clock::now() - begun, 15s);
}

TEST_F(SandboxTest, StoppingWaitsForNobody) {
  start(R"({"answers": [{"at": "/delayed", "delay": 60000},
                        {"at": "/endless", "repeatBody": 1000000000000000}]})");
  const auto fetch = [this](const std::string& arguments) {
    return std::async(std::launch::async, run, curlCommand(arguments));
  };
  const Peer idle(sandbox_->port(), "");
  const Peer reused(sandbox_->httpPort(), "GET /idle HTTP/1.1\r\nHost: h\r\n\r\n");
  const Peer neverReading(sandbox_->httpPort(), "GET /endless?unread HTTP/1.1\r\nHost: h\r\n\r\n");
  auto delayed = fetch("https://localhost/delayed");
  auto endless = fetch("-o /dev/null https://localhost/endless?read");
  for (const char* text : {"/idle", "unread", "/delayed", "read"}) awaitRequest(text);

  const auto begun = Clock::now();
  sandbox_.reset();
  EXPECT_LT(Clock::now() - begun, 5s);
  EXPECT_NE(delayed.get().exitCode, 0);
  EXPECT_NE(endless.get().exitCode, 0);
}

TEST_F(SandboxTest, APortThatIsTakenIsRefused) {
  start();
  EXPECT_THROW(Sandbox({.port = sandbox_->port(), .state = state_}), std::runtime_error);
  EXPECT_EQ(curl("https://shop.example/").exitCode, 0);
}

}  // namespace
}  // namespace quenwick::sandbox

#include "quenwick/API/Stack/HTTPHeaders.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <unordered_set>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/API/Stack/RequestExtensions.h"
#include "quenwick/platform/URLSession.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/RecordingLog.h"

namespace quenwick {
namespace {

using namespace std::string_literals;

TEST(HTTPHeaderTest, WritesNamesAndCredentialsToTheLetter) {
  const std::pair<HTTPHeader, const char*> kHeaders[] = {
      {HTTPHeader::accept("a"), "Accept: a"},
      {HTTPHeader::acceptCharset("a"), "Accept-Charset: a"},
      {HTTPHeader::acceptLanguage("a"), "Accept-Language: a"},
      {HTTPHeader::acceptEncoding("a"), "Accept-Encoding: a"},
      {HTTPHeader::authorization("a"), "Authorization: a"},
      {HTTPHeader::basicAuthorization("user", "p:\xC3\xA4"), "Authorization: Basic dXNlcjpwOsOk"},
      {HTTPHeader::basicAuthorization("", ""), "Authorization: Basic Og=="},
      {HTTPHeader::bearerAuthorization("a b"), "Authorization: Bearer a b"},
      {HTTPHeader::contentDisposition("a"), "Content-Disposition: a"},
      {HTTPHeader::contentType("a"), "Content-Type: a"},
      {HTTPHeader::userAgent(""), "User-Agent: "},
  };
  for (const auto& [header, text] : kHeaders) EXPECT_EQ(header.description(), text);
}

TEST(HTTPHeaderTest, TellsHeadersApartLetterByLetter) {
  std::unordered_set<HTTPHeader> headers = {{"A", "b"}, {"a", "b"}, {"A", "B"}, {"b", "A"}};
  EXPECT_EQ(headers.size(), 4u);
  EXPECT_TRUE(headers.contains({"A", "b"}));
}

TEST(HTTPHeaderTest, BuildsTheUserAgentWithAFallbackForEachMissingPart) {
  using Datapoints = std::map<std::string, std::string>;
  const Datapoints all = {{"sdk_version_number", "1.2.0"},
                          {"device_os", "debian"},
                          {"device_type", "x86_64"},
                          {"device_os_version", "12"}};
  EXPECT_EQ(HTTPHeader::userAgentValue(all), "QuenwickSDK/1.2.0 debian/x86_64/12");
  EXPECT_EQ(HTTPHeader::userAgentValue({}), "QuenwickSDK/0.0.0 iOS/unknown/0.0.0");
  const std::pair<const char*, const char*> kWithout[] = {
      {"sdk_version_number", "QuenwickSDK/0.0.0 debian/x86_64/12"},
      {"device_os", "QuenwickSDK/1.2.0 iOS/x86_64/12"},
      {"device_type", "QuenwickSDK/1.2.0 debian/unknown/12"},
      {"device_os_version", "QuenwickSDK/1.2.0 debian/x86_64/0.0.0"},
  };
  for (const auto& [key, text] : kWithout) {
    auto datapoints = all;
    datapoints.erase(key);
    EXPECT_EQ(HTTPHeader::userAgentValue(datapoints), text);
  }
}

TEST(HTTPHeaderTest, WeighsWithOneDigitAndSixLanguagesAtMost) {
  EXPECT_EQ(HTTPHeader::acceptLanguageValue({}), "");
  EXPECT_EQ(HTTPHeader::acceptLanguageValue({"de-AT"}), "de-AT;q=1.0");
  EXPECT_EQ(HTTPHeader::acceptLanguageValue({"a", "b", "c", "d", "e", "f", "g"}),
            "a;q=1.0, b;q=0.9, c;q=0.8, d;q=0.7, e;q=0.6, f;q=0.5");
  EXPECT_EQ(qualityEncoded({"a", "b", "c", "d", "e", "f", "g", "h", "i", "j"}),
            "a;q=1.0, b;q=0.9, c;q=0.8, d;q=0.7, e;q=0.6, f;q=0.5, g;q=0.4, h;q=0.3, i;q=0.2, "
            "j;q=0.1");
}

// Before the first use, which is the only one that reads them.
const bool kPrefersTwoLanguages =
    setenv("LC_ALL", "en_US.UTF-8", 1) == 0 && setenv("LANGUAGE", "de_AT:fr", 1) == 0;

TEST(HTTPHeadersTest, HasTheDefaultsInTheirOrderMadeOnce) {
  ASSERT_TRUE(kPrefersTwoLanguages);
  const auto& headers = HTTPHeaders::defaultHeaders();
  ASSERT_EQ(headers.size(), 3u);
  EXPECT_EQ(headers[0].description(), "Accept-Encoding: br;q=1.0, gzip;q=0.9, deflate;q=0.8");
  EXPECT_EQ(headers[1].description(), "Accept-Language: de-AT;q=1.0, de;q=0.9, fr;q=0.8");
  auto agent = HTTPHeader::userAgentValue(Analytics::shared().datapoints());
  EXPECT_EQ(headers[2].description(), "User-Agent: " + agent);
  EXPECT_NE(agent, HTTPHeader::userAgentValue({}));
  EXPECT_EQ(&HTTPHeaders::defaultHeaders(), &headers);
}

TEST(HTTPHeadersTest, ReplacesInPlaceUnderTheOldSpelling) {
  HTTPHeaders headers = {{"Accept", "1"}, {"X-Id", "2"}, {"ACCEPT", "3"}};
  EXPECT_EQ(headers.description(), "Accept: 3\nX-Id: 2");
  headers.update("x-ID", "4");
  headers.add("Host", "5");
  headers.add({"host", "6"});
  EXPECT_EQ(headers.description(), "Accept: 3\nX-Id: 4\nHost: 6");
  EXPECT_EQ(headers.value("hOST"), "6");
  EXPECT_EQ(headers.value("Hos"), std::nullopt);
}

TEST(HTTPHeadersTest, ComesFromEveryForm) {
  const HTTPHeaders written = {{"A", "1"}, {"B", "2"}};
  EXPECT_EQ(HTTPHeaders(std::vector<HTTPHeader>{{"A", "0"}, {"B", "2"}, {"a", "1"}}), written);
  EXPECT_EQ(HTTPHeaders(std::map<std::string, std::string>{{"B", "2"}, {"A", "1"}}), written);
  EXPECT_EQ(HTTPHeaders(written.dictionary()), written);
  EXPECT_TRUE(HTTPHeaders().empty());
  EXPECT_EQ(HTTPHeaders().description(), "");
}

TEST(HTTPHeadersTest, RemovesByNameAndLeavesTheRest) {
  HTTPHeaders headers = {{"A", "1"}, {"B", "2"}, {"C", "3"}};
  headers.remove("absent");
  headers.remove("b");
  EXPECT_EQ(headers, (HTTPHeaders{{"A", "1"}, {"C", "3"}}));
  headers.set("a", std::nullopt);
  headers.set("c", "4");
  headers.set("D", "5");
  EXPECT_EQ(headers, (HTTPHeaders{{"C", "4"}, {"D", "5"}}));
}

TEST(HTTPHeadersTest, SortsByNameWhateverItsCase) {
  const HTTPHeaders headers = {{"b", "1"}, {"C", "2"}, {"A", "3"}};
  auto sorted = headers.sorted();
  EXPECT_EQ(sorted.description(), "A: 3\nb: 1\nC: 2");
  EXPECT_EQ(headers.description(), "b: 1\nC: 2\nA: 3");
}

TEST(RequestExtensionsTest, CarriesMethodAndHeadersToARequestAndBack) {
  platform::URLRequest request;
  EXPECT_EQ(method(request), HTTPMethod::get);
  setMethod(request, HTTPMethod{"purge"});
  EXPECT_EQ(request.httpMethod, "purge");
  setMethod(request, std::nullopt);
  EXPECT_EQ(method(request), std::nullopt);

  request.headerFields = {{"Old", "0"}};
  const HTTPHeaders sent = {{"B", "2"}, {"A", ""}};
  setHeaders(request, sent);
  EXPECT_EQ(request.headerFields, (platform::HeaderFields{{"B", "2"}, {"A", ""}}));
  EXPECT_EQ(headers(request), sent);

  platform::URLSessionConfiguration configuration;
  EXPECT_TRUE(headers(configuration).empty());
  setHeaders(configuration, sent);
  EXPECT_EQ(headers(configuration), sent);
}

TEST(RequestExtensionsTest, ReadsRepeatedFieldsOfAResponseAsOne) {
  platform::HTTPURLResponse response;
  response.headerFields = {{"Vary", "Accept"}, {"Age", "5"}, {"vary", "Origin"}};
  EXPECT_EQ(headers(response), (HTTPHeaders{{"Vary", "Accept, Origin"}, {"Age", "5"}}));
}

TEST(RequestExtensionsTest, LeavesOutWhatWouldAddAFieldOfItsOwn) {
  const HTTPHeader kHeaders[] = {
      {"Authorization", "Bearer secret\r\nX-Forged: 1"},
      {"Authorization", "Bearer secret\n"},
      {"Authorization", "Bearer secret\r"},
      {"Authorization", "Bearer secret\0"s},
      {"X-Forged: 1\r\nAuthorization", "secret"},
      {"X-Forged:", "secret"},
      {"X Forged", "secret"},
      {"X-F\xC3\xB6rged", "secret"},
      {"", "secret"},
  };
  for (const auto& header : kHeaders) {
    auto log = tests::RecordingLog::install();
    platform::URLRequest request;
    platform::URLSessionConfiguration configuration;
    setHeaders(request, HTTPHeaders{header, {"X-Kept", "tab\tand \xC3\xBC"}});
    setHeaders(configuration, HTTPHeaders{header});
    EXPECT_EQ(headers(request), (HTTPHeaders{{"X-Kept", "tab\tand \xC3\xBC"}}));
    EXPECT_TRUE(configuration.additionalHeaders.empty());
    EXPECT_EQ(log->count("error: "), 2) << "one line for each header left out";
    EXPECT_EQ(log->count("secret"), 0) << "no credential in the log";
  }
  platform::setLogSink(nullptr);
}

TEST(RequestExtensionsTest, RefusesABodyOnlyInAGETRequest) {
  using Text = std::optional<std::string>;
  auto validated = [](const Text& method, const Text& body) -> std::string {
    try {
      validate({.url = std::nullopt, .httpMethod = method, .httpBody = body});
    } catch (const APIError& error) {
      return error.errorDescription();
    }
    return "valid";
  };
  for (auto method : {Text("POST"), Text("get"), Text()})
    EXPECT_EQ(validated(method, "a"), "valid");
  EXPECT_EQ(validated("GET", std::nullopt), "valid");
  for (auto body : {"", "a=b"}) {
    EXPECT_TRUE(validated("GET", body).ends_with("cannot have body data:\n" + std::string(body)));
  }
}

}  // namespace
}  // namespace quenwick

#include "quenwick/API/Stack/BaseRequest.h"

#include <gtest/gtest.h>

#include <unordered_set>

#include "quenwick/API/Stack/GeneralAPIError.h"
#include "quenwick/API/Stack/URLConvertible.h"

namespace quenwick {
namespace {

using platform::Dictionary;

TEST(BaseRequestTest, PutsADefaultOverAHeaderOfItsNameAtItsPlace) {
  BaseRequest request(HTTPMethod::get, "/", std::nullopt,
                      {{"user-agent", "mine"}, {"accept-ENCODING", "zstd"}, {"X-Id", "7"}});
  const auto& headers = request.headers();
  ASSERT_EQ(headers.size(), 4u) << headers.description();
  EXPECT_EQ(headers[0].description(), "X-Id: 7");
  EXPECT_EQ(headers[1], (HTTPHeader{"accept-ENCODING", "br;q=1.0, gzip;q=0.9, deflate;q=0.8"}));
  EXPECT_EQ(headers[2], (HTTPHeader{"user-agent", HTTPHeader::defaultUserAgent().value}));
  EXPECT_EQ(headers[3].name, "Accept-Language");
}

TEST(BaseRequestTest, MergesParametersWithTheNewValueOver) {
  BaseRequest request(HTTPMethod::post, "/", Dictionary{{"a", 1}, {"b", 2}});
  request.addParameters({{"b", "two"}, {"c", 3}});
  EXPECT_EQ(request.parameters(), (Dictionary{{"a", 1}, {"b", "two"}, {"c", 3}}));

  BaseRequest bare(HTTPMethod::post, "/");
  bare.addParameters({{"a", 1}});
  EXPECT_EQ(bare.parameters(), (Dictionary{{"a", 1}}));
}

TEST(BaseRequestTest, HoldsOneAuthorization) {
  BaseRequest request(HTTPMethod::get, "/", std::nullopt, {{"authorization", "old"}});
  request.addAuthorization("t0k");
  EXPECT_EQ(request.headers()[0].description(), "authorization: Bearer t0k");
  request.addBasicAuthorization("dXNlcjpw");
  EXPECT_EQ(request.headers()[0].description(), "authorization: Basic dXNlcjpw");
  EXPECT_EQ(request.headers().size(), 4u);
}

TEST(BaseRequestTest, KeepsTheLastHandlerOfAStatus) {
  BaseRequest request(HTTPMethod::get, "/");
  request.addExceptionHandler<GeneralAPIError>(422);
  request.addNetworkErrorExceptionHandler(503);
  const platform::Bytes body = R"({"error": "Bad key"})";
  EXPECT_EQ(request.exception().at(422)(body, 422).errorDescription(), "422 - Bad key");
  EXPECT_EQ(request.exception().size(), 2u);

  request.addNetworkErrorExceptionHandler(422);
  EXPECT_FALSE(request.exception().at(422)(body, 422).underlyingError());
}

TEST(EncodingTypeTest, PicksTheConfiguredEncoding) {
  using Destination = URLEncoding::Destination;
  using Arrays = URLEncoding::ArrayEncoding;
  struct {
    EncodingType type;
    const char* text;
    ParameterEncoding encoding;
  } const kTypes[] = {
      {EncodingType::json, "json", JSONEncoding{platform::JSONWritingOptions::compact}},
      {EncodingType::urlEncoding, "urlEncoding",
       URLEncoding{Destination::queryString, Arrays::brackets}},
      {EncodingType::httpBody, "httpBody", URLEncoding{Destination::httpBody, Arrays::brackets}},
      {EncodingType::arrayEncoding, "arrayEncoding",
       URLEncoding{Destination::methodDependent, Arrays::noBrackets}},
  };
  BaseRequest request(HTTPMethod::get, "/");
  for (const auto& [type, text, encoding] : kTypes) {
    EXPECT_EQ(parseEncodingType(text), type);
    EXPECT_EQ(rawValue(type), text);
    request.setEncodeType(type);
    EXPECT_EQ(request.parameterEncoding(), encoding) << text;
  }
  for (auto text : {"JSON", "json ", ""}) EXPECT_EQ(parseEncodingType(text), std::nullopt);
}

TEST(HTTPMethodTest, IsAnyTextAndTellsCaseApart) {
  using M = HTTPMethod;
  std::string named;
  for (const auto& method :
       {M::connect, M::delete_, M::get, M::head, M::options, M::patch, M::post, M::put, M::trace}) {
    named += method.rawValue + " ";
  }
  EXPECT_EQ(named, "CONNECT DELETE GET HEAD OPTIONS PATCH POST PUT TRACE ");
  std::unordered_set<HTTPMethod> methods = {HTTPMethod::get, {"GET"}, {"get"}, {""}};
  EXPECT_EQ(methods.size(), 3u);
}

TEST(URLConvertibleTest, YieldsAURLOrNamesWhatGaveNone) {
  const auto url = URLConvertible("https://shop.example/a?b=%2f").asURL();
  platform::URLComponents parts(url);
  const std::string_view longer("https://shop.example/a?b=%2f and more");
  for (const URLConvertible& good :
       {URLConvertible(url), URLConvertible(parts), URLConvertible(longer.substr(0, 28))}) {
    EXPECT_EQ(good.asURL(), url);
    EXPECT_EQ(good.description(), "https://shop.example/a?b=%2f");
  }
  parts.percentEncodedPath = "/a b";
  for (const auto& [bad, text] : {std::pair<URLConvertible, const char*>{"not a url", "not a url"},
                                  {"", ""},
                                  {parts, "https://shop.example/a b?b=%2f"}}) {
    try {
      bad.asURL();
      ADD_FAILURE() << text;
    } catch (const APIError& error) {
      EXPECT_EQ(error.errorDescription(), std::string("URL is not valid: ") + text);
      EXPECT_EQ(error.urlConvertible().value_or("none").description(), text);
    }
  }
}

}  // namespace
}  // namespace quenwick

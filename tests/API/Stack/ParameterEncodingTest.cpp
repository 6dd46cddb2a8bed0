#include "quenwick/API/Stack/ParameterEncoding.h"

#include <gtest/gtest.h>

#include <limits>

#include "quenwick/API/Stack/APIError.h"
#include "quenwick/API/Stack/RequestConvertible.h"
#include "quenwick/API/Stack/RequestExtensions.h"
#include "tests/support/NestedValue.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::List;
using platform::URL;
using platform::URLRequest;
using platform::Value;
using Arrays = URLEncoding::ArrayEncoding;
using Booleans = URLEncoding::BoolEncoding;
using Destination = URLEncoding::Destination;
using Reason = APIError::ParameterEncodingFailureReason;

URLRequest request(const HTTPMethod& method, const char* url = "https://a.example/x") {
  return {.url = URL::parse(url), .httpMethod = method.rawValue};
}

std::string urlOf(const URLRequest& request) { return request.url->absoluteString(); }

/// A request that cannot be built.
struct Unbuildable : URLRequestConvertible {
  URLRequest asURLRequest() const override { throw APIError(APIError::InvalidURL{"no url"}); }
};

template <class Kind>
Kind reasonOf(const std::function<void()>& encode) {
  try {
    encode();
  } catch (const APIError& error) {
    return std::get<Kind>(std::get<APIError::ParameterEncodingFailed>(error.kind()).reason.kind);
  }
  ADD_FAILURE() << "nothing was thrown";
  return {};
}

TEST(URLEncodingTest, WritesEveryShapeOfValue) {
  constexpr URLEncoding kPlain;
  constexpr URLEncoding kBare{.arrayEncoding = Arrays::noBrackets,
                              .boolEncoding = Booleans::literal};
  struct {
    URLEncoding encoding;
    Dictionary parameters;
    const char* query;
  } const kRows[] = {
      {kPlain, {{"b", 2}, {"a", "x y"}}, "a=x%20y&b=2"},
      {kPlain, {{"a", Dictionary{{"b", 1}}}}, "a%5Bb%5D=1"},
      {kPlain,
       {{"a", Dictionary{{"z", 1}, {"c", Dictionary{{"d", 2}}}}}},
       "a%5Bz%5D=1&a%5Bc%5D%5Bd%5D=2"},
      {kPlain, {{"ids", List{1, 2}}}, "ids%5B%5D=1&ids%5B%5D=2"},
      {kBare, {{"ids", List{1, List{2, "3"}}}}, "ids=1&ids=2&ids=3"},
      {kPlain, {{"l", List{Dictionary{{"a", 1}}, 2}}}, "l%5B%5D%5Ba%5D=1&l%5B%5D=2"},
      {kPlain, {{"t", true}, {"f", false}, {"one", 1}}, "f=0&one=1&t=1"},
      {kBare, {{"t", true}, {"f", false}, {"one", 1}}, "f=false&one=1&t=true"},
      {kPlain, {{"a", List{true, Dictionary{{"b", false}}}}}, "a%5B%5D=1&a%5B%5D%5Bb%5D=0"},
      {kPlain,
       {{"min", std::numeric_limits<std::int64_t>::min()},
        {"max", std::numeric_limits<std::uint64_t>::max()}},
       "max=18446744073709551615&min=-9223372036854775808"},
      {kPlain,
       {{"price", 3.5}, {"whole", 3.0}, {"small", 1e-7}},
       "price=3.5&small=0.0000001&whole=3.0"},
      {kPlain,
       {{"n", nullptr}, {"empty", ""}, {"none", List{}}, {"void", Dictionary{}}},
       "empty=&n=null"},
      {kPlain, {{"ü", "€"}, {"Z", 1}, {"a", 2}}, "Z=1&a=2&%C3%BC=%E2%82%AC"},
      {kPlain, {{"a&b=c", "d&e=f#?/+"}}, "a%26b%3Dc=d%26e%3Df%23?/%2B"},
      {kPlain,
       {{"zero", std::string_view("a\0b", 3)}, {"not text", "\xff"}},
       "not%20text=%FF&zero=a%00b"},
      {kPlain, {}, ""},
  };
  for (const auto& row : kRows) EXPECT_EQ(row.encoding.query(row.parameters), row.query);
}

TEST(URLEncodingTest, PutsTheItemsWhereTheDestinationSays) {
  struct {
    Destination destination;
    HTTPMethod method;
    bool isInURL;
  } const kRows[] = {
      {Destination::methodDependent, HTTPMethod::get, true},
      {Destination::methodDependent, HTTPMethod::head, true},
      {Destination::methodDependent, HTTPMethod::delete_, true},
      {Destination::methodDependent, HTTPMethod::post, false},
      {Destination::methodDependent, HTTPMethod::put, false},
      {Destination::methodDependent, HTTPMethod{"get"}, false},
      {Destination::queryString, HTTPMethod::post, true},
      {Destination::httpBody, HTTPMethod::get, false},
  };
  for (const auto& row : kRows) {
    auto encoded = URLEncoding{row.destination}.encode(request(row.method), Dictionary{{"a", 1}});
    EXPECT_EQ(urlOf(encoded), row.isInURL ? "https://a.example/x?a=1" : "https://a.example/x");
    EXPECT_EQ(encoded.httpBody, row.isInURL ? std::nullopt : std::optional<std::string>("a=1"));
    EXPECT_EQ(headers(encoded).value("content-type"),
              row.isInURL
                  ? std::nullopt
                  : std::optional<std::string>("application/x-www-form-urlencoded; charset=utf-8"));
  }
}

TEST(URLEncodingTest, KeepsTheQueryThatTheURLHas) {
  struct {
    const char* before;
    std::optional<Dictionary> parameters;
    const char* after;
  } const kRows[] = {
      {"https://a.example/x?k=v", Dictionary{{"a", 1}}, "https://a.example/x?k=v&a=1"},
      {"https://a.example/x?k=%2f%zz#part", Dictionary{{"a", 1}},
       "https://a.example/x?k=%2f%zz&a=1#part"},
      {"https://a.example", Dictionary{{"a", 1}}, "https://a.example?a=1"},
      {"https://a.example/x?k=v", Dictionary{}, "https://a.example/x?k=v"},
      {"https://a.example/x?k=v", std::nullopt, "https://a.example/x?k=v"},
      {"../x", Dictionary{{"a", 1}}, "../x?a=1"},
  };
  for (const auto& row : kRows) {
    auto encoded =
        URLEncoding::queryString.encode(request(HTTPMethod::get, row.before), row.parameters);
    EXPECT_EQ(urlOf(encoded), row.after);
  }
}

TEST(URLEncodingTest, LeavesWhatTheCallerSet) {
  auto typed = request(HTTPMethod::post);
  typed.headerFields = {{"content-TYPE", "text/x-own"}};
  typed.httpBody = "mine";
  auto encoded = URLEncoding::httpBody.encode(typed, Dictionary{});
  EXPECT_EQ(encoded.headerFields, typed.headerFields);
  EXPECT_EQ(encoded.httpBody, "") << "an empty map is an empty body";
  EXPECT_EQ(URLEncoding::httpBody.encode(typed, std::nullopt).httpBody, "mine");
}

TEST(URLEncodingTest, NeedsAURLOnlyForAQuery) {
  URLRequest nowhere{.url = std::nullopt, .httpMethod = "POST"};
  reasonOf<Reason::MissingURL>([&] { URLEncoding::queryString.encode(nowhere, Dictionary{}); });
  EXPECT_EQ(URLEncoding::httpBody.encode(nowhere, Dictionary{{"a", 1}}).httpBody, "a=1");
  EXPECT_THROW(URLEncoding::httpBody.encode(Unbuildable(), std::nullopt), APIError);
}

TEST(URLEncodingTest, NoDepthExhaustsTheStackOfAThread) {
  constexpr int kPairs = 2'500;  // beyond what a walk with a call for each level would survive here
  std::string query;
  const Dictionary value{{"k", tests::nested(2 * kPairs, "end")}};
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstacksize(&attributes, 128UL << 10);
  std::function<void()> work = [&] { query = URLEncoding::httpBody.query(value); };
  pthread_t thread;
  auto run = [](void* argument) -> void* {
    (*static_cast<std::function<void()>*>(argument))();
    return nullptr;
  };
  ASSERT_EQ(pthread_create(&thread, &attributes, run, &work), 0);
  pthread_join(thread, nullptr);
  constexpr std::size_t kOfAPair = std::string_view("%5Bin%5D%5B%5D").size();
  EXPECT_EQ(query.size(), std::string_view("k=end").size() + kPairs * kOfAPair);
}

TEST(JSONEncodingTest, WritesTheBodyAndItsType) {
  auto encoded = JSONEncoding::defaultEncoding.encode(request(HTTPMethod::post),
                                                      Dictionary{{"b", 1.0}, {"a", List{"ü/"}}});
  EXPECT_EQ(encoded.httpBody, R"({"b":1.0,"a":["ü/"]})");
  EXPECT_EQ(encoded.headerFields, (platform::HeaderFields{{"Content-Type", "application/json"}}));
  EXPECT_EQ(
      JSONEncoding::prettyPrinted.encode(request(HTTPMethod::post), Dictionary{{"a", 1}}).httpBody,
      "{\n  \"a\": 1\n}");
  EXPECT_EQ(JSONEncoding::defaultEncoding.encode(encoded, std::nullopt).httpBody, encoded.httpBody);

  auto typed = request(HTTPMethod::post);
  typed.headerFields = {{"CONTENT-type", "application/vnd.own+json"}};
  EXPECT_EQ(JSONEncoding::defaultEncoding.encode(typed, Dictionary{}).headerFields,
            typed.headerFields);
}

TEST(JSONEncodingTest, TakesAnArrayOrAnyJSONValueAtTheTop) {
  auto bare = request(HTTPMethod::put);
  const JSONEncoding json;
  EXPECT_EQ(json.encodeWithArray(bare, List{1, "b", nullptr}).httpBody, R"([1,"b",null])");
  EXPECT_EQ(json.encodeWithArray(bare, std::nullopt).httpBody, std::nullopt);
  for (const auto& [value, text] : std::vector<std::pair<Value, std::string>>{
           {List{Dictionary{{"a", true}}}, R"([{"a":true}])"},
           {"x", R"("x")"},
           {7, "7"},
           {nullptr, "null"}}) {
    auto encoded = json.encodeWithJSONObject(bare, value);
    EXPECT_EQ(encoded.httpBody, text);
    EXPECT_EQ(headers(encoded).value("Content-Type"), "application/json");
  }
  EXPECT_TRUE(json.encodeWithJSONObject(bare, std::nullopt).headerFields.empty());
}

TEST(JSONEncodingTest, RefusesWhatJSONCannotHold) {
  const JSONEncoding json;
  auto bare = request(HTTPMethod::post);
  for (const Value& value : {Value(std::numeric_limits<double>::quiet_NaN()),
                             Value(-std::numeric_limits<double>::infinity()), Value("\xC3\x28"),
                             Value(Dictionary{{"\xff", 1}}), tests::nested(512)}) {
    for (const auto& encode : std::vector<std::function<void()>>{
             [&] { json.encode(bare, Dictionary{{"k", value}}); },
             [&] { json.encodeWithArray(bare, List{value}); },
             [&] { json.encodeWithJSONObject(bare, Value(List{value})); }}) {
      auto reason = reasonOf<Reason::JSONEncodingFailed>(encode);
      ASSERT_TRUE(reason.error);
      EXPECT_TRUE(dynamic_cast<const platform::JSONError*>(reason.error.get()));
    }
  }
  EXPECT_NO_THROW(json.encodeWithArray(bare, List{tests::nested(511)}));
  EXPECT_THROW(json.encode(Unbuildable(), std::nullopt), APIError);
  EXPECT_THROW(json.encodeWithArray(Unbuildable(), std::nullopt), APIError);
  EXPECT_THROW(json.encodeWithJSONObject(Unbuildable(), std::nullopt), APIError);
}

TEST(RequestConvertibleTest, HasAllItsPartsAndTakesADictionaryOrForJSONAList) {
  auto made = [](const Value& parameters, ParameterEncoding encoding,
                 const char* url = "https://a.example/x") {
    return RequestConvertible({.url = url,
                               .method = HTTPMethod::put,
                               .parameters = parameters,
                               .encoding = encoding,
                               .headers = HTTPHeaders{{"A", "b"}}})
        .asURLRequest();
  };
  auto whole = made(Dictionary(), URLEncoding());
  EXPECT_EQ(urlOf(whole) + " " + *whole.httpMethod, "https://a.example/x PUT");
  EXPECT_EQ(headers(whole).value("A"), "b");
  try {
    made(Dictionary(), URLEncoding(), "a b");
    ADD_FAILURE();
  } catch (const APIError& error) {
    EXPECT_TRUE(std::holds_alternative<APIError::InvalidURL>(error.kind()));
  }
  auto body = [&](const Value& parameters, ParameterEncoding encoding) {
    return made(parameters, encoding).httpBody;
  };
  EXPECT_EQ(body(Dictionary{{"a", 1}}, URLEncoding()), "a=1");
  EXPECT_EQ(body(List{1, 2}, JSONEncoding()), "[1,2]");
  reasonOf<Reason::CustomEncodingFailed>([&] { body(List{1}, URLEncoding()); });
  reasonOf<Reason::CustomEncodingFailed>([&] { body("text", JSONEncoding()); });
  reasonOf<Reason::CustomEncodingFailed>([&] { body(nullptr, JSONEncoding()); });
}

TEST(RequestConvertibleTest, WithoutParametersThereIsNoBody) {
  auto request = ParameterlessRequestConvertible("https://a.example", HTTPMethod::post,
                                                 HTTPHeaders{{"A", "b"}})
                     .asURLRequest();
  EXPECT_EQ(request.httpBody, std::nullopt);
  EXPECT_EQ(request.headerFields, (platform::HeaderFields{{"A", "b"}}));
  EXPECT_EQ(ParameterlessRequestConvertible("a b", HTTPMethod::get).urlRequest(), std::nullopt);
}

}  // namespace
}  // namespace quenwick

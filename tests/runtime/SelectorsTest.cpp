#include <algorithm>
#include <deque>
#include <map>

#include "tests/runtime/Host.h"

namespace quenwick::tests {
namespace {

namespace json = boost::json;

struct Case {
  std::string selector;
  std::string arguments;
  std::string result = "null";
};

constexpr auto kProduct = R"([{"id": 42, "price": 3.5}])";
constexpr auto kOrder = R"([{"id": "o-1", "products": [{"id": 1}]}])";

// The order counts: what one sets a later one reads.
const std::vector<Case> kCases = {
    {"enabledLogTypes", "[]", "3"},
    {"setEnabledLogTypes:", "[1]"},
    {"enabledLogTypes", "[]", "1"},
    {"setEnabledLogTypes:", "[3]"},
    {"shared", "[]", "1"},
    {"setShared:", R"([{"selector": "init", "arguments": []}])"},
    {"shared", "[]", "2"},
    {"setShared:", "[1]"},
    {"shared", "[]", "1"},
    {"setEventsEnabledHandler:", "[]"},
    {"startWithApiKey:deeplinkDomains:launchOptions:shouldRegisterForBehaviorEvents:"
     "deeplinkHandler:",
     R"([null, ["b.example"], {"UIApplicationLaunchOptionsURLKey": "https://x.example"}, false])"},
    {"startWithApiKey:deeplinkDomains:launchOptions:result:", R"(["demo-key", [], null])"},
    {"registerForBehaviorsWithApiKey:", R"(["demo-key"])", "3"},
    {"registerForBehaviorsFromPlist", "[]"},
    {"registerForBehaviorsFromPlistWithBundle:", R"([{"quen_wick_api_key": 7}])"},
    {"registerDeeplinkDomains:", R"([["a.example"]])"},
    {"registerDeeplinkDomainsFromPlist", "[]"},
    {"registerDeeplinkDomainsFromPlistWithBundle:",
     R"([{"quenwick_universal_link_domains": ["d.example"]}])"},
    {"domains", "[]", R"(["a.example","b.example","d.example"])"},
    {"canHandleURL:", R"(["https://a.example/p/go/1f"])", "true"},
    {"canHandleURL:", R"(["https://a.example/shop/1"])", "false"},
    {"addHandleablePaths:", R"([{"a.example": ["^https://a\\.example/shop/"], "b.example": []}])"},
    {"handleablePaths", "[]", R"({"a.example":["^https://a\\.example/shop/"],"b.example":[]})"},
    {"canHandleURL:", R"(["https://a.example/shop/1"])", "true"},
    {"removeHandleablePathsFor:", R"(["a.example"])"},
    {"handleablePaths", "[]", R"({"b.example":[]})"},
    {"clearHandleablePaths", "[]"},
    {"handleablePaths", "[]", "{}"},
    {"handleUniversalLinkWithUrl:", R"(["https://c.example/p/go/1f"])", "false"},
    {"handleUniversalLinkFrom:",
     R"([{"activityType": "NSUserActivityTypeBrowsingWeb", "webpageURL": "https://a.example/p/go/2"}])",
     "true"},
    {"handleUniversalLinkFrom:",
     R"([{"activityType": "NSUserActivityTypeBrowsingWeb", "webpageURL": "https://c.example"}])",
     "false"},
    {"handleUniversalLinkWith:",
     R"([{"userActivities": [{"activityType": "NSUserActivityTypeBrowsingWeb",
          "webpageURL": "https://a.example/p/go/2"}]}])",
     "true"},
    {"handleUniversalLinkWith:", R"([{"userActivities": [{"activityType": "other"}]}])", "false"},
    {"handleURLFromLaunchOptions:",
     R"([{"UIApplicationLaunchOptionsURLKey": "https://a.example/p/go/2"}])", "true"},
    {"handleURLFromLaunchOptions:", "[null]", "false"},
    {"checkPasteboardOnInstall", "[]"},
    {"checkPasteboardOnInstallWithCompletionHandler:", "[]"},
    {"showInAppMessageWith:hideCloseButton:handler:", R"(["https://c.example", false])"},
    {"showInAppBrowserWith:handler:", R"(["https://c.example"])"},
    {"pasteWithItemProviders:", R"([[{"text": "https://a.example/p/go/2"}]])", "true"},
    {"pasteWithItemProviders:", R"([[{"text": "no link"}, {"url": "https://c.example"}]])",
     "false"},
    {"resolveWithUrl:completion:", R"(["no link"])", "4"},
    {"resolveWithUrl:deadline:completion:", R"(["no link", 1.5])", "5"},
    {"storedDeeplink", "[]"},
    {"subscribeToStoredDeeplink:", "[]", "6"},
    {"cancel:", "[6]", "true"},
    {"cancel:", "[6]", "false"},
    {"qwU", "[]"},
    {"identifyUser", "[]"},
    {"setQWU:", R"(["alice \u00e9"])"},
    {"qwU", "[]", "\"alice \xC3\xA9\""},
    {"setQWU:", R"(["a\u0000b"])"},
    {"qwU", "[]", R"("a\u0000b")"},
    {"setQWU:", "[null]"},
    {"qwU", "[]"},
    {"identifyUser:", R"(["alice"])"},
    {"productViewed:", kProduct},
    {"productViewedWithProperties:", kProduct},
    {"productAdded:", kProduct},
    {"productAddedWithProperties:", kProduct},
    {"productRemoved:", kProduct},
    {"productRemovedWithProperties:", kProduct},
    {"orderCompleted:", kOrder},
    {"orderCompletedWithProperties:", kOrder},
    {"categoryViewed:", R"([{"id": 7}])"},
    {"categoryViewedWithCategory:", R"([{"id": 7}])"},
    {"productSearched:", R"([{"query": "boots"}])"},
    {"productSearchedWithProperties:", R"([{"query": "boots"}])"},
    {"logEventWithName:properties:", R"(["waved", {"twice": true}])"},
};

/// A refusal of the selector's, whose own colon stands before it.
std::string said(const std::string& selector, const std::string& fault) {
  return selector + (selector.ends_with(':') ? " " : ": ") + fault;
}

class SelectorsTest : public RuntimeTest {
 protected:
  void SetUp() override {
    configureAgainstSandbox();
    auto listed = json::parse(Library::shared().taken(Library::shared().selectors()));
    for (const auto& entry : listed.at("selectors").as_array()) {
      list_[entry.at("selector").as_string().c_str()] = entry.as_object();
    }
  }

  bool takesCallback(const std::string& selector) {
    return list_.at(selector).contains("callback");
  }

  Performed performWith(const std::string& selector, const std::string& arguments,
                        bool withCallback) {
    if (!withCallback) return perform(selector, arguments);
    auto callback = recorders_.emplace_back().callback();
    return perform(selector, arguments, &callback);
  }

  std::map<std::string, json::object> list_;
  std::deque<Recorder> recorders_;
};

TEST_F(SelectorsTest, EachIsListedWithOneArgumentForEachColon) {
  std::map<std::string, json::object> tried;
  for (const auto& each : kCases) tried[each.selector];
  for (const auto& [selector, entry] : list_) {
    auto taken = entry.at("arguments").as_array().size() + entry.contains("callback");
    EXPECT_EQ(taken, std::ranges::count(selector, ':')) << selector;
    EXPECT_EQ(tried.erase(selector), 1U) << selector << " is not tried";
  }
  EXPECT_TRUE(tried.empty()) << tried.begin()->first << " is not listed";
}

TEST_F(SelectorsTest, EachAnswersWhatItsOperationYields) {
  for (const auto& [selector, arguments, result] : kCases) {
    SCOPED_TRACE(selector + arguments);
    EXPECT_EQ(performWith(selector, arguments, takesCallback(selector)), (Performed{true, result}));
  }
  EXPECT_TRUE(Library::shared().shutdown(30'000));
  for (const auto& recorder : recorders_) EXPECT_EQ(recorder.destroyed(), 1);
}

TEST_F(SelectorsTest, WrongArgumentsAreRefusedWithTheirPlace) {
  std::map<std::string, json::array> right;
  for (const auto& each : kCases) right[each.selector] = json::parse(each.arguments).as_array();
  for (const auto& [selector, entry] : list_) {
    bool withCallback = takesCallback(selector);
    auto refusal = [&](const json::array& arguments, bool isCallbackGiven) {
      auto performed = performWith(selector, json::serialize(arguments), isCallbackGiven);
      return performed.isDone ? "done: " + performed.text : performed.text;
    };
    auto more = right[selector];
    more.push_back(nullptr);
    EXPECT_TRUE(refusal(more, withCallback).starts_with(said(selector, "takes "))) << selector;
    bool isNeeded = withCallback && entry.at("callback").at("isRequired").as_bool();
    if (isNeeded || !withCallback) {
      EXPECT_TRUE(refusal(right[selector], !withCallback)
                      .starts_with(said(selector, isNeeded ? "needs a" : "takes no callback")));
    }
    for (std::size_t i = 0; i < right[selector].size(); ++i) {
      const auto& parameter = entry.at("arguments").at(i);
      std::string kind(parameter.at("kind").as_string());
      auto wrong = right[selector];
      wrong[i] = 7;
      if (kind.starts_with("integer") || kind.starts_with("number") || kind == "log types") {
        wrong[i] = "7";
      }
      auto place = selector + ", argument " + std::to_string(i + 1) + " (" +
                   parameter.at("name").as_string().c_str() + "): must be ";
      EXPECT_TRUE(refusal(wrong, withCallback).starts_with(place)) << place;
    }
  }
  for (const auto& recorder : recorders_) {
    EXPECT_EQ(recorder.destroyed(), 1);
  }
}

TEST_F(SelectorsTest, AnyValueInAnyPlaceIsAnsweredOrRefused) {
  expectRefusals();
  std::map<std::string, json::array> right;
  for (const auto& each : kCases) right[each.selector] = json::parse(each.arguments).as_array();
  auto values = json::parse(R"([null, true, "", "\u0000", "\u001b[31m\r\n", -1, 1e308,
    18446744073709551615, -9223372036854775808, [], {}, [[[[[[]]]], {"": [{}]}]], [null, "", 7],
    {"": ""}, {"selector": "init", "arguments": [null]}])")
                    .as_array();
  values.push_back(json::string(1 << 20, 'x'));
  for (const auto& [selector, entry] : list_) {
    EXPECT_FALSE(perform(selector.c_str(), nullptr).isDone);
    for (std::size_t i = 0; i < right[selector].size(); ++i) {
      for (const auto& value : values) {
        auto arguments = right[selector];
        arguments[i] = value;
        auto performed = performWith(selector, json::serialize(arguments), takesCallback(selector));
        json::error_code error;
        if (performed.isDone) json::parse(performed.text, error);
        EXPECT_TRUE(!performed.text.empty() && !error) << selector << performed.text;
      }
    }
  }
  EXPECT_EQ(perform("canHandleURL:", R"(["https://links.shop.example/p/go/1f"])").isDone, true);
}

}  // namespace
}  // namespace quenwick::tests

// Whatever a host hands in: nothing throws, nothing blocks, and the library works on.

#include "tests/client/ClientHost.h"

namespace quenwick::tests {
namespace {

using namespace std::chrono_literals;

struct Call {
  const char* name;
  std::function<void(const std::string&)> with;
};

constexpr auto kKey = UIApplicationLaunchOptionsURLKey;

const std::vector<Call> kCalls = {
    {"start",
     [](auto& text) {
       QWClient::start({.apiKey = text,
                        .deeplinkDomains = {text},
                        .launchOptions = {{kKey, text}, {text, text}}});
     }},
    {"startWithResult",
     [](auto& text) {
       QWClient::startWithResult({.apiKey = text, .launchOptions = {{kKey, Dictionary{}}}});
     }},
    {"registerForBehaviors", [](auto& text) { QWClient::registerForBehaviors(text); }},
    {"registerDeeplinkDomains",
     [](auto& text) { QWClient::registerDeeplinkDomains({text, "", text}); }},
    {"canHandleURL", [](auto& text) { QWClient::canHandleURL(text); }},
    {"canHandleURL of a host", [](auto& text) { QWClient::canHandleURL("https://" + text); }},
    {"handleUniversalLink",
     [](auto& text) { QWClient::handleUniversalLink("https://l.example/p/go/" + text); }},
    {"handleUniversalLink of an activity",
     [](auto& text) {
       QWClient::handleUniversalLink(NSUserActivity{text, text});
       QWClient::handleUniversalLink(NSUserActivity{NSUserActivityTypeBrowsingWeb, text});
     }},
    {"handleURLFromLaunchOptions",
     [](auto& text) { QWClient::handleURLFromLaunchOptions({{kKey, text}, {text, nullptr}}); }},
    {"paste", [](auto& text) { QWClient::paste({{}, {.url = text, .text = text}}); }},
    {"resolve",
     [](auto& text) {
       QWClient::resolve(text, nullptr);
       QWClient::resolve("https://l.example/" + text, [](const auto&) {}, {.deadline = 0s});
     }},
    {"resolve as a future", [](auto& text) { QWClient::resolve(text).get(); }},
    {"addHandleablePaths",
     [](auto& text) { QWClient::addHandleablePaths({{text, {text}}, {"l.example", {text}}}); }},
    {"canHandleURL by such a pattern",
     [](auto&) { QWClient::canHandleURL("https://l.example/" + std::string(10'000, 'x')); }},
    {"removeHandleablePaths", [](auto& text) { QWClient::removeHandleablePaths(text); }},
    {"setQWU", [](auto& text) { QWClient::setQWU(text); }},
    {"identifyUser", [](auto& text) { QWClient::identifyUser(text); }},
    {"events by dictionary",
     [](auto& text) {
       Dictionary properties{{"id", text}, {"query", text}, {text, text}};
       QWClient::productViewed(properties);
       QWClient::productAdded(properties);
       QWClient::productRemoved(properties);
       QWClient::categoryViewed(properties);
       QWClient::productSearched(properties);
       QWClient::orderCompleted({{"products", List{properties}}});
       QWClient::logEvent(text, properties);
     }},
    {"events by record",
     [](auto& text) {
       QWClient::productViewed(ProductProperties{.id = text, .title = text});
       QWClient::categoryViewed(ProductCategory{.id = text});
       QWClient::productSearched(ProductSearchedProperties{.query = text});
     }},
    {"in-app views",
     [](auto& text) {
       QWClient::showInAppMessage(text);
       QWClient::showInAppBrowser("https://" + text);
     }},
    {"configure", [](auto& text) { configure({.serviceURL = text, .bundleIdentifier = text}); }},
};

struct Text {
  std::string name;
  std::string text;
  friend void PrintTo(const Text& each, std::ostream* out) { *out << each.name; }
};

constexpr std::size_t kMegabyte = 1 << 20;
const std::vector<Text> kTexts = {
    {"Empty", ""},
    {"NotUTF8", "\xff\xfe\xc3("},
    {"AZeroByte", std::string("a\0b", 3)},
    {"ControlsAndBlanks", "\r\n\x1b[31m \t"},
    {"AMegabyte", std::string(kMegabyte, 'x')},
    {"AMegabyteThatIsNoUTF8", std::string(kMegabyte, '\xff')},
    {"AMegabyteOfBrackets", std::string(kMegabyte, '(')},
    {"AMegabyteOfChoices",
     [] {
       std::string text = "(";
       while (text.size() < kMegabyte) text += "a+|";
       return text + ")+$";
     }()},
    {"ARunawayPattern", "(x+x+)+y"},
};

class InputTest : public ClientHost, public testing::WithParamInterface<Text> {};

TEST_P(InputTest, EndsNothingAndHoldsNobodyUp) {
  service_.expectRefusals();  // of texts that are no key of the service's
  QWClient::registerDeeplinkDomains({"l.example"});
  Collected<int> enabled;
  QWClient::setEventsEnabledHandler([&] { enabled.add(1); });
  QWClient::registerForBehaviors("key");
  ASSERT_EQ(enabled.wait(1).size(), 1U);
  for (const auto& call : kCalls) {
    auto begin = std::chrono::steady_clock::now();
    EXPECT_NO_THROW(call.with(GetParam().text)) << call.name;
    EXPECT_LT(std::chrono::steady_clock::now() - begin, 5s) << call.name;
  }
  QWClient::start({.shouldRegisterForBehaviorEvents = false, .deeplinkHandler = collect()});
  EXPECT_TRUE(QWClient::handleUniversalLink("https://l.example/p/go/1f"));
  EXPECT_TRUE(results_.waitFor([](const auto& link) { return link == "shopapp://product/42"; }));
  EXPECT_TRUE(QWClient::flush(60s));
}

INSTANTIATE_TEST_SUITE_P(OfAnyKind, InputTest, testing::ValuesIn(kTexts),
                         [](const auto& each) { return each.param.name; });

}  // namespace
}  // namespace quenwick::tests

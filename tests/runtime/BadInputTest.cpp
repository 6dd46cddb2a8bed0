#include "tests/runtime/Host.h"

namespace quenwick::tests {
namespace {

using BadInputTest = RuntimeTest;

constexpr std::size_t kMegabyte = 1'000'000;

TEST_F(BadInputTest, IsRefusedWithATextThatSaysWhatAndWhere) {
  struct Case {
    const char* selector;
    const char* arguments;
    std::string expected;
  };
  const std::string broken = "[\"\xC3\x28\"]";
  const std::string deep(100'000, '[');
  const std::string megabyte(kMegabyte, 'x');
  const auto viewed = "productViewedWithProperties:";
  const std::string place = "productViewedWithProperties:, argument 1 (properties)";
  const std::vector<Case> cases = {
      {nullptr, "[]", "the selector is a null pointer"},
      {"qwU", nullptr, "the text of the arguments is a null pointer"},
      {"", "[]", "there is no selector "},
      {"qwu", "[]", "there is no selector qwu"},
      {"q\xFF\nU", "[]", "there is no selector q\\xFF\\nU"},
      {megabyte.c_str(), "[]", "there is no selector " + std::string(200, 'x')},
      {"qwU", "", "qwU: the text is not JSON: incomplete JSON"},
      {"qwU", "[", "qwU: the text is not JSON: incomplete JSON"},
      {"qwU", "[] []", "qwU: the text is not JSON: extra data"},
      {"qwU", "{}", "qwU: must be a list of arguments and is a dictionary"},
      {"qwU", "[1]", "qwU: takes 0 arguments and was given 1"},
      {"qwU", deep.c_str(), "qwU: the text is not JSON: too deep"},
      {"setQWU:", broken.c_str(), "setQWU: the text is not JSON: syntax error"},
      {"setQWU:", "[1]", "setQWU:, argument 1 (value): must be text and is an integer"},
      {"setEnabledLogTypes:", "[4]",
       "setEnabledLogTypes:, argument 1 (types): must be from 0 to 3"},
      {"cancel:", "[7]", "cancel: nothing has the number 7"},
      {"cancel:", "[18446744073709551615]",
       "cancel:, argument 1 (handle): must fit a signed integer of 64 bits"},
      {"setShared:", "[{}]",
       "setShared:, argument 1 (client): must be a client's number, or {\"selector\": \"init\", "
       "\"arguments\": []}"},
      {"setShared:", "[7]",
       "setShared:, argument 1 (client): must be a client's number, or {\"selector\": \"init\", "
       "\"arguments\": []}"},
      {"registerDeeplinkDomains:", R"([["a", 1]])",
       "registerDeeplinkDomains:, argument 1 (domains), element 2: must be text and is an integer"},
      {"addHandleablePaths:", R"([{"a": ["b", null]}])",
       "addHandleablePaths:, argument 1 (paths), key \"a\", element 2: must be text and is null"},
      {"handleUniversalLinkFrom:", R"([{"activityType": "a", "type": 1}])",
       "handleUniversalLinkFrom:, argument 1 (activity): NSUserActivity has no key \"type\""},
      {viewed, R"([{"title": "no id"}])", place + ": makes no ProductProperties; the log says why"},
      {viewed, R"([{"selector": "initWithName:", "arguments": []}])",
       place + ": ProductProperties has no initialiser initWithName:"},
      {viewed, R"([{"selector": "initWithDict:", "arguments": 1}])",
       place + ", key \"arguments\": must be a list and is an integer"},
      {viewed, R"([{"selector": "initWithDict:", "arguments": [[]]}])",
       place + ", initWithDict:, argument 1 (dict): must be dictionary and is a list"},
      {viewed,
       R"([{"selector": "initWithId:title:intPrice:url:categories:meta:",)"
       R"( "arguments": ["1", null, 1.5, null, null, null]}])",
       place + ", initWithId:title:intPrice:url:categories:meta:, argument 3 (intPrice): " +
           "must be integer and is a number"},
      // The first of two faults.
      {"logEventWithName:properties:", "[1, 2]",
       "logEventWithName:properties:, argument 1 (name): must be text and is an integer"},
      {"orderCompletedWithProperties:",
       R"([{"selector": "initWithId:floatRevenue:products:", "arguments": ["1", null, [)"
       R"({"selector": "initWithId:title:floatPrice:url:quantity:",)"
       R"( "arguments": ["1", null, "5", 7, 1]}]]}])",
       "orderCompletedWithProperties:, argument 1 (properties), "
       "initWithId:floatRevenue:products:, argument 3 (products), element 1, "
       "initWithId:title:floatPrice:url:quantity:, argument 3 (floatPrice): "
       "must be number and is a text"},
  };
  configureAgainstSandbox();
  for (const auto& each : cases) {
    EXPECT_EQ(perform(each.selector, each.arguments), (Performed{false, each.expected}));
  }
  EXPECT_FALSE(Library::shared().perform("qwu", "[]", nullptr, nullptr));
  quenwick_callback empty = opened_.callback();
  empty.call = nullptr;
  EXPECT_EQ(perform(kStart, "[null, [], null]", &empty).text, "the callback has no function");
  EXPECT_EQ(opened_.destroyed(), 1);
}

TEST_F(BadInputTest, AMegabyteOfTextIsTakenByEverySelectorThatTakesText) {
  configureAgainstSandbox();
  const std::string text = "\"" + std::string(kMegabyte, 'x') + "\"";
  for (const auto* selector : {"canHandleURL:", "handleUniversalLinkWithUrl:"}) {
    EXPECT_EQ(perform(selector, "[" + text + "]"), (Performed{true, "false"}));
  }
  EXPECT_EQ(perform("setQWU:", "[" + text + "]"), (Performed{true, "null"}));
  EXPECT_EQ(perform("qwU", "[]").text, text);
  EXPECT_TRUE(perform("productViewed:", "[{\"id\": " + text + "}]").isDone);
}

TEST_F(BadInputTest, AConfigurationOfNoUseIsRefusedAndLetsGoOfTheHost) {
  struct Case {
    const char* json;
    std::string expected;
  };
  const std::vector<Case> cases = {
      {nullptr, "the configuration is a null pointer"},
      {"{", "the text is not JSON: incomplete JSON"},
      {"[]", "must be dictionary and is a list"},
      {R"({"serviceUrl": "https://a.example"})", "the configuration has no key \"serviceUrl\""},
      {R"({"serviceURL": "nowhere"})", "serviceURL is no URL of the web"},
      {R"({"bundleVersion": 2})", "key \"bundleVersion\": must be text and is an integer"},
      {R"({"home": "a\u0000b"})", "key \"home\": is no path"},
      {R"({"keychain": "Keyring"})", "key \"keychain\": is no kind of keychain"},
      {R"({"connectTo": [{"toAddress": "127.0.0.1", "toPort": 65536}]})",
       "key \"connectTo\", element 1, key \"toPort\": is no port"},
      {R"({"connectTo": [{"host": "a.example"}]})", "an entry of connectTo has no address"},
  };
  auto executor = loop_.executor();
  auto log = lines_.log();
  int refused = 0;
  for (const auto& each : cases) {
    EXPECT_EQ(configure(each.json, &executor, &log), each.expected);
    ++refused;
    EXPECT_EQ(loop_.destroyed(), refused);
    EXPECT_EQ(lines_.destroyed(), refused);
  }
  executor.post = nullptr;
  EXPECT_EQ(configure("{}", &executor, &log), "the executor has no function");
  EXPECT_EQ(lines_.destroyed(), refused + 1);
  configureAgainstSandbox();
  EXPECT_EQ(perform("qwU", "[]"), (Performed{true, "null"}));
  EXPECT_EQ(configure("{}"), "the library is in use already");
}

}  // namespace
}  // namespace quenwick::tests

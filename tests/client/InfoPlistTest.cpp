#include <filesystem>
#include <fstream>

#include "quenwick/state/Analytics.h"
#include "tests/client/ClientHost.h"

namespace quenwick::tests {
namespace {

/// An Info.plist, and what a host with it gets.
struct Case {
  std::string name;
  std::string content;
  std::set<std::string> domains;
  int missedKeys = 0;
  bool hasKey = false;
  bool isDamaged = false;
  friend void PrintTo(const Case& each, std::ostream* out) { *out << each.name; }
};

std::string list(const std::string& entries) {
  return R"(<?xml version="1.0" encoding="UTF-8"?><plist version="1.0"><dict>)" + entries +
         "</dict></plist>";
}
std::string domains(const std::string& key, const std::string& content) {
  return "<key>" + key + "</key>" + content;
}

constexpr auto kText = "<array><string>l.example</string><string>m.example</string></array>";
const std::set<std::string> kBoth = {"l.example", "m.example"};

const std::vector<Case> kCases = {
    {"TheFirstSpelling", list(domains("quen_wick_universal_link_domains", kText)), kBoth},
    {"TheSecondSpelling", list(domains("quene_wick_universal_link_domains", kText)), kBoth, 1},
    {"TheThirdSpelling", list(domains("quenwick_universal_link_domains", kText)), kBoth, 2},
    {"TheFourthSpelling", list(domains("quenewick_universal_link_domains", kText)), kBoth, 3},
    {"TheFirstListOfTextsEndsTheSearch",
     list(domains("quenwick_universal_link_domains",
                  "<array><string>late.example</string></array>") +
          domains("quene_wick_universal_link_domains", kText)),
     kBoth, 1},
    {"WhatIsNoListOfTextsIsPassedOver",
     list(domains("quen_wick_universal_link_domains", "<string>l.example</string>") +
          domains("quene_wick_universal_link_domains",
                  "<array><string>l.example</string><integer>7</integer></array>") +
          domains("quenwick_universal_link_domains", kText)),
     kBoth, 2},
    {"AnEmptyListEndsTheSearch",
     list(domains("quen_wick_universal_link_domains", "<array/>") +
          domains("quene_wick_universal_link_domains", kText)),
     {}},
    {"AKeyThatIsNoTextIsNone", list("<key>quen_wick_api_key</key><integer>7</integer>"), {}, 4},
    {"AnotherSpellingOfTheKeyIsNone",
     list("<key>quenwick_api_key</key><string>key</string>"),
     {},
     4},
    {"TheKeyIsTaken", list("<key>quen_wick_api_key</key><string>key</string>"), {}, 4, true},
    {"AnEmptyFileIsDamaged", "", {}, 4, false, true},
    {"AFileThatBreaksOffIsDamaged", list(kText).substr(0, 90), {}, 4, false, true},
    {"AListInPlaceOfADictionaryIsDamaged",
     R"(<plist version="1.0"><array><string>a</string></array></plist>)",
     {},
     4,
     false,
     true},
    {"AnythingElseIsDamaged", std::string("bplist00\xff\xfe\0\x01", 12), {}, 4, false, true},
};

class InfoPlistTest : public ClientHost, public testing::WithParamInterface<Case> {
 protected:
  void SetUp() override {}
  void configureWith(const std::filesystem::path& file) {
    auto own = configuration();
    own.infoPlist = file;
    ASSERT_TRUE(configure(own));
  }
};

TEST_P(InfoPlistTest, SaysDomainsAndKey) {
  const auto& expected = GetParam();
  auto file = home_.path() / "Info.plist";
  std::ofstream(file, std::ios::binary) << expected.content;
  configureWith(file);
  Collected<int> enabled;
  QWClient::setEventsEnabledHandler([&] { enabled.add(1); });
  QWClient::start({.deeplinkDomains = {"given.example"}});
  auto all = expected.domains;
  all.insert("given.example");
  EXPECT_EQ(QWClient::domains(), all);
  EXPECT_EQ(logged("Could not find domains in Info.plist for key - "), expected.missedKeys);
  EXPECT_EQ(logged("error: Behavioral Verification failed: API Key Not Found"), !expected.hasKey);
  EXPECT_EQ(logged("Info.plist is damaged"), expected.isDamaged);
  if (expected.hasKey) EXPECT_EQ(enabled.wait(1).size(), 1U);
  QWClient::setEventsEnabledHandler(nullptr);
}

INSTANTIATE_TEST_SUITE_P(Each, InfoPlistTest, testing::ValuesIn(kCases),
                         [](const auto& each) { return each.param.name; });

TEST_F(InfoPlistTest, AnApplicationThatDoesNotSayWhoItIsIsUnknown) {
  auto own = configuration();
  own.bundleIdentifier.reset();
  own.bundleVersion.reset();
  ASSERT_TRUE(configure(own));
  auto datapoints = Analytics::shared().datapoints();
  EXPECT_EQ(datapoints["bundle_identifier"], "unknown");
  EXPECT_EQ(datapoints["app_version_number"], "0.0.0");
}

TEST_F(InfoPlistTest, AFolderInItsPlaceIsOneLine) {
  configureWith(home_.path());
  QWClient::start({.deeplinkDomains = {"l.example"}});
  EXPECT_EQ(logged("error: The configured Info.plist cannot be read"), 1);
  EXPECT_TRUE(QWClient::canHandleURL("https://l.example/p/go/1f"));
}

}  // namespace
}  // namespace quenwick::tests

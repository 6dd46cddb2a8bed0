#include "quenwick/platform/System.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include "quenwick/platform/Bundle.h"
#include "quenwick/platform/Calendar.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/UUID.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::platform {
namespace {

TEST(System, PreferredLanguagesHonourTheUsersList) {
  setenv("LC_ALL", "en_US.UTF-8", 1);
  setenv("LANGUAGE", "de_AT:fr:C", 1);
  EXPECT_EQ(System::preferredLanguages(), (std::vector<std::string>{"de-AT", "de", "fr"}));
  setenv("LANGUAGE", "", 1);
  setenv("LC_ALL", "C", 1);
  EXPECT_TRUE(System::preferredLanguages().empty());
}

// Over the last Sunday of October a calendar day has 25 hours there.
TEST(Calendar, DaysAreCalendarDaysAcrossAChangeOfTheClocks) {
  setenv("TZ", "Europe/Vienna", 1);
  EXPECT_EQ(TimeZone::currentIdentifier(), "Europe/Vienna");
  Date before{std::chrono::seconds(1'792'749'600)};  // 23 October 2026, 12:00 there
  auto after = Calendar::addingDays(4, before + std::chrono::microseconds(250'000));
  ASSERT_TRUE(after);
  EXPECT_EQ(*after - before, std::chrono::hours(4 * 24 + 1) + std::chrono::microseconds(250'000));
}

TEST(TimeZone, IsNamedHoweverItIsTold) {
  tests::TemporaryDirectory folder;
  auto link = folder.path() / "mine";
  std::filesystem::create_symlink("/usr/share/zoneinfo/Asia/Tokyo", link);
  for (const auto& [told, name] : std::initializer_list<std::pair<std::string, std::string>>{
           {"Europe/Berlin", "Europe/Berlin"},
           {":Europe/Berlin", "Europe/Berlin"},
           {"posix/Europe/Paris", "Europe/Paris"},
           {"/usr/share/zoneinfo/Asia/Tokyo", "Asia/Tokyo"},
           {":/usr/share/zoneinfo/right/Asia/Tokyo", "Asia/Tokyo"},
           {link.string(), "Asia/Tokyo"},
           {"Etc/GMT+5", "Etc/GMT+5"},
           {"UTC0", "UTC"},
           {"CET-1CEST", "UTC"},
           {"Europe", "UTC"},
           {"Nowhere/Land", "UTC"}}) {
    setenv("TZ", told.c_str(), 1);
    EXPECT_EQ(TimeZone::currentIdentifier(), name) << told;
  }
  unsetenv("TZ");
  auto system = TimeZone::currentIdentifier();
  setenv("TZ", ":/etc/localtime", 1);
  EXPECT_EQ(TimeZone::currentIdentifier(), system);
}

TEST(UUID, IsReadInEitherCaseAndKeptInUpperCase) {
  auto random = UUID::random();
  EXPECT_EQ(UUID::parse(random.uuidString()), random);
  EXPECT_EQ(UUID::parse("7d444840-9dc0-11d1-b245-5ffdce74fad2")->uuidString(),
            "7D444840-9DC0-11D1-B245-5FFDCE74FAD2");
  for (auto text : {"", "7d4448409dc011d1b2455ffdce74fad2", "not-a-uuid"}) {
    EXPECT_FALSE(UUID::parse(text)) << text;
  }
}

TEST(Bundle, ReadsPropertyListsAndSurvivesDamagedOnes) {
  Bundle bundle(R"(<?xml version="1.0"?><plist version="1.0"><dict>
    <key>CFBundleIdentifier</key><string>com.example.shop</string>
    <key>quen_wick_api_key</key><integer>7</integer>
    <key>domains</key><array><string>a</string><true/><real>1.5</real></array>
    </dict></plist>)",
                {{"Model.momd", "bytes"}});
  EXPECT_EQ(bundle.text("CFBundleIdentifier"), "com.example.shop");
  EXPECT_EQ(bundle.text("quen_wick_api_key"), std::nullopt) << "no text";
  EXPECT_EQ(*bundle.infoDictionary().find("domains"), Value(List{"a", true, 1.5}));
  EXPECT_EQ(*bundle.resource("Model", "momd"), "bytes");
  EXPECT_EQ(bundle.resource("Model", "txt"), nullptr);
  for (std::string_view damaged : {"", "bplist00", "<plist><dict>", "\xff\xff\xff\xff\xff\xff"}) {
    EXPECT_TRUE(Bundle(damaged, {}).infoDictionary().empty());
  }
}

TEST(HostConfiguration, IsTakenOnceAndNamesTheFolderOfAllState) {
  auto settings = settingsDirectory();
  EXPECT_EQ(settings.filename(), "com.example.tests");
  EXPECT_EQ(std::filesystem::status(settings).permissions(), std::filesystem::perms::owner_all);
  EXPECT_FALSE(configureHost({.bundleIdentifier = "com.example.late"}));
  EXPECT_EQ(Bundle::main().text("CFBundleShortVersionString"), "2.5.0");
}

}  // namespace
}  // namespace quenwick::platform

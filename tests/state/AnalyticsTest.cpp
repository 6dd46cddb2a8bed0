#include "quenwick/state/Analytics.h"

#include <gtest/gtest.h>

#include <future>
#include <map>
#include <regex>

#include "quenwick/CoreData/CoreDataManager.h"
#include "quenwick/CoreData/DeeplinkQWU.h"
#include "quenwick/CoreData/ManagedObjectType.h"
#include "quenwick/platform/GenerationCounter.h"
#include "quenwick/platform/ManagedObjectContext.h"
#include "quenwick/platform/SQLiteDatabase.h"
#include "quenwick/platform/Writer.h"
#include "tests/support/ManualClock.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick {
namespace {

using namespace std::chrono_literals;

class AnalyticsTest : public testing::Test {
 protected:
  platform::UserDefaults& open() { return platform::UserDefaults::make(file_); }

  /// The identifiers of links that the store has, and when each was last seen.
  static std::multimap<std::string, platform::Date> notedLinks() {
    std::multimap<std::string, platform::Date> noted;
    auto context = CoreDataManager::shared().backgroundContext();
    context->performAndWait([&] {
      for (auto* record : fetch<DeeplinkQWU>(*context)) {
        noted.emplace(*record->value(), *record->lastSeenAt());
      }
    });
    return noted;
  }

  tests::TemporaryDirectory folder_;
  std::filesystem::path file_ = folder_.path() / "preferences.sqlite";
  std::shared_ptr<tests::ManualClock> clock_ =
      std::make_shared<tests::ManualClock>(platform::Date(1'700'000'000'987'654us));
  platform::UserDefaults& defaults_ = open();
  Analytics analytics_{defaults_, clock_};
};

TEST_F(AnalyticsTest, TheFirstReadOfTheInstallsIdentifierMakesItForGood) {
  EXPECT_FALSE(analytics_.isFirstInstall());
  auto made = analytics_.sdkID();
  EXPECT_TRUE(analytics_.isFirstInstall());
  EXPECT_EQ(analytics_.sdkID(), made);
  EXPECT_TRUE(analytics_.isFirstInstall());
  analytics_.clearFirstInstallFlag();
  EXPECT_FALSE(analytics_.isFirstInstall());

  Analytics next(open(), clock_);  // on disk already, without any waiting
  EXPECT_EQ(next.sdkID(), made);
  EXPECT_FALSE(next.isFirstInstall());

  defaults_.setObject(std::string("no identifier"), "com.quenwick.sdk.sdkID");
  EXPECT_NE(analytics_.sdkID(), made);
  EXPECT_TRUE(analytics_.isFirstInstall());
}

TEST_F(AnalyticsTest, AnythingElseInTheirPlaceIsReplacedByIdentifiersThatStay) {
  for (const char* strange : {"1, 7", "5, x'ff00'", "9, 'of a kind to come'"}) {
    analytics_.sdkID();
    analytics_.anonymousID();
    defaults_.synchronize();
    platform::SQLiteDatabase(file_).run("UPDATE settings SET (kind, value) = (" +
                                        std::string(strange) + ") WHERE key LIKE '%ID'");
    Analytics next(open(), clock_);
    auto made = next.sdkID();
    auto anonymous = next.anonymousID();
    EXPECT_TRUE(next.isFirstInstall()) << strange;
    EXPECT_EQ(next.anonymousID(), anonymous) << strange;
    defaults_.synchronize();

    Analytics afterwards(open(), clock_);
    EXPECT_EQ(afterwards.sdkID(), made) << strange;
    EXPECT_EQ(afterwards.anonymousID(), anonymous) << strange;
    EXPECT_FALSE(afterwards.isFirstInstall()) << strange;
  }
}

TEST_F(AnalyticsTest, TheAnonymousIdentifierIsMadeOnceFromWholeSeconds) {
  auto made = analytics_.anonymousID();
  EXPECT_TRUE(std::regex_match(made, std::regex("anon-1700000000000-[1-9][0-9]{0,10}"))) << made;
  clock_->advance(24h);
  EXPECT_EQ(analytics_.anonymousID(), made);
  defaults_.removeObject("com.quenwick.sdk.anonymousID");
  EXPECT_NE(analytics_.anonymousID(), made);
}

TEST_F(AnalyticsTest, TheHostsLinkUserValueStandsBeforeThatOfALink) {
  std::vector<std::optional<std::string>> seen;
  auto subscription = analytics_.qwUChanges().subscribe([&](const auto& v) { seen.push_back(v); });
  analytics_.setQWUDeeplink("link", nullptr);
  EXPECT_EQ(analytics_.qwu(), "link");
  analytics_.setQWU("host");
  EXPECT_EQ(analytics_.qwu(), "host");
  EXPECT_EQ(defaults_.object("com.quenwick.sdk.qwu"), platform::DefaultsValue("host"));
  EXPECT_EQ(analytics_.qwuDeeplink(), "link");
  analytics_.setQWU(std::nullopt);
  EXPECT_EQ(analytics_.qwu(), "link");
  EXPECT_EQ(defaults_.object("com.quenwick.sdk.qwu"), std::nullopt);
  EXPECT_EQ(seen, (std::vector<std::optional<std::string>>{std::nullopt, "host", std::nullopt}));
}

TEST_F(AnalyticsTest, TheRulesKeyHoldsForFourCalendarDays) {
  setenv("TZ", "UTC", 1);
  analytics_.setRulesPicKey("deadbeef");
  EXPECT_EQ(defaults_.object("com.quenwick.sdk.rp_key_expires_at"),
            platform::DefaultsValue(1'700'000'000.987654 + 4 * 86'400));
  clock_->advance(4 * 24h - 1s);
  EXPECT_EQ(analytics_.rulesPicKey(), "deadbeef");
  std::vector<std::optional<std::string>> seen;
  auto subscription =
      analytics_.rulesPicKeyChanges().subscribe([&](const auto& v) { seen.push_back(v); });
  clock_->advance(1s);
  EXPECT_EQ(analytics_.rulesPicKey(), std::nullopt) << "an expiry that is now is past";
  EXPECT_EQ(seen, (std::vector<std::optional<std::string>>{"deadbeef", std::nullopt}));
  EXPECT_EQ(defaults_.object("com.quenwick.sdk.rp_key"), std::nullopt);
  EXPECT_EQ(defaults_.object("com.quenwick.sdk.rp_key_expires_at"), std::nullopt);
}

TEST_F(AnalyticsTest, AKeyWithoutAnExpiryIsNoKey) {
  defaults_.setObject(std::string("deadbeef"), "com.quenwick.sdk.rp_key");
  EXPECT_EQ(analytics_.rulesPicKey(), std::nullopt);
  EXPECT_EQ(defaults_.object("com.quenwick.sdk.rp_key"), std::nullopt);
}

// An order of an install without a rules key costs no write.
TEST_F(AnalyticsTest, ToFindNoRulesKeyWritesNothing) {
  analytics_.anonymousID();
  defaults_.synchronize();
  platform::GenerationCounter writes(file_.string() + ".generation");
  auto before = writes.value();
  EXPECT_EQ(analytics_.rulesPicKey(), std::nullopt);
  defaults_.synchronize();
  EXPECT_EQ(writes.value(), before);
}

TEST_F(AnalyticsTest, ALinksIdentifierIsNotedOnceWithTheTimeItWasLastSeen) {
  for (auto value : {"alice", "bob", "alice"}) {
    analytics_.setQWUDeeplink(value, CoreDataManager::shared().backgroundContext());
    clock_->advance(1s);
  }
  auto seen = notedLinks();
  ASSERT_TRUE(seen.size() == 2 && seen.contains("alice") && seen.contains("bob"));
  EXPECT_EQ(seen.find("alice")->second - seen.find("bob")->second, 1s);
}

TEST_F(AnalyticsTest, IdentifiersThatWaitInGreatNumberAreAllNoted) {
  std::promise<void> begin;
  platform::writer().post([started = begin.get_future().share()] { started.wait(); });
  for (int i = 0; i < 250; ++i) {
    analytics_.setQWUDeeplink("user-" + std::to_string(i),
                              CoreDataManager::shared().backgroundContext());
  }
  begin.set_value();
  ASSERT_TRUE(platform::writer().drain(1min));
  auto noted = notedLinks();
  EXPECT_EQ(noted.size(), 250U);
  for (int i = 0; i < 250; ++i) EXPECT_EQ(noted.count("user-" + std::to_string(i)), 1U);
}

TEST_F(AnalyticsTest, DatapointsSayWhichApplicationAndInstallThisIs) {
  auto datapoints = analytics_.datapoints();
  EXPECT_EQ(datapoints["bundle_identifier"], "com.example.tests");
  EXPECT_EQ(datapoints["app_version_number"], "2.5.0");
  EXPECT_EQ(datapoints["sdk_device_identifier"], analytics_.sdkID().uuidString());
  EXPECT_TRUE(std::regex_match(datapoints["sdk_version_number"], std::regex("[0-9]+\\.[0-9.]+")));
  EXPECT_EQ(datapoints.size(), 7U);
  for (const auto& [key, value] : datapoints) EXPECT_FALSE(value.empty()) << key;
}

}  // namespace
}  // namespace quenwick

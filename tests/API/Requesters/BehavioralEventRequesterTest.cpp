#include "quenwick/API/Requesters/BehavioralEventRequester.h"

#include <gtest/gtest.h>

#include "quenwick/API/APIService/APIService.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/Calendar.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/ManualClock.h"
#include "tests/support/VerifiedService.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using tests::sorted;

constexpr auto kCredential = SecureSessionData::behaviorAPIToken;

class BehavioralEventRequesterTest : public testing::Test {
 protected:
  std::shared_ptr<BehavioralEventRequester> requester() {
    auto host = APIService::Host::custom(service_.endpoint());
    return APIService::shared()->behavioralEvent(host)->requester();
  }

  static Dictionary event(const Dictionary& further = {}) {
    Dictionary payload{{"type", "custom"}, {"event", "seen"}, {"properties", Dictionary()}};
    for (const auto& [key, value] : further) payload.set(key, value);
    return payload;
  }

  tests::VerifiedService service_;
};

TEST_F(BehavioralEventRequesterTest, ASourceIsAnEndpointWithItsOwnRequester) {
  auto host = APIService::Host::custom(service_.endpoint());
  auto source = APIService::shared()->behavioralEvent(host);
  EXPECT_EQ(source->url(), service_.endpoint());
  EXPECT_EQ(source->requester()->authenticationTokenManager(), nullptr);
  EXPECT_NE(source->requester(), APIService::shared()->behavioralEvent(host)->requester());
  const auto& session = source->requester()->manager()->session()->configuration();
  EXPECT_EQ(session.requestTimeout, 60);
  EXPECT_EQ(session.resourceTimeout, 60);
}

TEST_F(BehavioralEventRequesterTest, AnEventCarriesTheCommonFieldsInPlaceOfItsOwn) {
  Analytics::shared().setQWU("alice");
  auto own = event({{"user_id", "me"},
                    {"anonymous_id", 1},
                    {"timezone", "here"},
                    {"timestamp", 5},
                    {"channel", "mail"}});
  auto answer = platform::wait(requester()->sendEvent(own));
  EXPECT_EQ(answer.message, "accepted");
  EXPECT_FALSE(answer.requestID.empty());
  ASSERT_EQ(service_.events().size(), 1U);
  auto sent = service_.events()[0];
  auto timestamp = *sent.find("timestamp")->as<std::int64_t>();
  EXPECT_EQ(timestamp % 1000, 0);
  EXPECT_EQ(sorted(sent),
            sorted(event({{"user_id", "alice"},
                          {"anonymous_id", Analytics::shared().anonymousID()},
                          {"timezone", platform::TimeZone::currentIdentifier()},
                          {"timestamp", timestamp},
                          {"channel", Dictionary{{"app", Dictionary{{"name", "sdk"}}}}}})));
}

TEST_F(BehavioralEventRequesterTest, AUserWhoIsNotKnownHasTheEmptyText) {
  Analytics::shared().setQWU(std::nullopt);
  EXPECT_EQ(*requester()->commonEventParameters().find("user_id"), platform::Value(""));
  EXPECT_EQ(requester()->commonEventParameters().size(), 5U);
}

TEST_F(BehavioralEventRequesterTest, TimestampsAreCutToWholeSeconds) {
  auto at = [](std::int64_t microseconds) {
    auto clock = std::make_shared<tests::ManualClock>(
        platform::Date(std::chrono::microseconds(microseconds)));
    return BehavioralEventRequester::wholeSeconds(clock)();
  };
  EXPECT_EQ(at(1'700'000'000'900'000), 1'700'000'000'000);
  EXPECT_EQ(at(-900'000), 0);
  BehavioralEventRequester own(APISource::manager({}), service_.endpoint(), [] { return 7; });
  EXPECT_EQ(*own.mergingTimestamp({{"timestamp", 5}}).find("timestamp"), platform::Value(7));
}

TEST_F(BehavioralEventRequesterTest, TheCredentialIsTheOneThatIsStoredAtTheTime) {
  service_.expectRefusals();
  auto sender = requester();
  platform::wait(sender->sendEvent(event()));
  AuthenticationKeychain::standard().set("b3RoZXI=", rawValue(kCredential));
  using TokenError = AuthenticationTokenManager::TokenError;
  EXPECT_THROW(platform::wait(sender->sendEvent(event())), TokenError);
  auto all = platform::JSONSerialization::parse(service_.sandbox().requests());
  const auto& last = all.as<Dictionary>()->find("requests")->as<platform::List>()->back();
  const auto& headers = *last.as<Dictionary>()->find("headers")->as<Dictionary>();
  EXPECT_EQ(*headers.find("Authorization"), platform::Value("Basic b3RoZXI="));
}

}  // namespace
}  // namespace quenwick

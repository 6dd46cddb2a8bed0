#include "quenwick/API/Requesters/BehavioralEventRequester.h"

#include <gtest/gtest.h>

#include "quenwick/API/APIService/APIService.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/state/Analytics.h"
#include "tests/support/ManualClock.h"
#include "tests/support/VerifiedService.h"

namespace quenwick {
namespace {

using platform::Dictionary;

constexpr auto kCredential = SecureSessionData::behaviorAPIToken;

class BehavioralEventRequesterTest : public testing::Test {
 protected:
  std::shared_ptr<BehavioralEventRequester> requester() {
    auto host = APIService::Host::custom(service_.endpoint());
    return APIService::shared()->behavioralEvent(host)->requester();
  }

  static Dictionary event() {
    return {{"type", "custom"}, {"event", "seen"}, {"properties", Dictionary()}};
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
  EXPECT_EQ(session.cachePolicy, platform::CachePolicy::useProtocolCachePolicy);
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
  auto answer = platform::wait(sender->sendEvent(event()));
  EXPECT_EQ(answer.message, "accepted");
  EXPECT_FALSE(answer.requestID.empty());
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

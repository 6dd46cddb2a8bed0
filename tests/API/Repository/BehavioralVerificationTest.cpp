#include <gtest/gtest.h>

#include "quenwick/API/APIService/APIService.h"
#include "quenwick/API/Repository/BehavioralVerificationRepository.h"
#include "quenwick/API/Stack/APIKeyError.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SandboxService.h"
#include "tests/support/SecretPlace.h"

namespace quenwick {
namespace {

using platform::Dictionary;
using platform::List;
using platform::URL;
using Errors = BehavioralVerificationRepository::Errors;
using Item = SecureSessionData;
using Lines = std::vector<std::string>;
using Text = std::optional<std::string>;

constexpr auto kEndpoint = "https://events.example/in";
constexpr auto kRequest = "POST api.example/behavioral_verification";
constexpr double kNow = 1'790'000'000;
constexpr double kWeek = 7 * 24 * 3600;  // no change of clocks in between: tests run in UTC

std::string answering(const std::string& answer) {
  return R"({"answers": [{"at": "https://api.example/behavioral_verification", )" + answer + "}]}";
}

std::string verified(const std::string& endpoint) {
  return R"("json": {"data": {"behavioral_endpoint_url": ")" + endpoint +
         R"(", "behavioral_endpoint_api_token": "t", "behavioral_endpoint_api_token_identifier": "i"}})";
}

/// The install, the service it talks to, and the keychain of a process of its own.
class BehavioralVerificationTest : public testing::Test {
 protected:
  BehavioralVerificationTest() {
    setenv("TZ", "UTC", 1);
    answer(verified(kEndpoint));
  }

  /// From now on the service answers so.
  void answer(const std::string& answer) {
    service_ = std::make_unique<tests::SandboxService>(answering(answer));
  }

  std::shared_ptr<BehavioralVerificationRequester> requester() {
    auto manager = APISource::manager({.basis = service_->configuration()});
    return std::make_shared<BehavioralVerificationRequester>(manager,
                                                             *URL::parse("https://api.example"));
  }

  BehavioralVerificationRepository repository(
      BehavioralVerificationRepository::AddingDays addingDays = &platform::Calendar::addingDays) {
    return BehavioralVerificationRepository(requester(), clock_, std::move(addingDays));
  }

  std::string verify(Text key) {
    return platform::wait(repository().verify(std::move(key))).absoluteString();
  }

  /// Whether a keyring, which may be slow to answer, has taken the key and its handshake at last.
  bool verifyUntilKept(const std::string& key) {
    for (int i = 0; i < 20; ++i) {
      try {
        verify(key);
      } catch (const APIKeyError&) {
        continue;
      }
      if (item(Item::behaviorVerificationAPIToken) == key && isCacheFull()) return true;
    }
    return false;
  }

  const Keychain& keychain() { return AuthenticationKeychain::standard(); }
  Text item(Item item) { return keychain().string(rawValue(item)); }
  std::optional<double> expiry() {
    return keychain().doubleValue(rawValue(Item::behaviorAPITokenExpiresAt));
  }
  bool isCacheFull() {
    return item(Item::behaviorAPIToken) && item(Item::behaviorAPIEndpoint) && expiry();
  }
  bool isCacheEmpty() {
    return !item(Item::behaviorAPIToken) && !item(Item::behaviorAPIEndpoint) && !expiry();
  }

  /// The error with which the handshake fails once the service has answered.
  static std::optional<Errors::Code> failure(const BehavioralVerificationRepository& repository) {
    try {
      platform::wait(repository.verify("key"));
    } catch (const Errors& error) {
      return error.code();
    }
    return std::nullopt;
  }

  Dictionary lastRequest() { return service_->requests().back(); }

  std::shared_ptr<tests::RecordingLog> log_ = tests::RecordingLog::install();
  std::shared_ptr<tests::ManualClock> clock_ =
      std::make_shared<tests::ManualClock>(platform::dateFrom(kNow));
  std::unique_ptr<tests::SandboxService> service_;
};

TEST_F(BehavioralVerificationTest, AFirstStartAsksOnceAndKeepsWhatItLearns) {
  EXPECT_EQ(verify("key-1"), kEndpoint);
  EXPECT_EQ(service_->received(), Lines{kRequest});
  auto request = lastRequest();
  EXPECT_EQ(platform::JSONSerialization::parse(*request.find("body")->as<std::string>()),
            platform::Value(
                Dictionary{{"bundle_identifier", "com.example.tests"}, {"api_key", "key-1"}}));
  const auto& fields = *request.find("headers")->as<Dictionary>();
  EXPECT_EQ(*fields.find("Content-Type"), platform::Value("application/json"));
  EXPECT_FALSE(fields.find("Authorization"));

  EXPECT_EQ(item(Item::behaviorVerificationAPIToken), "key-1");
  EXPECT_EQ(item(Item::behaviorAPIToken), "aTp0");
  EXPECT_EQ(item(Item::behaviorAPIEndpoint), kEndpoint);
  EXPECT_EQ(expiry(), kNow + kWeek);
  EXPECT_EQ(log_->count("error: "), 0);
}

TEST_F(BehavioralVerificationTest, ASecondStartWithinTheWeekAsksNobody) {
  verify("key");
  clock_->advance(std::chrono::days(7) - std::chrono::microseconds(1'000));
  EXPECT_EQ(verify("key"), kEndpoint);
  EXPECT_EQ(service_->received().size(), 1U);
  clock_->advance(std::chrono::microseconds(1'000));
  EXPECT_FALSE(repository().isAPITokenValid()) << "expired in the very second";
  EXPECT_EQ(verify("key"), kEndpoint);
  EXPECT_EQ(service_->received().size(), 2U);
  EXPECT_EQ(expiry(), kNow + 2 * kWeek);
}

TEST_F(BehavioralVerificationTest, ACacheThatCannotBeUsedIsMadeAgain) {
  const std::pair<Item, std::optional<platform::Bytes>> kRows[] = {
      {Item::behaviorAPIEndpoint, std::nullopt}, {Item::behaviorAPIEndpoint, "not a url"},
      {Item::behaviorAPIEndpoint, "\xff"},       {Item::behaviorAPITokenExpiresAt, std::nullopt},
      {Item::behaviorAPITokenExpiresAt, "soon"},
  };
  verify("key");
  std::size_t count = 1;
  for (const auto& [spoiled, bytes] : kRows) {
    SCOPED_TRACE(bytes.value_or("none"));
    bytes ? keychain().set(*bytes, rawValue(spoiled)) : keychain().removeObject(rawValue(spoiled));
    EXPECT_EQ(verify("key"), kEndpoint);
    EXPECT_EQ(service_->received().size(), ++count);
    EXPECT_EQ(item(Item::behaviorAPIEndpoint), kEndpoint);
  }
}

TEST_F(BehavioralVerificationTest, AnotherKeyForgetsTheEarlierHandshakeFirst) {
  verify("key");
  answer(R"("status": 500, "body": "later")");
  EXPECT_THROW(verify("other"), APIError);
  EXPECT_EQ(item(Item::behaviorVerificationAPIToken), "other");
  EXPECT_TRUE(isCacheEmpty());

  answer(verified("https://other.example"));
  EXPECT_EQ(verify("other"), "https://other.example");
}

TEST_F(BehavioralVerificationTest, WithoutAKeyThatIsTextNothingIsSentAndNothingStays) {
  EXPECT_THROW(verify(std::nullopt), APIKeyError) << "none was ever kept";
  std::size_t count = 0;
  for (const Text& none : {Text(), Text("\xff")}) {
    verify("key");
    EXPECT_THROW(verify(none), APIKeyError);
    EXPECT_EQ(service_->received().size(), ++count);
    EXPECT_EQ(item(Item::behaviorVerificationAPIToken).has_value(), none.has_value());
    EXPECT_TRUE(isCacheEmpty());
  }
}

TEST_F(BehavioralVerificationTest,
       AKeyThatALockedKeyringCannotTakeIsNotAnsweredFromAnothersHandshake) {
  tests::SecretPlace place(platform::SecItemBackendKind::secretService);
  platform::SecItemStore::setStandard(place.open());
  EXPECT_TRUE(verifyUntilKept("key"));
  auto asked = service_->received().size();
  place.keyring().lock();
  EXPECT_EQ(verify("key"), kEndpoint) << "what is known of the kept key is served";
  EXPECT_THROW(verify("other"), APIKeyError);
  EXPECT_THROW(verify(std::nullopt), APIKeyError);
  EXPECT_EQ(service_->received().size(), asked) << "nothing is asked with another's key";
  place.keyring().unlock();
  EXPECT_EQ(verify("key"), kEndpoint);
  EXPECT_EQ(item(Item::behaviorVerificationAPIToken), "key");
  EXPECT_TRUE(verifyUntilKept("other"));
  EXPECT_NE(lastRequest().find("body")->as<std::string>()->find("other"), std::string::npos);
}

TEST_F(BehavioralVerificationTest, AMissingBundleIdentifierIsReportedAsAMissingKey) {
  AuthenticationKeychain::setBehaviorVerificationAPIToken("key");
  for (const auto& datapoints :
       std::vector<std::map<std::string, std::string>>{{}, {{"device_os", "debian"}}}) {
    BehavioralVerificationRequester bare(requester()->manager(), *URL::parse("https://api.example"),
                                         [datapoints] { return datapoints; });
    EXPECT_THROW(platform::wait(bare.verify()), APIKeyError);
  }
  EXPECT_TRUE(service_->received().empty());
}

TEST_F(BehavioralVerificationTest, AnEndpointThatIsNoURLFailsOnceAllIsKept) {
  answer(verified("not a url"));
  EXPECT_EQ(failure(repository()), Errors::Code::coercingEndpointURLFailed);
  EXPECT_EQ(item(Item::behaviorAPIToken), "aTp0");
  EXPECT_EQ(item(Item::behaviorAPIEndpoint), "not a url");
  EXPECT_EQ(expiry(), kNow + kWeek);
}

TEST_F(BehavioralVerificationTest, ACalendarWithoutADateLeavesTheCredentialAlone) {
  auto noDate = repository([](int, platform::Date) { return std::nullopt; });
  EXPECT_EQ(failure(noDate), Errors::Code::calculatingExpirationFailed);
  EXPECT_EQ(item(Item::behaviorAPIToken), "aTp0");
  EXPECT_EQ(item(Item::behaviorAPIEndpoint), std::nullopt);
  EXPECT_EQ(expiry(), std::nullopt);
}

TEST_F(BehavioralVerificationTest, EveryFailureOfTheServiceReachesTheCallerAsItIs) {
  const std::pair<std::string, const char*> kRows[] = {
      {R"("status": 403, "json": {"error": "Bad key"})", "403\n{\"error\":\"Bad key\"}"},
      {R"("status": 422, "json": {"message": "Bad bundle"})", "422\n{\"message\":\"Bad bundle\"}"},
      {R"("json": {"data": {"behavioral_endpoint_url": "u", "behavioral_endpoint_api_token": "t"}})",
       R"(The value of "data.behavioral_endpoint_api_token_identifier" is missing where a text is expected.)"},
      {R"("json": {"data": {"behavioral_endpoint_url": "u", "behavioral_endpoint_api_token": 7,
         "behavioral_endpoint_api_token_identifier": "i"}})",
       R"(The value of "data.behavioral_endpoint_api_token" is a number where a text is expected.)"},
      {R"("cut": "before")",
       "URLSessionTask failed with error: The connection to the server was lost."},
  };
  for (const auto& [answered, text] : kRows) {
    answer(answered);
    try {
      verify("key");
      ADD_FAILURE() << text;
    } catch (const APIError& error) {
      EXPECT_TRUE(error.errorDescription().starts_with(text)) << error.errorDescription();
    }
    EXPECT_TRUE(isCacheEmpty()) << text;
  }
  answer(R"("status": 401)");
  EXPECT_THROW(verify("key"), AuthenticationTokenManager::TokenError);
  EXPECT_EQ(log_->count("key"), 0) << "no line holds the key";
}

/// Is asked to stop at the moment at which the service's answer is there.
class StoppedWithTheAnswer : public BehavioralVerificationRequestable {
 public:
  StoppedWithTheAnswer(std::shared_ptr<const BehavioralVerificationRequestable> real,
                       std::stop_source stop)
      : real_(std::move(real)), stop_(std::move(stop)) {}
  platform::Task<BehavioralVerificationContainer> verify(std::stop_token) const override {
    return run(real_, stop_);
  }

 private:
  static platform::Task<BehavioralVerificationContainer> run(
      std::shared_ptr<const BehavioralVerificationRequestable> real, std::stop_source stop) {
    auto answer = co_await real->verify({});
    stop.request_stop();
    co_return answer;
  }

  std::shared_ptr<const BehavioralVerificationRequestable> real_;
  std::stop_source stop_;
};

TEST_F(BehavioralVerificationTest, OneThatIsStoppedKeepsNothingAndYieldsNoEndpoint) {
  std::stop_source stop;
  BehavioralVerificationRepository stopped(
      std::make_shared<StoppedWithTheAnswer>(requester(), stop), clock_);
  EXPECT_THROW(platform::wait(stopped.verify("key", stop.get_token())), platform::Error);
  EXPECT_EQ(service_->received().size(), 1U);
  EXPECT_TRUE(isCacheEmpty());
  verify("key");
  EXPECT_THROW(platform::wait(repository().verify("key", stop.get_token())), platform::Error)
      << "though the answer is at hand";
  EXPECT_THROW(platform::wait(repository().verify("other", stop.get_token())), platform::Error);
  EXPECT_EQ(item(Item::behaviorVerificationAPIToken), "key");
  EXPECT_FALSE(isCacheEmpty());
}

TEST(APIServiceTest, FindsTheHandshakeWithItsHost) {
  auto production = APIService::shared();
  EXPECT_EQ(APIService::shared(), production);
  auto source = production->behavioralVerification();
  EXPECT_EQ(production->behavioralVerification(), source);
  EXPECT_EQ(source->url(), APIService::Host::production().url());
  EXPECT_EQ(source->url().scheme(), "https");
  const auto& configuration = source->requester()->manager()->session()->configuration();
  EXPECT_EQ(configuration.requestTimeout, 60);
  EXPECT_EQ(configuration.resourceTimeout, 60);
  EXPECT_EQ(configuration.cachePolicy, platform::CachePolicy::useProtocolCachePolicy);
  EXPECT_EQ(source->requester()->authenticationTokenManager(), nullptr);

  platform::URLSessionConfiguration basis;
  basis.maximumBodySize = 1'000;
  auto custom = URL::parse("https://own.example/api").value();
  APIService::setShared(std::make_shared<APIService>(APIService::Host::custom(custom), basis));
  BehavioralVerificationRepository repository;
  auto api = std::dynamic_pointer_cast<const BehavioralVerificationRequester>(repository.api());
  ASSERT_TRUE(api);
  EXPECT_EQ(api->baseURL(), custom);
  EXPECT_EQ(api->manager()->session()->configuration().maximumBodySize, 1'000U);
  APIService::setShared(nullptr);
  EXPECT_EQ(APIService::shared()->behavioralVerification()->url(), source->url());
}

}  // namespace
}  // namespace quenwick

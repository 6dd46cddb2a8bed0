#include "quenwick/auth/AuthenticationTokenManager.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>

#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/System.h"
#include "tests/support/IdlePool.h"
#include "tests/support/ManualClock.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SecretPlace.h"

namespace quenwick {
namespace {

using platform::Task;
using TokenError = AuthenticationTokenManager::TokenError;

constexpr double kNow = 1'763'726'400;

void store(SecureSessionData item, const std::string& text) {
  AuthenticationKeychain::standard().set(std::string_view(text), rawValue(item));
}

/// Renews when the test lets it. The new token has the old expiry, unless it is to hold for long.
class GatedService : public AuthenticationService {
 public:
  Task<std::string> renewToken() override {
    auto number = ++calls_;
    co_await platform::suspend<void>([this](platform::Continuation<void> continuation) {
      std::lock_guard lock(mutex_);
      isOpen_ ? continuation.resume() : waiting_.push_back(continuation);
    });
    if (isFailing) throw platform::OtherError("the service said no");
    if (isForLong) {
      co_await platform::onKeysThread([] { store(SecureSessionData::expiresAt, "4000000000"); });
    }
    co_return "token " + std::to_string(number);
  }

  void open() {
    std::lock_guard lock(mutex_);
    isOpen_ = true;
    for (const auto& continuation : waiting_) continuation.resume();
    waiting_.clear();
  }
  void close() {
    std::lock_guard lock(mutex_);
    isOpen_ = false;
  }

  int calls() const { return calls_; }
  std::atomic<bool> isFailing = false;
  std::atomic<bool> isForLong = false;

 private:
  std::mutex mutex_;
  bool isOpen_ = true;
  std::atomic<int> calls_ = 0;
  std::vector<platform::Continuation<void>> waiting_;
};

class AuthenticationTokenManagerTest : public testing::Test {
 protected:
  void SetUp() override { platform::SecItemStore::setStandard(place_.open()); }
  void TearDown() override { platform::setSystemVersion(std::nullopt); }

  std::string validToken() { return platform::wait(manager_.validToken()); }

  tests::SecretPlace place_{platform::SecItemBackendKind::sealedFile};
  std::shared_ptr<GatedService> service_ = std::make_shared<GatedService>();
  std::shared_ptr<tests::ManualClock> clock_ =
      std::make_shared<tests::ManualClock>(platform::dateFrom(kNow));
  AuthenticationTokenManager manager_{service_, clock_};
};

TEST_F(AuthenticationTokenManagerTest, ATokenIsReturnedUntilHalfAMinuteBeforeItsEnd) {
  constexpr double kBetween1970And2001 = 978'307'200;
  struct Case {
    std::string expiresAt;
    int systemVersion;
    bool isRenewed;
  };
  const std::vector<Case> cases = {{std::to_string(kNow + 31), 15, false},
                                   {std::to_string(kNow + 30), 15, true},
                                   {std::to_string(kNow - 1000), 15, true},
                                   {std::to_string(kNow + 30), 14, false},
                                   {std::to_string(kNow - kBetween1970And2001 + 31), 14, false},
                                   {std::to_string(kNow - kBetween1970And2001 + 30), 14, true},
                                   {"1.7637264310001e9", 15, false},
                                   {"inf", 15, false},
                                   {"", 15, true},
                                   {" 2000000000", 15, true},
                                   {"\v2000000000", 15, true},
                                   {"2000000000 ", 15, true},
                                   {"2000000000s", 15, true},
                                   {"nan", 15, true}};
  for (const auto& [expiresAt, systemVersion, isRenewed] : cases) {
    platform::setSystemVersion(systemVersion);
    store(SecureSessionData::accessToken, "stored");
    store(SecureSessionData::expiresAt, expiresAt);
    int before = service_->calls();
    auto token = validToken();
    EXPECT_EQ(token != "stored", isRenewed) << expiresAt;
    EXPECT_EQ(service_->calls(), before + (isRenewed ? 1 : 0)) << expiresAt;
  }
}

TEST_F(AuthenticationTokenManagerTest, WithoutATokenThereIsNothingToRenew) {
  store(SecureSessionData::expiresAt, std::to_string(kNow + 1000));
  try {
    FAIL() << "from nowhere came " << validToken();
  } catch (const TokenError& error) {
    EXPECT_EQ(error.code(), TokenError::Code::missingToken);
  }
  EXPECT_EQ(service_->calls(), 0);
}

TEST_F(AuthenticationTokenManagerTest, ARenewalStoresTheTokenAloneAndSaysSo) {
  auto log = tests::RecordingLog::install();
  store(SecureSessionData::accessToken, "stored");
  store(SecureSessionData::refreshToken, "refresh");
  store(SecureSessionData::expiresIn, "3600.5");
  store(SecureSessionData::expiresAt, "12.5");
  EXPECT_EQ(validToken(), "token 1");
  EXPECT_EQ(manager_.accessToken(), "token 1");
  EXPECT_EQ(manager_.refreshToken(), "refresh");
  EXPECT_EQ(manager_.tokenExpirationDuration(), 3600.5);
  EXPECT_EQ(manager_.tokenExpirationTimeInterval(), 12.5);
  EXPECT_EQ(manager_.authenticationService(), service_);
  EXPECT_EQ(validToken(), "token 2") << "the old expiry stands";
  EXPECT_EQ(log->count("default: Attempting to renew the access token"), 2);
  EXPECT_EQ(log->count("default: Token was successfully renewed 👍"), 2);
  for (auto secret : {"stored", "refresh", "token 1", "token 2"}) {
    EXPECT_EQ(log->count(secret), 0) << secret;
  }
}

TEST_F(AuthenticationTokenManagerTest, AFailedRenewalIsLoggedAndTheNextCallStartsAnother) {
  auto log = tests::RecordingLog::install();
  store(SecureSessionData::accessToken, "stored");
  service_->isFailing = true;
  EXPECT_THROW(validToken(), TokenError);
  const std::vector<std::string> expected = {"default: Attempting to renew the access token",
                                             "error: the service said no",
                                             "default: Token failed to renew 👎"};
  auto lines = log->lines();
  std::erase_if(lines, [](const auto& line) { return line.starts_with("default: Secrets"); });
  EXPECT_EQ(lines, expected);
  EXPECT_EQ(manager_.accessToken(), "stored");
  service_->isFailing = false;
  EXPECT_EQ(validToken(), "token 2");
}

Task<void> keep(Task<std::string> task, std::shared_ptr<std::promise<std::string>> promise) {
  try {
    promise->set_value(co_await task);
  } catch (...) {
    promise->set_exception(std::current_exception());
  }
}

/// Starts the task on this thread, up to its first suspension.
std::future<std::string> begin(Task<std::string> task) {
  auto promise = std::make_shared<std::promise<std::string>>();
  auto future = promise->get_future();
  platform::spawn(keep(std::move(task), promise));
  return future;
}

TEST_F(AuthenticationTokenManagerTest, TenCallersShareOneRenewal) {
  store(SecureSessionData::accessToken, "stored");
  for (bool isFailing : {false, true}) {
    service_->isFailing = isFailing;
    service_->close();
    int before = service_->calls();
    std::vector<std::future<std::string>> callers;
    for (int i = 0; i < 10; ++i) {
      callers.push_back(begin(i % 2 == 0 ? manager_.validToken() : manager_.renewedToken()));
    }
    // Each has read what is stored by then, and is on the pool to join.
    platform::keysThread().drain(std::chrono::minutes(1));
    tests::untilPoolIsIdle();
    service_->open();
    for (auto& caller : callers) {
      if (isFailing) {
        EXPECT_THROW(caller.get(), TokenError);
      } else {
        EXPECT_EQ(caller.get(), "token 1");
      }
    }
    EXPECT_EQ(service_->calls(), before + 1);
  }
}

TEST_F(AuthenticationTokenManagerTest, ACallerThatHasReadTheOldExpiryDoesNotRenewAgain) {
  service_->isForLong = true;
  for (int round = 1; round <= 50; ++round) {
    store(SecureSessionData::accessToken, "old");
    store(SecureSessionData::expiresAt, "1");
    std::vector<std::future<std::string>> callers;
    for (int i = 0; i < 10; ++i) callers.push_back(begin(manager_.validToken()));
    for (auto& caller : callers) EXPECT_EQ(caller.get(), "token " + std::to_string(round));
    ASSERT_EQ(service_->calls(), round);
  }
}

TEST_F(AuthenticationTokenManagerTest, ARenewalOutlivesTheManagerItWasAskedOf) {
  service_->close();
  auto manager = std::make_unique<AuthenticationTokenManager>(service_, clock_);
  auto caller = begin(manager->renewedToken());
  manager.reset();
  service_->open();
  EXPECT_EQ(caller.get(), "token 1");
}

}  // namespace
}  // namespace quenwick

#include "quenwick/state/Analytics.h"

#include <cstdint>
#include <random>

#include "quenwick/platform/Bundle.h"
#include "quenwick/platform/Calendar.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/System.h"
#include "quenwick/resources/LibraryBundle.h"
#include "quenwick/state/SeenLinkUsers.h"

namespace quenwick {
namespace {

constexpr auto kSDKIDKey = "com.quenwick.sdk.sdkID";
constexpr auto kAnonymousIDKey = "com.quenwick.sdk.anonymousID";
constexpr auto kQWUKey = "com.quenwick.sdk.qwu";
constexpr auto kQWUDeeplinkKey = "com.quenwick.sdk.qwuDeeplink";
constexpr auto kRulesPicKeyKey = "com.quenwick.sdk.rp_key";
constexpr auto kRulesPicKeyExpiresAtKey = "com.quenwick.sdk.rp_key_expires_at";

constexpr int kRulesPicKeyDays = 4;
constexpr std::uint64_t kLargestAnonymousNumber = 99'999'999'999;

constexpr auto kVersionKey = "CFBundleShortVersionString";
constexpr auto kDeviceIdentifier = "sdk_device_identifier";

std::string newAnonymousID(platform::Date now) {
  // Whole seconds, so that the milliseconds always end in 000.
  auto milliseconds = static_cast<std::int64_t>(platform::secondsSince1970(now)) * 1000;
  std::random_device source;
  auto number = std::uniform_int_distribution<std::uint64_t>(1, kLargestAnonymousNumber)(source);
  return "anon-" + std::to_string(milliseconds) + "-" + std::to_string(number);
}

/// What is known of device and application.
std::map<std::string, std::string> surroundings() {
  const auto& application = platform::Bundle::main();
  return {
      {"sdk_version_number", libraryBundle().text(kVersionKey).value_or("0.0.0")},
      {"bundle_identifier", application.text("CFBundleIdentifier").value_or("unknown")},
      {"app_version_number", application.text(kVersionKey).value_or("0.0.0")},
      {"device_type", platform::System::deviceType()},
      {"device_os", platform::System::name()},
      {"device_os_version", platform::System::version()},
  };
}

}  // namespace

Analytics& Analytics::shared() {
  platform::HeldLog held;
  static auto& instance =
      *new Analytics(platform::UserDefaults::standard(), platform::Clock::system());
  return instance;
}

Analytics::Analytics(platform::UserDefaults& userDefaults,
                     std::shared_ptr<const platform::Clock> clock)
    : userDefaults_(userDefaults),
      clock_(std::move(clock)),
      seenLinkUsers_(std::make_shared<SeenLinkUsers>()),
      qwU_(kQWUKey, userDefaults),
      qwuDeeplink_(kQWUDeeplinkKey, userDefaults),
      rulesPicKey_(kRulesPicKeyKey, userDefaults),
      rulesPicKeyExpiresAt_(kRulesPicKeyExpiresAtKey, userDefaults) {}

platform::UUID Analytics::sdkID() {
  if (auto known = keptSDKID()) return *known;
  auto made = platform::UUID::random();
  {
    std::lock_guard lock(making_);
    if (auto known = keptSDKID()) return *known;
    // What is there is no identifier; one that another process has just made is.
    if (userDefaults_.object(kSDKIDKey)) remove(userDefaults_, kSDKIDKey);
    userDefaults_.setObjectIfAbsent(made.uuidString(), kSDKIDKey);
    isFirstInstall_ = true;
  }
  userDefaults_.synchronize();
  auto kept = keptSDKID().value_or(made);
  if (kept != made) isFirstInstall_ = false;
  return kept;
}

std::optional<platform::UUID> Analytics::keptSDKID() const {
  return uuid(userDefaults_, kSDKIDKey);
}

std::string Analytics::anonymousID() {
  if (auto known = keptAnonymousID()) return *known;
  std::lock_guard lock(making_);
  if (auto known = keptAnonymousID()) return *known;
  auto made = newAnonymousID(clock_->now());
  if (userDefaults_.object(kAnonymousIDKey)) remove(userDefaults_, kAnonymousIDKey);
  userDefaults_.setObjectIfAbsent(made, kAnonymousIDKey);
  return made;
}

std::optional<std::string> Analytics::keptAnonymousID() const {
  return fetchOptional<std::string>(userDefaults_, kAnonymousIDKey);
}

platform::AnyPublisher<std::optional<std::string>> Analytics::qwUChanges() const {
  return qwU_.projectedValue();
}

platform::AnyPublisher<std::optional<std::string>> Analytics::qwuDeeplinkChanges() const {
  return qwuDeeplink_.projectedValue();
}

platform::AnyPublisher<std::optional<std::string>> Analytics::rulesPicKeyChanges() const {
  return rulesPicKey_.projectedValue();
}

void Analytics::setQWUDeeplink(const std::string& value,
                               const std::shared_ptr<platform::ManagedObjectContext>& context) {
  qwuDeeplink_.setWrappedValue(value);
  if (context) seenLinkUsers_->note(value, clock_->now(), context);
}

std::optional<std::string> Analytics::qwu() const {
  auto own = qwU();
  return own ? own : qwuDeeplink();
}

void Analytics::setRulesPicKey(const std::string& key) {
  rulesPicKey_.setWrappedValue(key);
  if (auto expiry = platform::Calendar::addingDays(kRulesPicKeyDays, clock_->now())) {
    rulesPicKeyExpiresAt_.setWrappedValue(platform::secondsSince1970(*expiry));
  }
}

std::optional<std::string> Analytics::rulesPicKey() {
  auto expiry = rulesPicKeyExpiresAt_.wrappedValue();
  if (expiry && *expiry > platform::secondsSince1970(clock_->now())) {
    return rulesPicKey_.wrappedValue();
  }
  rulesPicKey_.clear();
  rulesPicKeyExpiresAt_.clear();
  return std::nullopt;
}

std::map<std::string, std::string> Analytics::datapoints() {
  auto all = surroundings();
  all.emplace(kDeviceIdentifier, sdkID().uuidString());
  return all;
}

std::map<std::string, std::string> Analytics::keptDatapoints() const {
  auto all = surroundings();
  if (auto known = keptSDKID()) all.emplace(kDeviceIdentifier, known->uuidString());
  return all;
}

}  // namespace quenwick

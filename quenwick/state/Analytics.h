#pragma once

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>

#include "quenwick/Stored/Stored.h"
#include "quenwick/platform/Clock.h"

namespace quenwick {

class SeenLinkUsers;

namespace platform {
class ManagedObjectContext;
}

/// What the library knows about this install and its user across launches. From any thread.
class Analytics {
 public:
  /// The install's own, over the standard preferences. Made on first use, never destroyed.
  static Analytics& shared();

  Analytics(platform::UserDefaults& userDefaults, std::shared_ptr<const platform::Clock> clock);

  /// The identifier of this install. The first read ever makes it; it is on disk when that read
  /// returns. Text in its place that is no identifier counts as none.
  platform::UUID sdkID();

  /// The same where it has been made; none is made.
  std::optional<platform::UUID> keptSDKID() const;

  /// Whether `sdkID` was made in this process, until `clearFirstInstallFlag`.
  bool isFirstInstall() const { return isFirstInstall_; }
  void clearFirstInstallFlag() { isFirstInstall_ = false; }

  /// The anonymous identifier, "anon-<milliseconds>-<number>"; made on first read.
  std::string anonymousID();

  /// The same where it has been made; none is made.
  std::optional<std::string> keptAnonymousID() const;

  /// The link-user value that the host has set.
  std::optional<std::string> qwU() const { return qwU_.wrappedValue(); }
  platform::AnyPublisher<std::optional<std::string>> qwUChanges() const;
  /// None removes the value.
  void setQWU(std::optional<std::string> value) { qwU_.setWrappedValue(std::move(value)); }

  /// The link-user value taken from the last resolved link.
  std::optional<std::string> qwuDeeplink() const { return qwuDeeplink_.wrappedValue(); }
  platform::AnyPublisher<std::optional<std::string>> qwuDeeplinkChanges() const;

  /// Keeps the link-user value of a resolved link, and, through the context, notes in the
  /// link-user store that it was seen now. Without a context nothing is noted. Returns at once;
  /// the note is written on the context's queue.
  void setQWUDeeplink(const std::string& value,
                      const std::shared_ptr<platform::ManagedObjectContext>& context);

  /// `qwU`, else `qwuDeeplink`, else none.
  std::optional<std::string> qwu() const;

  /// Keeps the rules key for four calendar days.
  void setRulesPicKey(const std::string& key);

  /// The rules key, unless it has expired; an expired one is removed.
  std::optional<std::string> rulesPicKey();
  platform::AnyPublisher<std::optional<std::string>> rulesPicKeyChanges() const;

  /// Facts of the device, the application and the install that go with requests.
  std::map<std::string, std::string> datapoints();

  /// The same, without the install's identifier where none has been made.
  std::map<std::string, std::string> keptDatapoints() const;

 private:
  platform::UserDefaults& userDefaults_;
  std::shared_ptr<const platform::Clock> clock_;
  std::shared_ptr<SeenLinkUsers> seenLinkUsers_;
  std::mutex making_;  // of the identifiers; never held during I/O
  std::atomic<bool> isFirstInstall_ = false;
  StoredOptional<std::string> qwU_;
  StoredOptional<std::string> qwuDeeplink_;
  StoredOptional<std::string> rulesPicKey_;
  StoredOptional<double> rulesPicKeyExpiresAt_;
};

}  // namespace quenwick

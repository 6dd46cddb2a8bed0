#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>

#include "quenwick/API/Requesters/BehavioralVerificationRequestable.h"
#include "quenwick/platform/Calendar.h"
#include "quenwick/platform/Clock.h"
#include "quenwick/platform/Error.h"

namespace quenwick {

/// Knows where behavioural events go: by the handshake, or by an earlier one, whose result is kept
/// in the keychain for seven days. Holds no state of its own.
class BehavioralVerificationRepository {
 public:
  class Errors : public platform::Error {
   public:
    enum class Code {
      coercingEndpointURLFailed,    ///< the endpoint of the handshake is no URL
      calculatingExpirationFailed,  ///< the calendar has no date for the credential's end
    };
    explicit Errors(Code code);
    Code code() const { return code_; }

   private:
    Code code_;
  };

  using AddingDays = std::function<std::optional<platform::Date>(int days, platform::Date date)>;

  /// Over the handshake of the shared API service.
  BehavioralVerificationRepository();
  explicit BehavioralVerificationRepository(
      std::shared_ptr<const BehavioralVerificationRequestable> api,
      std::shared_ptr<const platform::Clock> clock = platform::Clock::system(),
      AddingDays addingDays = &platform::Calendar::addingDays);

  const std::shared_ptr<const BehavioralVerificationRequestable>& api() const { return api_; }

  /// The endpoint for that API key, which is kept from now on; none deletes the kept one. Asks the
  /// service only where no credential for this key still holds. Throws `Errors`, what the handshake
  /// throws, and `APIKeyError` where the keychain cannot be made to forget another key. A requested
  /// stop ends it with an error; nothing is kept from then on. The repository is not needed after
  /// the call.
  platform::Task<platform::URL> verify(std::optional<std::string> apiKey,
                                       std::stop_token stop = {}) const;

  // These read and write the keychain on the calling thread, and may wait for it.

  /// Forgets the endpoint and its credential where another API key is kept than this one.
  void invalidateIfNeeded(const std::optional<std::string>& apiKey) const;

  /// Forgets the endpoint and its credential; the API key stays.
  void invalidateBehaviorEndpointCache() const;

  /// Whether there is a credential that has not expired.
  bool isAPITokenValid() const;

 private:
  std::optional<platform::URL> prepare(const std::optional<std::string>& apiKey) const;
  void store(const BehavioralVerificationContainer& container) const;
  static platform::Task<platform::URL> run(BehavioralVerificationRepository self,
                                           std::optional<std::string> apiKey, std::stop_token stop);

  std::shared_ptr<const BehavioralVerificationRequestable> api_;
  std::shared_ptr<const platform::Clock> clock_;
  AddingDays addingDays_;
};

}  // namespace quenwick

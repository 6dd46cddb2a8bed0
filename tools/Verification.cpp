#include "tools/Verification.h"

#include <atomic>

#include "quenwick/API/Repository/BehavioralVerificationRepository.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/client/VerificationFailure.h"

namespace quenwick::tools {
namespace {

/// Notes whether the service was asked.
class Watched : public BehavioralVerificationRequestable {
 public:
  explicit Watched(std::shared_ptr<const BehavioralVerificationRequestable> api)
      : api_(std::move(api)) {}

  platform::Task<BehavioralVerificationContainer> verify(std::stop_token stop) const override {
    wasAsked_ = true;
    return api_->verify(std::move(stop));
  }
  bool wasAsked() const { return wasAsked_; }

 private:
  std::shared_ptr<const BehavioralVerificationRequestable> api_;
  mutable std::atomic<bool> wasAsked_ = false;
};

std::optional<double> expiry() {
  auto key = rawValue(SecureSessionData::behaviorAPITokenExpiresAt);
  return AuthenticationKeychain::standard().doubleValue(key);
}

}  // namespace

std::shared_ptr<APIService> serviceFrom(const Arguments& arguments) {
  auto host = APIService::Host::production();
  if (auto text = arguments.value("--service")) {
    auto url = platform::URL::parse(*text);
    if (!url || !url->host()) throw UsageError("--service takes a URL, not " + *text);
    host = APIService::Host::custom(*std::move(url));
  }
  return std::make_shared<APIService>(std::move(host), sessionConfiguration(arguments));
}

std::string apiKeyFrom(const Arguments& arguments) {
  auto key = arguments.value("--api-key");
  if (!key || key->empty()) throw UsageError("--api-key is missing");
  return *std::move(key);
}

Verification verify(APIService& service, const std::string& apiKey, const Deadline& deadline) {
  auto api = std::make_shared<Watched>(service.behavioralVerification()->requester());
  BehavioralVerificationRepository repository(api);
  Verification outcome;
  try {
    outcome.endpoint = platform::wait(repository.verify(apiKey, deadline.token())).absoluteString();
    outcome.expiresAt = expiry();
  } catch (...) {
    outcome.error = deadline.hasPassed()
                        ? deadline.line()
                        : verificationFailureLine(std::current_exception(), apiKey);
  }
  outcome.isFromCache = outcome.endpoint && !api->wasAsked();
  return outcome;
}

}  // namespace quenwick::tools

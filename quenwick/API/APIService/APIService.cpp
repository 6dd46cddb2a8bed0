#include "quenwick/API/APIService/APIService.h"

#include <utility>

#include "quenwick/platform/Replaceable.h"

namespace quenwick {
namespace {

constexpr auto kProductionOrigin = "https://api.quenwick.example";

platform::Replaceable<APIService>& current() {
  static auto& instance = *new platform::Replaceable<APIService>;
  return instance;
}

std::shared_ptr<APISessionManager> managerOver(platform::URLSessionConfiguration basis) {
  return APISource::manager({.requestTimeout = 60,
                             .resourceTimeout = 60,
                             .cachePolicy = platform::CachePolicy::useProtocolCachePolicy,
                             .basis = std::move(basis)});
}

}  // namespace

APIService::Host APIService::Host::production() {
  return Host(*platform::URL::parse(kProductionOrigin));
}

APIService::BehaviorVerificationSource::BehaviorVerificationSource(
    const Host& host, platform::URLSessionConfiguration basis)
    : requester_(std::make_shared<BehavioralVerificationRequester>(managerOver(std::move(basis)),
                                                                   host.url())) {}

APIService::BehavioralEventSource::BehavioralEventSource(const Host& host,
                                                         platform::URLSessionConfiguration basis)
    : requester_(
          std::make_shared<BehavioralEventRequester>(managerOver(std::move(basis)), host.url())) {}

std::shared_ptr<APIService> APIService::shared() {
  auto service = current().get();
  return service ? service : current().orElse(std::make_shared<APIService>());
}

void APIService::setShared(std::shared_ptr<APIService> service) {
  current().replace(std::move(service));
}

APIService::APIService(Host host, platform::URLSessionConfiguration basis)
    : host_(std::move(host)), basis_(std::move(basis)) {}

std::shared_ptr<APIService::BehaviorVerificationSource> APIService::behavioralVerification() {
  std::call_once(isVerificationMade_, [this] {
    verification_ = std::make_shared<BehaviorVerificationSource>(host_, basis_);
  });
  return verification_;
}

std::shared_ptr<APIService::BehavioralEventSource> APIService::behavioralEvent(
    const Host& host) const {
  return std::make_shared<BehavioralEventSource>(host, basis_);
}

}  // namespace quenwick

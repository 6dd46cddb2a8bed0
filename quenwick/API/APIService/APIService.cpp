#include "quenwick/API/APIService/APIService.h"

#include <utility>

namespace quenwick {
namespace {

constexpr auto kProductionOrigin = "https://api.quenwick.example";

struct Shared {
  std::mutex mutex;
  std::shared_ptr<APIService> service;
};

Shared& holder() {
  static auto& instance = *new Shared;
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
  std::lock_guard lock(holder().mutex);
  auto& service = holder().service;
  if (!service) service = std::make_shared<APIService>();
  return service;
}

void APIService::setShared(std::shared_ptr<APIService> service) {
  // The one that is replaced may go, and does so outside of the lock.
  std::unique_lock lock(holder().mutex);
  std::swap(holder().service, service);
  lock.unlock();
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

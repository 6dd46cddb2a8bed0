#include "tests/support/VerifiedService.h"

#include <algorithm>

#include "quenwick/API/APIService/APIService.h"
#include "quenwick/API/Repository/BehavioralVerificationRepository.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/SecItemStore.h"

namespace quenwick::tests {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

constexpr auto kKey = "demo-key";

/// The application's own, on a disk that may be slow.
platform::SecItemStore& patientKeychain() {
  return platform::SecItemStore::make({.folder = platform::settingsDirectory(),
                                       .application = "com.example.tests",
                                       .preferred = platform::SecItemBackendKind::sealedFile,
                                       .patience = std::chrono::minutes(1)});
}

platform::URL verified(SandboxService& service) {
  platform::SecItemStore::setStandard(patientKeychain());
  auto host = APIService::Host::custom(*platform::URL::parse(service.sandbox().service()));
  APIService::setShared(std::make_shared<APIService>(host, service.configuration()));
  BehavioralVerificationRepository repository;
  repository.invalidateBehaviorEndpointCache();
  return platform::wait(repository.verify(kKey));
}

}  // namespace

VerifiedService::VerifiedService()
    : service_(std::make_unique<SandboxService>()), endpoint_(verified(*service_)) {
  service_->sandbox().forgetRequests();
}

void VerifiedService::setFaults(std::string_view faults) {
  sandbox().setFaults(sandbox::BehaviorPart::events, faults);
}

std::vector<Dictionary> VerifiedService::events() {
  auto session = platform::URLSession::make(service_->configuration());
  auto url = platform::URL::parse("https://" + std::string(*endpoint_.host()) + "/_sandbox/events");
  auto answer = platform::wait(session->data({.url = url}));
  std::vector<Dictionary> bodies;
  for (const auto& entry : listed(answer.data, "events")) {
    bodies.push_back(*entry.find("body")->as<Dictionary>());
  }
  return bodies;
}

std::vector<Dictionary> VerifiedService::refusals() {
  return listed(sandbox().refusals(), "refusals");
}

std::vector<std::string> VerifiedService::receivedPaths() const {
  std::vector<std::string> paths;
  auto prefix = "POST " + std::string(endpoint_.host().value());
  for (const auto& line : service_->received()) {
    if (line.starts_with(prefix)) paths.push_back(line.substr(prefix.size()));
  }
  return paths;
}

void VerifiedService::end() { service_.reset(); }

Value sorted(const Value& value) {
  if (const auto* list = value.as<List>()) {
    List result;
    for (const auto& element : *list) result.push_back(sorted(element));
    return result;
  }
  const auto* dictionary = value.as<Dictionary>();
  if (!dictionary) return value;
  std::vector<Dictionary::Entry> entries;
  for (const auto& [key, element] : *dictionary) entries.push_back({key, sorted(element)});
  std::ranges::sort(entries, {}, &Dictionary::Entry::key);
  return Dictionary::ofUnique(std::move(entries));
}

}  // namespace quenwick::tests

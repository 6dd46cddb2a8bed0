#include <utility>

#include "quenwick/API/Repository/BehavioralVerificationRepository.h"
#include "quenwick/client/DeeplinkHandlers.h"
#include "quenwick/client/Ending.h"
#include "quenwick/client/EventsEnabled.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/client/VerificationFailure.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Task.h"

namespace quenwick {
namespace {

constexpr auto kAPIKeyKey = "quen_wick_api_key";

platform::Task<platform::URL> endpointFor(std::string apiKey, std::stop_token stop) {
  co_return co_await BehavioralVerificationRepository().verify(std::move(apiKey), std::move(stop));
}

platform::Task<void> enableEvents(std::string apiKey, std::shared_ptr<Ending> ending,
                                  std::function<void(const platform::URL&)> enable) {
  std::exception_ptr failure;
  try {
    enable(co_await endpointFor(apiKey, ending->token()));
  } catch (...) {
    failure = std::current_exception();
  }
  if (failure) Logger::error(QWLogType::behaviorEvent, verificationFailureLine(failure, apiKey));
}

/// What both forms of `start` do once the handler is set.
void begin(const std::vector<std::string>& deeplinkDomains, const LaunchOptions& launchOptions) {
  QWClient::registerDeeplinkDomains(deeplinkDomains);
  QWClient::registerDeeplinkDomainsFromPlist();
  QWClient::handleURLFromLaunchOptions(launchOptions);
}

void registerForBehaviors(const std::optional<std::string>& apiKey) {
  if (apiKey) {
    QWClient::registerForBehaviors(*apiKey);
  } else {
    QWClient::registerForBehaviorsFromPlist();
  }
}

}  // namespace

void QWClient::start(StartOptions options) {
  if (!enter()) return;
  shared()->deeplinkHandlers().setHandler(std::move(options.deeplinkHandler));
  begin(options.deeplinkDomains, options.launchOptions);
  if (options.shouldRegisterForBehaviorEvents) quenwick::registerForBehaviors(options.apiKey);
}

void QWClient::startWithResult(StartWithResultOptions options) {
  if (!enter()) return;
  shared()->deeplinkHandlers().setCompatibilityHandler(std::move(options.result));
  begin(options.deeplinkDomains, options.launchOptions);
  quenwick::registerForBehaviors(options.apiKey);
}

std::optional<TaskHandle> QWClient::registerForBehaviors(std::string_view apiKey) {
  if (!enter()) return std::nullopt;
  std::stop_source own;
  auto ending = std::make_shared<Ending>(own.get_token());
  auto enable = [](const platform::URL& endpoint) {
    auto client = shared();
    client->eventManager().start(endpoint);
    client->eventsEnabled().announce();
  };
  return platform::startTask(enableEvents(std::string(apiKey), std::move(ending), enable), own);
}

std::optional<TaskHandle> QWClient::registerForBehaviorsFromPlist(const Bundle& bundle) {
  if (!enter()) return std::nullopt;
  if (auto key = bundle.text(kAPIKeyKey)) return registerForBehaviors(*key);
  Logger::error(QWLogType::behaviorEvent, "Behavioral Verification failed: API Key Not Found");
  return std::nullopt;
}

void QWClient::setEventsEnabledHandler(std::function<void()> handler) {
  if (enter()) shared()->eventsEnabled().setHandler(std::move(handler));
}

}  // namespace quenwick

#include "quenwick/client/QWClient.h"
#include "quenwick/runtime/Handles.h"
#include "quenwick/runtime/Records.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {

using ClientPointer = std::shared_ptr<QWClient>;

/// A new client, as {"selector": "init", "arguments": []}.
template <>
struct Kind<ClientPointer> {
  static std::string name() { return "QWClient"; }
  static ClientPointer read(platform::Value value) {
    auto* dictionary = value.as<Dictionary>();
    auto call = dictionary ? InitialiserCall::from(*dictionary) : std::nullopt;
    if (!call || call->selector != "init" || !call->arguments.empty()) {
      throw ArgumentError(R"(must be {"selector": "init", "arguments": []})");
    }
    return std::make_shared<QWClient>();
  }
};

namespace {

using Text = std::optional<std::string>;
using Domains = std::vector<std::string>;

std::optional<Handle> handleOf(std::optional<TaskHandle> task) {
  if (!task) return std::nullopt;
  return Handle{
      Handles::shared().add([task]() mutable { task->cancel(); },
                            [task] { return task->waitFor(std::chrono::nanoseconds(0)); })};
}

}  // namespace

std::vector<Selector> startSelectors() {
  return {
      selector(
          "startWithApiKey:deeplinkDomains:launchOptions:shouldRegisterForBehaviorEvents:"
          "deeplinkHandler:",
          [](Text apiKey, Domains domains, const std::optional<Dictionary>& launchOptions,
             bool shouldRegister, std::optional<OutcomeCallback> handler) {
            QWClient::start({.apiKey = std::move(apiKey),
                             .deeplinkDomains = std::move(domains),
                             .launchOptions = launchOptions.value_or(Dictionary()),
                             .shouldRegisterForBehaviorEvents = shouldRegister,
                             .deeplinkHandler = handlerOf(std::move(handler))});
          },
          "apiKey", "deeplinkDomains", "launchOptions", "shouldRegisterForBehaviorEvents",
          "deeplinkHandler"),
      selector(
          "startWithApiKey:deeplinkDomains:launchOptions:result:",
          [](Text apiKey, Domains domains, const std::optional<Dictionary>& launchOptions,
             std::optional<LinkOrErrorCallback> result) {
            QWClient::startWithResult({.apiKey = std::move(apiKey),
                                       .deeplinkDomains = std::move(domains),
                                       .launchOptions = launchOptions.value_or(Dictionary()),
                                       .result = handlerOf(std::move(result))});
          },
          "apiKey", "deeplinkDomains", "launchOptions", "result"),
      selector(
          "registerForBehaviorsWithApiKey:",
          [](const std::string& apiKey) {
            return handleOf(QWClient::registerForBehaviors(apiKey));
          },
          "apiKey"),
      selector("registerForBehaviorsFromPlist",
               [] { return handleOf(QWClient::registerForBehaviorsFromPlist()); }),
      selector(
          "registerForBehaviorsFromPlistWithBundle:",
          [](Dictionary info) {
            return handleOf(QWClient::registerForBehaviorsFromPlist(Bundle(std::move(info))));
          },
          "bundle"),
      selector(
          "setEventsEnabledHandler:",
          [](const std::optional<PlainCallback>& handler) {
            std::function<void()> call;
            if (handler) call = [handler] { (*handler)({}); };
            QWClient::setEventsEnabledHandler(std::move(call));
          },
          "handler"),
      selector(
          "setShared:", [](ClientPointer client) { QWClient::setShared(std::move(client)); },
          "client"),
      selector("enabledLogTypes", [] { return QWClient::enabledLogTypes(); }),
      selector(
          "setEnabledLogTypes:", [](QWLogType types) { QWClient::setEnabledLogTypes(types); },
          "types"),
  };
}

}  // namespace quenwick::runtime

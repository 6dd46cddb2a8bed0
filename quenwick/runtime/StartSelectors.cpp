#include "quenwick/client/QWClient.h"
#include "quenwick/runtime/Clients.h"
#include "quenwick/runtime/Handles.h"
#include "quenwick/runtime/Records.h"
#include "quenwick/runtime/Selectors.h"

namespace quenwick::runtime {

using ClientPointer = std::shared_ptr<QWClient>;

/// A new client, as {"selector": "init", "arguments": []}, or one by its number.
template <>
struct Kind<ClientPointer> {
  static constexpr std::string_view name = "QWClient";
  static ClientPointer read(platform::Value&& value) {
    if (const auto* number = value.as<std::int64_t>()) {
      if (auto client = Clients::shared().at(*number)) return client;
    }
    auto* dictionary = value.as<Dictionary>();
    auto call = dictionary ? InitialiserCall::from(*dictionary) : std::nullopt;
    if (!call || call->selector != "init" || !call->arguments.empty()) {
      throw ArgumentError(R"(must be a client's number, or {"selector": "init", "arguments": []})");
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

constexpr Selector kSelectors[] = {
    {"startWithApiKey:deeplinkDomains:launchOptions:shouldRegisterForBehaviorEvents:"
     "deeplinkHandler:",
     {"apiKey", "deeplinkDomains", "launchOptions", "shouldRegisterForBehaviorEvents",
      "deeplinkHandler"},
     calls([](Text apiKey, Domains domains, const std::optional<Dictionary>& launchOptions,
              bool shouldRegister, std::optional<OutcomeCallback> handler) {
       QWClient::start({.apiKey = std::move(apiKey),
                        .deeplinkDomains = std::move(domains),
                        .launchOptions = launchOptions.value_or(Dictionary()),
                        .shouldRegisterForBehaviorEvents = shouldRegister,
                        .deeplinkHandler = handlerOf(std::move(handler))});
     })},
    {"startWithApiKey:deeplinkDomains:launchOptions:result:",
     {"apiKey", "deeplinkDomains", "launchOptions", "result"},
     calls([](Text apiKey, Domains domains, const std::optional<Dictionary>& launchOptions,
              std::optional<LinkOrErrorCallback> result) {
       QWClient::startWithResult({.apiKey = std::move(apiKey),
                                  .deeplinkDomains = std::move(domains),
                                  .launchOptions = launchOptions.value_or(Dictionary()),
                                  .result = handlerOf(std::move(result))});
     })},
    {"registerForBehaviorsWithApiKey:", {"apiKey"}, calls([](const std::string& apiKey) {
       return handleOf(QWClient::registerForBehaviors(apiKey));
     })},
    {"registerForBehaviorsFromPlist", {}, calls([] {
       return handleOf(QWClient::registerForBehaviorsFromPlist());
     })},
    {"registerForBehaviorsFromPlistWithBundle:", {"bundle"}, calls([](Dictionary info) {
       return handleOf(QWClient::registerForBehaviorsFromPlist(Bundle(std::move(info))));
     })},
    {"setEventsEnabledHandler:",
     {"handler"},
     calls([](const std::optional<PlainCallback>& handler) {
       std::function<void()> call;
       if (handler) call = [handler] { (*handler)({}); };
       QWClient::setEventsEnabledHandler(std::move(call));
     })},
    {"shared", {}, calls([] { return Handle{Clients::shared().number(QWClient::shared())}; })},
    {"setShared:", {"client"}, calls([](ClientPointer client) {
       QWClient::setShared(std::move(client));
     })},
    {"enabledLogTypes", {}, calls([] { return QWClient::enabledLogTypes(); })},
    {"setEnabledLogTypes:", {"types"}, calls([](QWLogType types) {
       QWClient::setEnabledLogTypes(types);
     })},
};
static_assert(areNamed(kSelectors));

}  // namespace

std::span<const Selector> startSelectors() { return kSelectors; }

}  // namespace quenwick::runtime

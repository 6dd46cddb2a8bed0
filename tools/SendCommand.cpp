#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <mutex>

#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/JSONSerialization.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/LineRecorder.h"
#include "tools/LoadingOptions.h"
#include "tools/Output.h"
#include "tools/Verification.h"

namespace quenwick::tools {
namespace {

using platform::Dictionary;
using platform::List;
using Acknowledgement = platform::Task<BehavioralEventContainer>;

constexpr std::chrono::seconds kPatience(90);  // longer than the library's own time-outs

/// Keeps the identifier that the service gives an event.
class Watched : public BehavioralEventRequestable {
 public:
  explicit Watched(std::shared_ptr<const BehavioralEventRequestable> api) : api_(std::move(api)) {}

  Acknowledgement sendEvent(Dictionary payload) const override {
    return kept(api_->sendEvent(std::move(payload)), outcome_);
  }
  Acknowledgement identifyUser(Dictionary payload) const override {
    return kept(api_->identifyUser(std::move(payload)), outcome_);
  }
  const TimestampGenerator& timestampGenerator() const override {
    return api_->timestampGenerator();
  }

  std::optional<std::string> requestID() const {
    std::lock_guard lock(outcome_->mutex);
    return outcome_->requestID;
  }

 private:
  struct Outcome {
    std::mutex mutex;
    std::optional<std::string> requestID;
  };

  static Acknowledgement kept(Acknowledgement sending, std::shared_ptr<Outcome> outcome) {
    auto answer = co_await sending;
    std::lock_guard lock(outcome->mutex);
    outcome->requestID = answer.requestID;
    co_return answer;
  }

  std::shared_ptr<const BehavioralEventRequestable> api_;
  std::shared_ptr<Outcome> outcome_ = std::make_shared<Outcome>();
};

struct Report {
  std::string event;
  std::optional<std::string> requestID = std::nullopt;
  std::vector<std::string> lines = {};
};

using Offer = std::function<void(BehaviorEventManager&)>;

/// The manager's call for the event of that name.
Offer offerOf(const std::string& event, const Dictionary& properties) {
  using Call = void (BehaviorEventManager::*)(Dictionary);
  static constexpr std::array<std::pair<std::string_view, Call>, 6> kCalls = {{
      {"product_viewed", &BehaviorEventManager::productViewed},
      {"product_added", &BehaviorEventManager::productAdded},
      {"product_removed", &BehaviorEventManager::productRemoved},
      {"product_searched", &BehaviorEventManager::productSearched},
      {"category_viewed", &BehaviorEventManager::categoryViewed},
      {"order_completed", &BehaviorEventManager::orderCompleted},
  }};
  const auto* known = std::ranges::find(kCalls, event, &std::pair<std::string_view, Call>::first);
  return [=](BehaviorEventManager& manager) {
    if (known == kCalls.end()) return manager.logCustomEvent(event, properties);
    (manager.*known->second)(properties);
  };
}

/// What the keychain has to say of itself is no line about an event.
void openKeychain() {
  AuthenticationKeychain::standard().string(rawValue(SecureSessionData::behaviorAPIToken));
}

/// Verifies the key, has the event offered and waits for what becomes of it.
Report send(const std::string& event, const Offer& offer, const Arguments& arguments) {
  auto apiKey = apiKeyFrom(arguments);
  auto service = serviceFrom(arguments);
  Deadline deadline(arguments, kPatience);
  openKeychain();
  auto recorder = LineRecorder::install();
  auto verification = verify(*service, apiKey, deadline);
  Report report{.event = event};
  if (verification.error) {
    if (!deadline.hasPassed()) report.lines = recorder->lines();
    report.lines.push_back(*verification.error);
    return report;
  }
  auto endpoint = APIService::Host::custom(*platform::URL::parse(*verification.endpoint));
  auto api = std::make_shared<Watched>(service->behavioralEvent(endpoint)->requester());
  BehaviorEventManager manager;
  manager.start(std::make_shared<const BehavioralEventRepository>(api));
  offer(manager);
  bool isEnded = manager.flush(deadline.left());
  report.requestID = api->requestID();
  if (report.requestID) {
    recorder->passOnErrors();
    return report;
  }
  report.lines = recorder->lines();
  if (!isEnded) report.lines.push_back(deadline.line());
  return report;
}

int finish(const Report& report, const Arguments& arguments) {
  if (arguments.has("--json")) {
    Dictionary object{{"event", report.event}, {"acknowledged", report.requestID.has_value()}};
    if (report.requestID) {
      object.set("requestID", *report.requestID);
    } else {
      object.set("error", List(report.lines.begin(), report.lines.end()));
    }
    printJSON(object);
  } else if (report.requestID) {
    print(dim("acknowledged") + "  " + bold(report.event) + " as " + plain(*report.requestID) +
          "\n");
  } else {
    print(dim("not sent") + "  " + bold(report.event) + "\n");
    for (const auto& line : report.lines) print("  " + plain(line) + "\n");
  }
  return report.requestID ? kDone : kFailed;
}

Dictionary propertiesFrom(const Arguments& arguments) {
  auto text = arguments.value("--properties");
  if (!text) return {};
  try {
    auto value = platform::JSONSerialization::parse(*text);
    if (const auto* properties = value.as<Dictionary>()) return *properties;
  } catch (const platform::JSONError& error) {
    throw UsageError("--properties: " + error.localizedDescription());
  }
  throw UsageError("--properties takes a JSON object");
}

Arguments argumentsFrom(std::span<const std::string> words, std::vector<std::string_view> own) {
  own.insert(own.end(), {"--api-key", "--service"});
  return Arguments(words, {.valued = loadingOptions(std::move(own)), .flags = {"--json"}});
}

}  // namespace

int sendCommand(std::span<const std::string> words) {
  auto arguments = argumentsFrom(words, {"--properties"});
  const auto& event = arguments.onlyWord("the event");
  auto offer = offerOf(event, propertiesFrom(arguments));
  return finish(send(event, offer, arguments), arguments);
}

int identifyCommand(std::span<const std::string> words) {
  auto arguments = argumentsFrom(words, {});
  const auto& user = arguments.onlyWord("the user's identifier");
  auto offer = [&](BehaviorEventManager& manager) { manager.identifyUser(user); };
  return finish(send("identify", offer, arguments), arguments);
}

}  // namespace quenwick::tools

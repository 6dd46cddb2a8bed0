#include <algorithm>
#include <stdexcept>

#include "quenwick/CoreData/CoreDataManager.h"
#include "quenwick/CoreData/DeeplinkQWU.h"
#include "quenwick/CoreData/ManagedObjectType.h"
#include "quenwick/platform/ManagedObjectContext.h"
#include "quenwick/state/Analytics.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/LineRecorder.h"
#include "tools/Output.h"

namespace quenwick::tools {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

/// The stored link-user identifiers, newest first.
List links() {
  List list;
  auto context = CoreDataManager::shared().backgroundContext();
  if (!context) return list;
  context->performAndWait([&] {
    auto records = fetch<DeeplinkQWU>(*context, [](platform::FetchRequest& request) {
      request.sortDescriptors = DeeplinkQWU::defaultSortDescriptors();
    });
    for (const auto* record : records) {
      auto seen = record->lastSeenAt();
      list.push_back(
          Dictionary{{"value", orNull(record->value())},
                     {"lastSeenAt", seen ? Value(platform::secondsSince1970(*seen)) : Value()}});
    }
  });
  return list;
}

/// All of it as it stands: who looks makes no identifier, and so is no first launch.
Dictionary state() {
  auto& analytics = Analytics::shared();
  auto sdkID = analytics.keptSDKID();
  Dictionary datapoints;
  for (const auto& [key, value] : analytics.keptDatapoints()) datapoints.set(key, value);
  return {{"sdkID", sdkID ? Value(sdkID->uuidString()) : Value()},
          {"isFirstInstall", !sdkID},
          {"anonymousID", orNull(analytics.keptAnonymousID())},
          {"qwU", orNull(analytics.qwU())},
          {"qwuDeeplink", orNull(analytics.qwuDeeplink())},
          {"qwu", orNull(analytics.qwu())},
          {"rulesPicKey", orNull(analytics.rulesPicKey())},
          {"datapoints", std::move(datapoints)},
          {"links", links()}};
}

std::string textOf(const Value& value) {
  if (const auto* text = value.as<std::string>()) return bold(*text);
  if (const auto* flag = value.as<bool>()) return *flag ? "yes" : "no";
  return dim("none");
}

void printRow(std::string_view name, const Value& value, std::size_t width) {
  std::string head(name);
  head.resize(std::max(width, name.size()), ' ');
  print(dim(head) + "  " + textOf(value) + "\n");
}

void printForPerson(const Dictionary& all) {
  constexpr std::size_t kWidth = 14;
  constexpr std::size_t kDatapointWidth = 21;
  for (const auto& [name, value] : all) {
    if (const auto* datapoints = value.as<Dictionary>()) {
      print("\n");
      for (const auto& [key, text] : *datapoints) printRow(key, text, kDatapointWidth);
    } else if (const auto* list = value.as<List>()) {
      print("\nlink identifiers, newest first\n");
      if (list->empty()) print(dim("  none yet") + "\n");
      for (const auto& link : *list) {
        const auto& fields = *link.as<Dictionary>();
        const auto* seen = fields.find("lastSeenAt")->as<double>();
        print("  " + dim(seen ? dateText(*seen) : "never seen") + "  " +
              textOf(*fields.find("value")) + "\n");
      }
    } else {
      printRow(name, value, kWidth);
    }
  }
}

}  // namespace

int stateCommand(std::span<const std::string> words) {
  Arguments arguments(words, {.valued = {}, .flags = {"--json"}});
  arguments.noWords();
  auto recorder = LineRecorder::install();
  Analytics::shared();
  if (auto errors = recorder->errors(); !errors.empty()) throw std::runtime_error(errors.front());
  auto all = state();
  if (!recorder->errors().empty()) {
    recorder->passOnErrors();
    throw std::runtime_error("the link identifiers cannot be read");
  }
  if (arguments.has("--json")) {
    printJSON(all);
  } else {
    printForPerson(all);
  }
  return kDone;
}

}  // namespace quenwick::tools

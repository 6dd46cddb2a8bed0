#include <array>
#include <cstdio>

#include "quenwick/deeplink/DeeplinkManager.h"
#include "quenwick/deeplink/DeeplinkResolutionError.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/HopRecorder.h"
#include "tools/LoadingOptions.h"
#include "tools/Output.h"

namespace quenwick::tools {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

/// How a resolution went.
struct Report {
  std::string link;
  std::optional<std::string> destination = std::nullopt;
  std::optional<platform::PlatformError> error = std::nullopt;
  std::vector<Hop> hops = {};
  std::optional<int> status = std::nullopt;
  std::shared_ptr<const platform::PlatformError> loadError = nullptr;

  /// Where no server answered at all, the destination is nothing but the link.
  bool isDone() const { return destination && !(loadError && hops.empty()); }
};

Report resolve(const platform::URL& link, const Arguments& arguments) {
  auto recorder = std::make_shared<HopRecorder>();
  DeeplinkManager manager(link,
                          platform::URLSession::make(sessionConfiguration(arguments), recorder));
  Report report{.link = manager.url().absoluteString()};
  Deadline deadline(arguments);
  try {
    report.destination = platform::wait(manager.resolve(deadline.token())).absoluteString();
  } catch (const DeeplinkResolutionError& error) {
    report.error = deadline.hasPassed()
                       ? DeeplinkResolutionError::failure(report.link, deadline.line()).nsError()
                       : error.nsError();
  }
  report.hops = recorder->hops();
  report.status = recorder->status();
  report.loadError = recorder->loadError();
  return report;
}

Report unparsable(const std::string& link) {
  auto error = DeeplinkResolutionError::failure(link, "The link is not a URL.");
  return {.link = link, .error = error.nsError()};
}

Value jsonOf(const Hop& hop) {
  return Dictionary{{"status", hop.status},    {"url", hop.url},
                    {"qw_u", orNull(hop.qwU)}, {"rules_key", orNull(hop.rulesKey)},
                    {"halted", hop.isHalted},  {"milliseconds", hop.milliseconds}};
}

Value jsonOf(const Report& report) {
  Dictionary object{{"link", report.link}};
  if (report.destination) object.set("destination", *report.destination);
  if (report.error) {
    object.set("error", Dictionary{{"domain", report.error->domain()},
                                   {"code", report.error->code()},
                                   {"reason", report.error->localizedDescription()}});
  }
  List hops;
  for (const auto& hop : report.hops) hops.push_back(jsonOf(hop));
  object.set("hops", std::move(hops));
  object.set("status", report.status ? Value(*report.status) : Value());
  Value loadError;
  if (const auto& error = report.loadError) {
    loadError = Dictionary{{"domain", error->domain()},
                           {"code", error->code()},
                           {"description", error->localizedDescription()}};
  }
  object.set("loadError", std::move(loadError));
  return object;
}

std::string line(int index, const Hop& hop) {
  std::array<char, 64> head{};
  std::snprintf(head.data(), head.size(), "%3d  %d  %7.1f ms  ", index, hop.status,
                hop.milliseconds);
  std::string text = dim(head.data()) + plain(hop.url) + "\n";
  const std::string indent(22, ' ');
  if (hop.qwU) text += indent + "identifier  " + bold(*hop.qwU) + "\n";
  if (hop.rulesKey) text += indent + "rules key   " + bold(*hop.rulesKey) + "\n";
  if (hop.isHalted) text += indent + "the chain is to end here: not followed\n";
  return text;
}

void printForPerson(const Report& report) {
  print(dim("link") + "         " + plain(report.link) + "\n");
  for (int index = 1; const auto& hop : report.hops) print(line(index++, hop));
  if (report.destination) print(dim("destination") + "  " + bold(*report.destination) + "\n");
  if (report.error) {
    auto reason = report.error->localizedDescription();
    reason.erase(reason.find_last_not_of(" \t\r\n") + 1);
    if (reason.empty()) reason = "(the answer has no text)";
    auto status = report.status ? std::to_string(*report.status) + "  " : "";
    print(dim("not resolved") + " " + status + plain(reason) + "\n");
  }
  if (const auto& error = report.loadError; error && report.destination) {
    print(dim("not loaded") + "   " + plain(error->localizedDescription()) + "\n");
  }
}

}  // namespace

int resolveCommand(std::span<const std::string> words) {
  Arguments arguments(words, {.valued = loadingOptions(), .flags = {"--json"}});
  const auto& text = arguments.onlyWord("the link");
  auto link = platform::URL::parse(text);
  auto report = link ? resolve(*link, arguments) : unparsable(text);
  if (arguments.has("--json")) {
    printJSON(jsonOf(report));
  } else {
    printForPerson(report);
  }
  return report.isDone() ? kDone : kFailed;
}

}  // namespace quenwick::tools

#include <charconv>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "quenwick/deeplink/DeeplinkManager.h"
#include "quenwick/deeplink/DeeplinkResolutionError.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/HopRecorder.h"
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
  std::shared_ptr<const platform::PlatformError> loadError = nullptr;
};

std::string fileContents(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  if (!stream) throw UsageError("the file " + path + " cannot be read");
  return {std::istreambuf_iterator<char>(stream), {}};
}

template <class Number>
std::optional<Number> number(std::string_view text) {
  Number value{};
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  bool isWhole = error == std::errc() && end == text.data() + text.size() && !text.empty();
  return isWhole ? std::optional(value) : std::nullopt;
}

/// HOST:PORT:ADDRESS:PORT
platform::ConnectTo connectTo(const std::string& text) {
  auto first = text.find(':');
  auto second = text.find(':', first == text.npos ? first : first + 1);
  auto last = text.rfind(':');
  if (second != text.npos && last > second) {
    auto port = number<std::uint16_t>(std::string_view(text).substr(first + 1, second - first - 1));
    auto toPort = number<std::uint16_t>(std::string_view(text).substr(last + 1));
    if (port && toPort) {
      return {text.substr(0, first), *port, text.substr(second + 1, last - second - 1), *toPort};
    }
  }
  throw UsageError("--connect-to takes HOST:PORT:ADDRESS:PORT, not " + text);
}

platform::URLSessionConfiguration configurationFrom(const Arguments& arguments) {
  platform::URLSessionConfiguration configuration;
  if (auto file = arguments.value("--cacert")) {
    configuration.additionalTrustAnchors = fileContents(*file);
    if (configuration.additionalTrustAnchors.find("-----BEGIN CERTIFICATE-----") ==
        std::string::npos) {
      throw UsageError("the file " + *file + " holds no certificate");
    }
  }
  for (const auto& text : arguments.values("--connect-to")) {
    configuration.connectTo.push_back(connectTo(text));
  }
  return configuration;
}

/// Ends the resolution once the caller's own deadline has passed.
platform::Cancellable deadlineFrom(const Arguments& arguments, const std::stop_source& stop) {
  auto text = arguments.value("--timeout");
  if (!text) return {};
  auto seconds = number<double>(*text);
  constexpr double kLongest = 1e9;
  if (!seconds || !(*seconds >= 0 && *seconds < kLongest)) {
    throw UsageError("--timeout takes seconds, not " + *text);
  }
  auto duration =
      std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::duration<double>(*seconds));
  return platform::postAfter(duration, platform::pool(), [stop]() mutable { stop.request_stop(); });
}

Report resolve(const platform::URL& link, const Arguments& arguments) {
  auto recorder = std::make_shared<HopRecorder>();
  DeeplinkManager manager(link, platform::URLSession::make(configurationFrom(arguments), recorder));
  Report report{.link = manager.url().absoluteString()};
  std::stop_source stop;
  auto deadline = deadlineFrom(arguments, stop);
  try {
    report.destination = platform::wait(manager.resolve(stop.get_token())).absoluteString();
  } catch (const DeeplinkResolutionError& error) {
    report.error = error.nsError();
  }
  report.hops = recorder->hops();
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
    print(dim("not resolved") + " " + plain(reason) + "\n");
  }
  if (const auto& error = report.loadError; error && report.destination) {
    print(dim("not loaded") + "   " + plain(error->localizedDescription()) + "\n");
  }
}

}  // namespace

int resolveCommand(std::span<const std::string> words) {
  Arguments arguments(words,
                      {.valued = {"--cacert", "--connect-to", "--timeout"}, .flags = {"--json"}});
  const auto& text = arguments.onlyWord("the link");
  auto link = platform::URL::parse(text);
  auto report = link ? resolve(*link, arguments) : unparsable(text);
  if (arguments.has("--json")) {
    printJSON(jsonOf(report));
  } else {
    printForPerson(report);
  }
  return report.destination ? kDone : kFailed;
}

}  // namespace quenwick::tools

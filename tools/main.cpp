#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/logging/Logger.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/Text.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/Output.h"

namespace quenwick::tools {
namespace {

constexpr auto kUsage =
    R"(usage: quenwick [--home DIR] [--bundle-id ID] [--verbose] COMMAND ...

  resolve LINK      follow a tracking link to its destination, and keep what it carries
  classify LINK     the shape of a link: rpLink, cpLink, goLinks or none
  state             what is kept for this install
  verify            prove an API key, and learn where events go
  send EVENT        verify, and send one event: product_viewed, product_added, product_removed,
                    product_searched, category_viewed, order_completed, or one of your own
    --properties JSON                    the event's properties, as one object
  identify ID       verify, and say that the user is known by that identifier

  verify, send and identify take:
    --api-key KEY                        the application's key
    --service URL                        ask this service instead of the production one
  These and resolve take:
    --cacert PEM                         trust the issuers in this file too
    --connect-to HOST:PORT:ADDRESS:PORT  reach HOST:PORT at ADDRESS:PORT (repeatable)
    --timeout SECONDS                    give up after so long

  --json            (behind a command) one JSON object instead of text
  --home DIR        keep all state under DIR instead of the user's folders
  --bundle-id ID    act as the application of that identifier
  --verbose         write the library's log to standard error
  --version         print the version
  -h, --help        print this text
  --                what follows is no option, whatever it begins with

exit codes: 0 done, 1 not done, 2 bad usage
)";

constexpr auto kBundleIdentifier = "com.quenwick.cli";

struct Command {
  std::string_view name;
  int (*run)(std::span<const std::string>);
};

constexpr std::array kCommands = {
    Command{"resolve", &resolveCommand}, Command{"classify", &classifyCommand},
    Command{"state", &stateCommand},     Command{"verify", &verifyCommand},
    Command{"send", &sendCommand},       Command{"identify", &identifyCommand}};

/// Where the command's name stands: behind the program's own options.
std::size_t commandIndex(std::span<const std::string> line) {
  std::size_t index = 0;
  while (index < line.size() && line[index].starts_with('-')) {
    bool takesNext = line[index] == "--home" || line[index] == "--bundle-id";
    index += takesNext ? 2 : 1;
  }
  return std::min(index, line.size());
}

bool asksForHelp(std::span<const std::string> words) {
  auto options =
      words.first(static_cast<std::size_t>(std::ranges::find(words, "--") - words.begin()));
  return std::ranges::any_of(options,
                             [](const auto& word) { return word == "--help" || word == "-h"; });
}

std::string bundleIdentifier(const Arguments& arguments) {
  auto identifier = arguments.value("--bundle-id").value_or(kBundleIdentifier);
  if (!identifier.empty() && platform::isUTF8(identifier)) return identifier;
  throw UsageError("--bundle-id takes an identifier, as com.example.shop");
}

void configure(const Arguments& arguments) {
  platform::HostConfiguration host;
  host.bundleIdentifier = bundleIdentifier(arguments);
  host.bundleVersion = QUENWICK_VERSION;
  if (auto home = arguments.value("--home")) {
    if (home->empty()) throw UsageError("--home takes a folder");
    host.home = std::filesystem::absolute(*home);
  }
  platform::configureHost(std::move(host));

  if (arguments.has("--verbose")) {
    platform::setLogSink(std::make_shared<platform::StandardErrorLog>(platform::LogLevel::debug));
  } else {
    // The program reports by itself.
    SharedLogger::setEnabledLogTypes(QWLogType::none);
    platform::setLogSink(std::make_shared<platform::StandardErrorLog>(platform::LogLevel::error));
  }
}

int run(std::span<const std::string> line) {
  auto index = commandIndex(line);
  Arguments own(line.first(index), {.valued = {"--home", "--bundle-id"},
                                    .flags = {"-h", "--help", "--verbose", "--version"}});
  auto command = line.subspan(index);
  if (own.has("-h") || own.has("--help") || asksForHelp(command)) return print(kUsage), kDone;
  if (own.has("--version")) return print("quenwick " QUENWICK_VERSION "\n"), kDone;
  if (command.empty()) throw UsageError("there is no command");
  for (const auto& [name, runCommand] : kCommands) {
    if (name != command.front()) continue;
    configure(own);
    return runCommand(command.subspan(1));
  }
  throw UsageError("there is no command " + command.front());
}

/// Overwrites the API key in the command line that every user of the machine can read.
void hideKeys(std::span<char*> words) {
  constexpr std::string_view kOption = "--api-key";
  bool isKeyNext = false;
  for (char* word : words) {
    std::string_view text(word);
    if (isKeyNext) std::fill_n(word, text.size(), 'x');
    isKeyNext = text == kOption;
    bool isJoined = text.starts_with(kOption) && text.substr(kOption.size()).starts_with('=');
    auto before = kOption.size() + 1;
    if (isJoined) std::fill_n(word + before, text.size() - before, 'x');
  }
}

int runAndReport(std::span<const std::string> line) {
  try {
    return run(line);
  } catch (const UsageError& error) {
    std::fprintf(stderr, "quenwick: %s\n\n%s", error.what(), kUsage);
    return kBadUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "quenwick: %s\n", error.what());
    return kFailed;
  }
}

}  // namespace
}  // namespace quenwick::tools

int main(int count, char** words) {
  using namespace quenwick::tools;
  std::vector<std::string> line(words + std::min(count, 1), words + count);
  hideKeys({words, static_cast<std::size_t>(count)});
  keepStandardOutput();
  int code = runAndReport(line);
  if (endOutput()) return code;
  std::fputs("quenwick: standard output cannot be written\n", stderr);
  return kFailed;
}

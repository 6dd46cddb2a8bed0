#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/LoadingOptions.h"
#include "tools/Output.h"
#include "tools/Verification.h"

namespace quenwick::tools {
namespace {

platform::Dictionary jsonOf(const Verification& outcome) {
  if (outcome.error) return {{"error", *outcome.error}};
  return {
      {"endpoint", orNull(outcome.endpoint)},
      {"expiresAt", outcome.expiresAt ? platform::Value(*outcome.expiresAt) : platform::Value()},
      {"fromCache", outcome.isFromCache}};
}

void printForPerson(const Verification& outcome) {
  if (outcome.error) return print(dim("not verified") + "  " + plain(*outcome.error) + "\n");
  print(dim("endpoint") + "  " + bold(outcome.endpoint.value_or("")) + "\n");
  print(dim("until") + "     " + (outcome.expiresAt ? dateText(*outcome.expiresAt) : "unknown") +
        "\n");
  print(dim("from") + "      " + (outcome.isFromCache ? "the keychain" : "the service") + "\n");
}

}  // namespace

int verifyCommand(std::span<const std::string> words) {
  Arguments arguments(words,
                      {.valued = loadingOptions({"--api-key", "--service"}), .flags = {"--json"}});
  arguments.noWords();
  auto apiKey = apiKeyFrom(arguments);
  auto service = serviceFrom(arguments);
  auto outcome = verify(*service, apiKey, Deadline(arguments));
  if (arguments.has("--json")) {
    printJSON(jsonOf(outcome));
  } else {
    printForPerson(outcome);
  }
  return outcome.endpoint ? kDone : kFailed;
}

}  // namespace quenwick::tools

// Runs a host beside a sandbox, and looks at what came of it: it opened the link's destination, and
// the service has its event and nothing else.
//   beside_sandbox PROGRAM WORD...
// A word @options stands for the example's options, @json for the same as a configuration in JSON.

#include <boost/json.hpp>
#include <fstream>
#include <iostream>
#include <iterator>

#include "sandbox/Sandbox.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {
namespace {

namespace json = boost::json;

std::string configuration(const sandbox::Sandbox& sandbox, const std::string& home) {
  std::ifstream authority(sandbox.certificateAuthority());
  json::object object{{"serviceURL", sandbox.service()},
                      {"trustAnchors", std::string{std::istreambuf_iterator<char>(authority), {}}},
                      {"bundleIdentifier", "com.example.consumer"},
                      {"home", home}};
  object["connectTo"] = {{{"toAddress", "127.0.0.1"}, {"toPort", sandbox.port()}}};
  return json::serialize(object);
}

std::vector<std::string> filled(const std::vector<std::string>& words,
                                const sandbox::Sandbox& sandbox, const std::string& home) {
  std::vector<std::string> line;
  for (const auto& word : words) {
    if (word == "@json") {
      line.push_back(configuration(sandbox, home));
    } else if (word == "@options") {
      line.insert(line.end(), {sandbox.service(), sandbox.certificateAuthority().string(),
                               std::to_string(sandbox.port()), home});
    } else {
      line.push_back(word);
    }
  }
  return line;
}

/// What is not as it should be, line by line; nothing where all is.
std::string wrongs(const Finished& finished, const sandbox::Sandbox& sandbox) {
  constexpr auto kDestination = "https://shop.example/products/42?utm_source=mail";
  std::string wrong;
  if (finished.exitCode != 0) wrong += "ended with " + std::to_string(finished.exitCode) + "\n";
  if (finished.output.find(kDestination) == std::string::npos) wrong += "opened something else\n";
  auto events = json::parse(sandbox.events()).at("events").as_array();
  if (events.size() != 1 || events[0].at("body").at("event") != "product_viewed") {
    wrong += "the service has other events: " + json::serialize(events) + "\n";
  }
  if (sandbox.refusals() != R"({"refusals":[]})") wrong += sandbox.refusals() + "\n";
  return wrong;
}

}  // namespace
}  // namespace quenwick::tests

int main(int count, char** words) {
  using namespace quenwick;
  tests::TemporaryDirectory state;
  tests::TemporaryDirectory home;
  sandbox::Sandbox sandbox({.state = state.path()});
  auto finished =
      tests::runProgram(tests::filled({words + 1, words + count}, sandbox, home.path().string()));
  std::cout << finished.output;
  auto wrong = tests::wrongs(finished, sandbox);
  std::cerr << finished.errors << wrong;
  return wrong.empty() ? 0 : 1;
}

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

/// Says what is not as it should be; whether all is.
bool isRight(const Finished& finished, const sandbox::Sandbox& sandbox) {
  auto is = [](bool condition, const std::string& what) {
    if (!condition) std::cerr << "not so: " << what << '\n';
    return condition;
  };
  const auto events = json::parse(sandbox.events()).at("events").as_array();
  bool isOne = is(events.size() == 1, "the service has one event");
  return is(finished.exitCode == 0, "the host ended with 0") &
         is(finished.output.find("https://shop.example/products/42?utm_source=mail") !=
                finished.output.npos,
            "the host opened the destination") &
         is(isOne && events[0].at("body").at("event") == "product_viewed", "it is the product's") &
         is(sandbox.refusals() == R"({"refusals":[]})", "the service refused nothing");
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
  std::cerr << finished.errors;
  return tests::isRight(finished, sandbox) ? 0 : 1;
}

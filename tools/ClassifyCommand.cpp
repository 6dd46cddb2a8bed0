#include <array>

#include "quenwick/deeplink/DeeplinkPath.h"
#include "tools/Arguments.h"
#include "tools/Commands.h"
#include "tools/Output.h"

namespace quenwick::tools {
namespace {

std::string_view shapeOf(const std::string& text) {
  static constexpr std::array<std::string_view, 3> kNames = {"rpLink", "cpLink", "goLinks"};
  auto link = platform::URL::parse(text);
  auto shape = link ? DeeplinkPath::path(*link) : std::nullopt;
  return shape ? kNames.at(*shape) : "none";
}

}  // namespace

int classifyCommand(std::span<const std::string> words) {
  Arguments arguments(words, {.valued = {}, .flags = {"--json"}});
  const auto& link = arguments.onlyWord("the link");
  auto shape = shapeOf(link);
  if (arguments.has("--json")) {
    printJSON(platform::Dictionary{{"link", link}, {"shape", shape}});
  } else {
    print(std::string(shape) + "\n");
  }
  return kDone;
}

}  // namespace quenwick::tools

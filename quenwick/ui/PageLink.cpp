#include "quenwick/ui/PageLink.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "quenwick/platform/Text.h"
#include "quenwick/platform/URLComponents.h"

namespace quenwick {
namespace {

std::string wholePoints(double length) { return std::to_string(std::lround(length)); }

bool isTrue(const std::string& value) {
  static constexpr std::array<std::string_view, 4> kTrue{"", "true", "yes", "1"};
  return std::ranges::any_of(
      kTrue, [&](std::string_view word) { return platform::equalsIgnoringCase(value, word); });
}

}  // namespace

std::optional<platform::URL> pageURL(const platform::URL& link, platform::ViewSize viewport,
                                     const std::optional<std::string>& linkUser) {
  platform::URLComponents components(link);
  std::vector<platform::URLQueryItem> items{
      {"qw_viewport_width", wholePoints(viewport.width)},
      {"qw_viewport_height", wholePoints(viewport.height)},
  };
  if (linkUser) items.push_back({"qw_u", linkUser});
  items.push_back({"inFrame", std::nullopt});
  components.appendQueryItems(items);
  return components.url();
}

bool isCloseButtonHidden(bool hideCloseButton, const platform::URL& link) {
  if (hideCloseButton) return true;
  auto item = platform::URLComponents::queryItem(link, "hideCloseButton");
  return item && isTrue(item->value.value_or(""));
}

}  // namespace quenwick

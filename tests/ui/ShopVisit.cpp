#include "tests/ui/ShopVisit.h"

#include <algorithm>

namespace quenwick::tests {
namespace {

using platform::Dictionary;

/// Shorter lines of a colour are those of texts.
constexpr int kWidth = 60;

/// Whether it is a button of the shop, not one of the service's pages.
bool isShops(ShopVisit::Place place) {
  using enum ShopVisit::Place;
  return place == allProducts || place == addToBasket || place == offer;
}

/// The first of the texts that the dictionary has under one of the keys.
std::string firstOf(const Dictionary& dictionary, std::initializer_list<const char*> keys) {
  for (const auto* key : keys) {
    if (const auto* value = dictionary.find(key)) return *value->as<std::string>();
  }
  return "";
}

}  // namespace

ShopVisit::ShopVisit(Display& display, const SandboxService& service, const std::string& link)
    : display_(display), service_(service) {
  const auto& sandbox = service.sandbox();
  auto httpPort = std::to_string(sandbox.httpPort());
  program_ = std::make_unique<ChildProcess>(
      std::vector<std::string>{STOREFRONT, "--service", sandbox.service(), "--authority",
                               sandbox.certificateAuthority().string(), "--port",
                               std::to_string(sandbox.port()), "--http-port", httpPort, "--pages",
                               "http://127.0.0.1:" + httpPort, "--home",
                               (desktop_.folder() / "home").string(), link},
      desktop_.environment(display.name()));
}

bool ShopVisit::isSeen(Place place) const {
  return display_.widestPlaceOf(place, kWidth).has_value();
}

bool ShopVisit::comes(Place place) const {
  return eventually([&] { return isSeen(place); });
}

bool ShopVisit::goes(Place place) const {
  return eventually([&] { return !isSeen(place); });
}

bool ShopVisit::tap(Place place) {
  if (!comes(place)) return false;
  auto where = display_.widestPlaceOf(place, kWidth);
  if (!where) return false;
  auto [x, y] = *where;
  if (isShops(place) && !answersPointer(x, y)) return false;
  display_.click(x, y);
  return true;
}

/// Whether what is there takes on another colour under the pointer: it does once no view that goes
/// lies over it any more.
bool ShopVisit::answersPointer(int x, int y) const {
  auto before = display_.colorAt(x, y);
  return eventually([&, moves = 0]() mutable {
    display_.moveTo(x + ++moves % 2, y);
    return display_.colorAt(x, y) != before;
  });
}

void ShopVisit::pressEscape() {
  display_.focusWindow();
  display_.pressEscape();
}

std::vector<std::string> ShopVisit::reported() const {
  std::vector<std::string> all;
  for (const auto& one : service_.events()) {
    const auto& body = *one.find("body")->as<Dictionary>();
    const auto* properties = body.find("properties");
    all.push_back(firstOf(body, {"event", "type"}) + " " +
                  firstOf(properties ? *properties->as<Dictionary>() : body,
                          {"id", "button", "query", "user_id"}));
  }
  return all;
}

bool ShopVisit::reports(const std::string& event) const {
  return eventually([&] { return std::ranges::count(reported(), event) > 0; });
}

}  // namespace quenwick::tests

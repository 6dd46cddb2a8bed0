// Writes pictures of the storefront, and of the in-app views over it, into a folder, and ends. Each
// is taken on the way of a person who opens the shop with a link.

#include <cstdio>
#include <string>
#include <thread>

#include "tests/ui/ShopVisit.h"

namespace quenwick::tests {
namespace {

using Place = ShopVisit::Place;

constexpr int kWidth = 1024;
constexpr int kHeight = 700;

/// Waits until two pictures in a row, a little apart, are the same, and writes it.
bool take(Display& display, const std::string& file) {
  display.moveTo(4, kHeight / 2);  // where nothing answers to it
  std::uint32_t last = 0;
  bool isStill = eventually([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(300));
    return std::exchange(last, display.checksum()) == last;
  });
  if (!isStill || !display.save(file)) return false;
  std::printf("%s\n", file.c_str());
  return true;
}

int run(const std::string& folder) {
  Display display(kWidth, kHeight);
  SandboxService service;
  ShopVisit visit(display, service, "https://links.shop.example/p/go/1f");
  bool isDone = visit.reports("product_viewed 42") && visit.tap(Place::addToBasket) &&
                visit.tap(Place::offer) && visit.comes(Place::lookbook) &&
                take(display, folder + "/message.png") && visit.tap(Place::lookbook) &&
                visit.comes(Place::picture) && take(display, folder + "/browser.png");
  visit.pressEscape();
  return isDone && visit.comes(Place::note) && take(display, folder + "/product.png") &&
                 visit.tap(Place::allProducts) && visit.comes(Place::picture) &&
                 take(display, folder + "/storefront.png")
             ? 0
             : 1;
}

}  // namespace
}  // namespace quenwick::tests

int main(int count, char** words) { return count == 2 ? quenwick::tests::run(words[1]) : 2; }

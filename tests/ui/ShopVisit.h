#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/SandboxService.h"
#include "tests/ui/ChildProcess.h"
#include "tests/ui/Desktop.h"
#include "tests/ui/Display.h"

namespace quenwick::tests {

/// The storefront on a display, opened with a link, and a person in front of it.
class ShopVisit {
 public:
  /// What can be tapped, by its colour.
  enum Place : std::uint32_t {
    allProducts = 0xecf2ee,
    addToBasket = 0x1f6f4a,
    offer = 0xf3e3cd,     // on a product's page
    note = 0x24342c,      // and the button of the offer on the shelf
    lookbook = 0xb4532a,  // the message's first button
    boots = 0xf4e7d6,     // and its second
    picture = 0xcfe8d5,   // in the lookbook
  };

  ShopVisit(Display& display, const SandboxService& service, const std::string& link);

  /// Whether it comes to be seen, or is seen no more.
  bool comes(Place place) const;
  bool goes(Place place) const;
  /// Taps it once it is seen; false where it does not come.
  bool tap(Place place);
  void pressEscape();

  /// What the service acknowledged, as "product_viewed 42", "message_button lookbook".
  std::vector<std::string> reported() const;
  /// Whether that comes to be reported.
  bool reports(const std::string& event) const;

  Desktop& desktop() { return desktop_; }

 private:
  bool isSeen(Place place) const;
  bool answersPointer(int x, int y) const;

  Display& display_;
  const SandboxService& service_;
  Desktop desktop_;
  std::unique_ptr<ChildProcess> program_;
};

}  // namespace quenwick::tests

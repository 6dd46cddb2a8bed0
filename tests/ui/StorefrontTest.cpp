// The example with a window, as a customer uses it.

#include <gtest/gtest.h>

#include "tests/ui/ShopVisit.h"

namespace quenwick::tests {
namespace {

using Place = ShopVisit::Place;

TEST(Storefront, OpensWithALinkReportsTapsAndShowsTheServicesPages) {
  Display display(1024, 700);
  SandboxService service;
  ShopVisit visit(display, service, "https://links.shop.example/p/go/1f");
  ASSERT_TRUE(visit.reports("product_viewed 42"));
  EXPECT_TRUE(visit.reports("identify alice"));
  ASSERT_TRUE(visit.tap(Place::addToBasket));
  EXPECT_TRUE(visit.reports("product_added 42"));

  ASSERT_TRUE(visit.tap(Place::offer));
  ASSERT_TRUE(visit.tap(Place::lookbook));
  EXPECT_TRUE(visit.reports("message_button lookbook"));
  EXPECT_TRUE(visit.comes(Place::picture)) << "the lookbook, in the in-app browser";
  visit.pressEscape();
  EXPECT_TRUE(visit.comes(Place::note)) << "the button that was tapped";

  ASSERT_TRUE(visit.tap(Place::offer));
  ASSERT_TRUE(visit.tap(Place::boots));
  EXPECT_TRUE(visit.reports("message_button boots"));
  std::vector<std::string> opened;
  EXPECT_TRUE(eventually([&] { return !(opened = visit.desktop().opened()).empty(); }));
  EXPECT_EQ(opened, std::vector<std::string>{"shopapp://product/42?buttonID=boots"});
  EXPECT_TRUE(visit.comes(Place::addToBasket)) << "the shop is there again";
}

TEST(Storefront, GoesWhereALinkOfItsOwnSchemeLeads) {
  Display display(1024, 700);
  SandboxService service;
  ShopVisit visit(display, service, "shopapp://product/7");
  EXPECT_TRUE(visit.reports("product_viewed 7"));
}

}  // namespace
}  // namespace quenwick::tests

#include "quenwick/deeplink/DeeplinkPath.h"

#include <gtest/gtest.h>

namespace quenwick {
namespace {

std::optional<DeeplinkPath> path(const std::string& text) {
  auto url = platform::URL::parse(text);
  return url ? DeeplinkPath::path(*url) : std::nullopt;
}

TEST(DeeplinkPath, TheFirstShapeFoundAnywhereInTheLinkWins) {
  using Shape = std::optional<DeeplinkPath>;
  const std::pair<const char*, Shape> table[] = {
      {"https://h/p/rp/1f/url", DeeplinkPath::rpLink},
      {"https://h/p/rpm/1f/url", DeeplinkPath::rpLink},
      {"https://h/p/rp//url", {}},
      {"https://h/p/rp/x/y/urls", DeeplinkPath::rpLink},
      {"https://h/p/cp/x/c", DeeplinkPath::cpLink},
      {"https://h/p/cpm/x/cart", DeeplinkPath::cpLink},
      {"https://h/p/cp/c", {}},
      {"https://h/p/go/1f", DeeplinkPath::goLinks},
      {"https://h/p/gom/", DeeplinkPath::goLinks},
      {"https://h/p/go", {}},
      {"https://h/P/GO/1f", {}},
      {"https://h/p/goo/1f", {}},
      {"https://h/p/xx/", {}},
      {"https://h/p/go/1f?next=/p/cp/x/c", DeeplinkPath::cpLink},
      {"https://h/?next=/p/go/1f", DeeplinkPath::goLinks},
      {"https://h/p/cp/x/c/p/rp/1/url", DeeplinkPath::rpLink},
      {"https://h/p/gom?/", DeeplinkPath::goLinks},  // the pattern as plain text
      {"https://h/p/rpm?/.+/url", DeeplinkPath::rpLink},
  };
  for (const auto& [link, shape] : table) EXPECT_EQ(path(link), shape) << link;
}

TEST(DeeplinkPath, HostileLinksGetAnAnswerInBoundedTime) {
  EXPECT_EQ(path(""), std::nullopt);
  EXPECT_EQ(path("https://h/p/go/\x01"), std::nullopt);
  std::string repeated = "https://h";
  while (repeated.size() < 1'000'000) repeated += "/p/rp/";
  EXPECT_EQ(path(repeated), std::nullopt);
  EXPECT_EQ(path(repeated + "url"), DeeplinkPath::rpLink);
  EXPECT_EQ(path("https://h/p/go/" + std::string(1'000'000, 'a')), DeeplinkPath::goLinks);
}

}  // namespace
}  // namespace quenwick

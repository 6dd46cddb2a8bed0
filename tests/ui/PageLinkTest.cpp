#include "quenwick/ui/PageLink.h"

#include <gtest/gtest.h>

namespace quenwick {
namespace {

using Text = std::optional<std::string>;

platform::URL url(const std::string& text) { return platform::URL::parse(text).value(); }

TEST(PageLink, ItsOwnItemsStayAsWrittenAndThoseOfTheViewStandBehindThem) {
  const std::string size = "qw_viewport_width=390&qw_viewport_height=845";
  struct Case {
    const char* link;
    Text linkUser;
    std::string loaded;
  };
  for (const auto& [link, linkUser, loaded] : {
           Case{"https://h/m", {}, "https://h/m?" + size + "&inFrame"},
           Case{"https://h/m?", {}, "https://h/m?" + size + "&inFrame"},
           Case{"https://u@h:8/m%2f?a=%41+b&&qw_u=x&inFrame#top", "alice",
                "https://u@h:8/m%2f?a=%41+b&&qw_u=x&inFrame&" + size + "&qw_u=alice&inFrame#top"},
           Case{"http://h", "a b&c=d+\u00e9#/%",
                "http://h?" + size + "&qw_u=a%20b%26c%3Dd%2B%C3%A9%23/%25&inFrame"},
           Case{"https://h/", "", "https://h/?" + size + "&qw_u=&inFrame"},
       }) {
    auto made = pageURL(url(link), {389.6, 845.0}, linkUser);
    ASSERT_TRUE(made) << link;
    EXPECT_EQ(made->absoluteString(), loaded);
  }
}

TEST(PageLink, TheHostOrTheLinkHidesTheCloseButton) {
  for (auto [query, isHidden] : {std::pair("", false),
                                 {"?hideCloseButton", true},
                                 {"?hideCloseButton=", true},
                                 {"?a=b&hideCloseButton=TRUE", true},
                                 {"?hideCloseButton=1", true},
                                 {"?hideCloseButton=yes", true},
                                 {"?hideCloseButton=false", false},
                                 {"?hideCloseButton=0", false},
                                 {"?hideCloseButton=false&hideCloseButton=true", false},
                                 {"?hideclosebutton", false},
                                 {"#hideCloseButton", false}}) {
    auto link = url(std::string("https://h/") + query);
    EXPECT_EQ(isCloseButtonHidden(false, link), isHidden) << query;
    EXPECT_TRUE(isCloseButtonHidden(true, link)) << query;
  }
}

}  // namespace
}  // namespace quenwick

// Where the links of in-app views lead.

#include "tests/ui/WebViewFixture.h"

namespace quenwick::tests {
namespace {

/// A page whose whole area is one link.
std::string linkTo(const std::string& attributes) {
  return page("<a style='position:fixed;inset:0' " + attributes + "></a>");
}

std::string frame(const std::string& attributes) {
  return page("<iframe style='position:fixed;inset:0;border:0;width:100%;height:100%' " +
              attributes + "></iframe>");
}

TEST_F(WebViewTest, ATapDoesWhatThePolicySays) {
  enum Then { stays, closes, browses };
  struct Case {
    const char* what;
    const char* command;
    std::string page;
    const char* opened;
    const char* loaded;
    const char* button;
    Then then;
  };
  const std::string blank = "target=_blank href=";
  for (const auto& [what, command, body, opened, loaded, button, then] : {
           Case{"another scheme", "message", linkTo("href='tel:+1555?buttonID=call'"),
                "tel:+1555?buttonID=call", "", "call", closes},
           Case{"another scheme in the browser", "browser", linkTo("href=shopapp://p/1"),
                "shopapp://p/1", "", "", closes},
           Case{"an inFrame link", "message", linkTo("href='/in?inFrame&buttonID=i'"), "", "/in",
                "i", stays},
           Case{"an ordinary link of a message", "message", linkTo("href='/out?buttonID=o'"),
                "/out?buttonID=o", "", "o", stays},
           Case{"an inAppBrowser link", "message", linkTo("href='/web?inAppBrowser&buttonID=w'"),
                "", "/web", "w", browses},
           Case{"any link of the browser", "browser", linkTo("href='/in?buttonID=b'"), "", "/in",
                "b", stays},
           Case{"a script that a tap starts", "message",
                page("<div style='position:fixed;inset:0' onclick=\"location='/out'\"></div>"),
                "/out", "", "", stays},
           Case{"a link in an inner frame", "message",
                frame("srcdoc=\"<a style='position:fixed;inset:0' href='/out?buttonID=f'></a>\""),
                "/out?buttonID=f", "", "f", stays},
           Case{"a window of the browser", "browser", linkTo(blank + "/in"), "", "/in", "", stays},
           Case{"a window of a message", "message", linkTo(blank + "'/in?inFrame&buttonID=n'"), "",
                "/in", "n", stays},
           Case{"a file", "browser", linkTo("href=/file"), "/file", "/file", "", stays},
       }) {
    SCOPED_TRACE(what);
    serveSite(body);
    show(command, "/page");
    host_->said("");
    tap();
    if (*opened) {
      auto url = *opened == '/' ? address(opened) : opened;
      EXPECT_EQ(nextOpened(), std::vector<std::string>{url});
    }
    if (*loaded) EXPECT_TRUE(eventually([&] { return query(loaded).has_value(); }));
    if (*button) EXPECT_EQ(host_->next("button"), Value(button));
    if (then == stays)
      EXPECT_EQ(closeButton().find("isLeaving")->storage(), Value(false).storage());
    if (then == browses) {
      EXPECT_EQ(query("/web"),
                "inAppBrowser&buttonID=w&qw_viewport_width=800"
                "&qw_viewport_height=600&qw_u=alice&inFrame");
      EXPECT_TRUE(eventually([&] { return closeButton().find("isLeaving") != nullptr; }));
    }
    leave(then == closes);
    auto buttons = host_->said("button");
    EXPECT_LE(buttons.size(), then == browses ? 2U : 1U);
    if (!*loaded) EXPECT_FALSE(query("/in") || query("/out")) << "loaded inside";
    EXPECT_EQ(query("/out"), std::nullopt);
  }
  EXPECT_EQ(host_->opened(), std::vector<std::string>()) << "more than was asked for";
}

TEST_F(WebViewTest, WhatNobodyTappedFollowsThePolicyForThePageItselfAlone) {
  struct Case {
    const char* what;
    std::string page;
    std::string opened;
    const char* button;
    bool closes;
  };
  for (const auto& [what, body, opened, button, closes] : {
           Case{"the page moves on", page("<script>location='/out?buttonID=s'</script>"),
                "/out?buttonID=s", "s", false},
           Case{"an inner frame of the web", frame("src='/inner?buttonID=x'"), "", "", false},
           Case{"an inner frame without an address", frame("src=about:blank"), "", "", false},
           Case{"an inner frame of data", frame("src='data:text/html,x?buttonID=x'"), "", "",
                false},
           Case{"an application asked for by an inner frame",
                frame("src='shopapp://auto?buttonID=auto'"), "shopapp://auto?buttonID=auto", "auto",
                true},
           Case{"a window", page("<script>open('/out')</script>"), "", "", false},
           Case{"a file", frame("src='/file?inFrame'"), "", "", false},
       }) {
    SCOPED_TRACE(what);
    serveSite(body);
    start("message", "/page");
    if (!opened.empty()) {
      auto url = opened.front() == '/' ? address(opened) : opened;
      EXPECT_EQ(nextOpened(), std::vector<std::string>{url});
      EXPECT_EQ(host_->next("button"), Value(button));
    } else {
      EXPECT_TRUE(eventually([&] { return query("/ready").has_value(); }));
    }
    for (const auto* path : {"/inner", "/file"}) {
      if (body.find(path) == body.npos) continue;
      EXPECT_TRUE(eventually([&] { return query(path).has_value(); }));
    }
    leave(closes);
    EXPECT_LE(host_->said("button").size(), *button ? 1U : 0U);
  }
  EXPECT_EQ(host_->opened(), std::vector<std::string>());
}

TEST_F(WebViewTest, ALinkThatLeadsElsewhereIsOpenedOutsideAndLeavesNoEmptyView) {
  serve({{"/moved", {{"status", 302}, {"headers", Dictionary{{"Location", "/out"}}}}},
         {"/out", {{"body", "out"}}}});
  start("message", "/moved");
  EXPECT_TRUE(isClosed());
  EXPECT_EQ(nextOpened(), std::vector<std::string>{address("/out")});
}

TEST_F(WebViewTest, ALinkThatNoProgramOpensLeavesALine) {
  serve("/m", linkTo("href='unknown-to-all:x'"));
  show("message", "/m");
  host_->said("error");
  tap();
  EXPECT_TRUE(isClosed());
  auto said = host_->said("error");
  auto error = said.empty() ? host_->next("error") : said.front();
  EXPECT_TRUE(error.as<std::string>() &&
              error.as<std::string>()->starts_with(
                  "Could not open a URL of the scheme \"unknown-to-all\": "));
}

TEST_F(WebViewTest, ADownloadIsRefusedWithALine) {
  serve({{"/m", {{"body", linkTo("download href='/file?inFrame'")}}},
         {"/file", {{"type", "application/octet-stream"}, {"body", "bytes"}}}});
  show("message", "/m");
  tap();
  EXPECT_EQ(host_->next("error"), Value("A page's download was refused"));
  close();
}

}  // namespace
}  // namespace quenwick::tests

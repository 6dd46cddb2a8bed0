// In-app views as a person meets them: a real engine, a real pointer and keyboard, a real server.

#include <gtest/gtest.h>
#include <signal.h>

#include <algorithm>

#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/SandboxService.h"
#include "tests/ui/Display.h"
#include "tests/ui/Host.h"

namespace quenwick::tests {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

constexpr int kWidth = 800;
constexpr int kHeight = 600;

/// A page that tells the sandbox when it is seen and can be tapped.
std::string page(const std::string& body) {
  return "<!doctype html><body style='margin:0;background:#12ab34'>" + body +
         "<script>requestAnimationFrame(()=>requestAnimationFrame(()=>"
         "{new Image().src='/ready'}))</script>";
}

/// A page whose whole area is one link.
std::string linkTo(const std::string& attributes) {
  return page("<a style='position:fixed;inset:0' " + attributes + "></a>");
}

std::string frame(const std::string& attributes) {
  return page("<iframe style='position:fixed;inset:0;border:0;width:100%;height:100%' " +
              attributes + "></iframe>");
}

class WebViewTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    display_ = std::make_unique<Display>(kWidth, kHeight);
    host_ = std::make_unique<Host>(display_->name());
  }
  static void TearDownTestSuite() {
    host_.reset();
    display_.reset();
  }

  /// Serves the pages, each at its path.
  void serve(const std::vector<std::pair<std::string, Dictionary>>& answers) {
    List all;
    for (auto [path, answer] : answers) {
      answer.set("at", path);
      all.push_back(answer);
    }
    service_ = std::make_unique<SandboxService>(
        platform::JSONSerialization::text(Dictionary{{"answers", all}}));
  }
  void serve(const std::string& path, const std::string& body) {
    serve({{path, {{"body", body}}}});
  }

  /// Serves the page, and what its links lead to.
  void serveSite(const std::string& body) {
    Dictionary attached{{"Content-Disposition", "attachment; filename=a.txt"}};
    serve({{"/page", {{"body", body}}},
           {"/in", {{"body", "in"}}},
           {"/web", {{"body", "web"}}},
           {"/out", {{"body", "out"}}},
           {"/inner", {{"body", page("")}}},
           {"/file", {{"body", "bytes"}, {"headers", attached}}}});
  }

  std::string address(const std::string& path) const {
    return "http://127.0.0.1:" + std::to_string(service_->sandbox().httpPort()) + path;
  }

  /// Shows the page and waits until it is there, and has said that it can be used.
  void show(const std::string& command, const std::string& path) {
    start(command, path);
    ASSERT_TRUE(eventually([&] { return query("/ready").has_value(); })) << path;
  }
  void start(const std::string& command, const std::string& path) {
    service_->sandbox().forgetRequests();
    host_->tell(command + " " + address(path));
    ASSERT_EQ(host_->next("covered"), Value(true));
    display_->focusWindow();
  }

  void tap() { display_->click(kWidth / 2, kHeight / 2); }
  bool isClosed() { return host_->next("covered", Value(false)) == Value(false); }
  void close() {
    display_->pressEscape();
    EXPECT_TRUE(isClosed());
  }

  /// Waits for the end of a view that closes itself, or closes it.
  void leave(bool closesItself) {
    if (!closesItself) return close();
    EXPECT_TRUE(isClosed());
  }

  /// The query with which the path was asked for last; none where it was not.
  std::optional<std::string> query(const std::string& path) const {
    std::optional<std::string> found;
    for (const auto& request : service_->requests()) {
      if (*request.find("path") == Value(path)) found = *request.find("query")->as<std::string>();
    }
    return found;
  }

  /// The URLs that are opened outside, once one is.
  static std::vector<std::string> nextOpened() {
    std::vector<std::string> urls;
    eventually([&] { return !(urls = host_->opened()).empty(); });
    return urls;
  }

  Dictionary closeButton() {
    host_->tell("close-button");
    auto described = host_->next("closeButton");
    return described.as<Dictionary>() ? *described.as<Dictionary>() : Dictionary();
  }

  static std::unique_ptr<Display> display_;
  static std::unique_ptr<Host> host_;
  std::unique_ptr<SandboxService> service_;
};

std::unique_ptr<Display> WebViewTest::display_;
std::unique_ptr<Host> WebViewTest::host_;

TEST_F(WebViewTest, APageArrivesWithItsOwnItemsAndThoseOfTheView) {
  serve("/m", page(""));
  host_->tell("link-user alice");
  show("message", "/m?a=%2B+b&hideCloseButton=0");
  EXPECT_EQ(query("/m"),
            "a=%2B+b&hideCloseButton=0&qw_viewport_width=800&qw_viewport_height=600"
            "&qw_u=alice&inFrame");
  close();
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
           Case{"a window of the browser", "browser", linkTo(blank + "/out"), "/out", "", "",
                stays},
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

TEST_F(WebViewTest, TheCloseButtonStandsAtTheTrailingEdgeAndCloses) {
  serve("/m", page(""));
  for (auto [direction, isMirrored] :
       {std::pair("left-to-right", false), {"right-to-left", true}}) {
    SCOPED_TRACE(direction);
    host_->tell(direction);
    show("message", "/m");
    ASSERT_TRUE(eventually([&] { return display_->colorAt(400, 300) == 0x12ab34; }));
    auto mirrored = [&](int x) { return isMirrored ? kWidth - 1 - x : x; };
    // The page lies under it and around it; its own shape begins 16 points from the edges.
    EXPECT_EQ(display_->colorAt(mirrored(kWidth - 15), 32), 0x12ab34U);
    EXPECT_EQ(display_->colorAt(mirrored(kWidth - 32), 14), 0x12ab34U);
    EXPECT_NE(display_->colorAt(mirrored(kWidth - 18), 32), 0x12ab34U);
    EXPECT_NE(display_->colorAt(mirrored(kWidth - 32), 17), 0x12ab34U);
    auto button = closeButton();
    EXPECT_EQ(*button.find("width"), Value(44.0));
    EXPECT_EQ(*button.find("height"), Value(44.0));
    EXPECT_EQ(*button.find("isNamedClose"), Value(true));
    display_->click(mirrored(kWidth - 12), 12);  // a corner of what can be hit
    EXPECT_TRUE(isClosed());
  }
  host_->tell("left-to-right");
}

TEST_F(WebViewTest, AHiddenCloseButtonLeavesTheEscapeKey) {
  serve("/m", page(""));
  for (auto [command, path] :
       {std::pair("message-without-close", "/m"), {"browser", "/m?hideCloseButton"}}) {
    show(command, path);
    EXPECT_EQ(*closeButton().find("isVisible"), Value(false)) << command;
    close();
  }
}

TEST_F(WebViewTest, ASpinnerTurnsOverBlackUntilThePageAppears) {
  serve({{"/slow", {{"body", page("")}, {"delay", 2000}}}});
  start("message", "/slow");
  auto isLit = [&] {
    for (int distance = 8; distance < 19; ++distance) {
      if ((display_->colorAt(kWidth / 2, kHeight / 2 - distance) & 0xff) > 0x20) return true;
    }
    return false;
  };
  EXPECT_TRUE(eventually([&] { return display_->colorAt(100, 100) == 0 && isLit(); }));
  EXPECT_TRUE(eventually([&] { return display_->colorAt(100, 100) == 0x12ab34; }));
  EXPECT_TRUE(eventually([&] { return display_->colorAt(kWidth / 2, 290) == 0x12ab34; }));
  close();
}

TEST_F(WebViewTest, APageThatDoesNotComeEndsTheViewWithALine) {
  serve({{"/cut", {{"cut", "before"}}}});
  auto untrusted = std::to_string(service_->sandbox().port());
  auto closedPort = std::to_string(SandboxService().sandbox().httpPort());
  for (const auto& link : {address("/cut"), "https://127.0.0.1:" + untrusted + "/m",
                           "http://127.0.0.1:" + closedPort + "/"}) {
    host_->said("");
    host_->tell("message " + link);
    EXPECT_EQ(host_->next("covered"), Value(true));
    EXPECT_FALSE(host_->next("error").isNull()) << link;
    EXPECT_TRUE(isClosed()) << link;
    EXPECT_EQ(host_->said("error").size(), 1U) << link;
  }
}

TEST_F(WebViewTest, ALinkThatLeadsElsewhereIsOpenedOutsideAndLeavesNoEmptyView) {
  serve({{"/moved", {{"status", 302}, {"headers", Dictionary{{"Location", "/out"}}}}},
         {"/out", {{"body", "out"}}}});
  start("message", "/moved");
  EXPECT_TRUE(isClosed());
  EXPECT_EQ(nextOpened(), std::vector<std::string>{address("/out")});
}

TEST_F(WebViewTest, AServerThatDoesNotAnswerInTimeFailsTheLoad) {
  serve({{"/held", {{"delay", 60'000}}}});
  host_->tell("impatient " + address("/held"));
  EXPECT_EQ(host_->next("load"), Value("failed -1001"));
  EXPECT_TRUE(isClosed());
}

TEST_F(WebViewTest, AProcessThatDiesOrHangsEndsTheViewAndTheHostLivesOn) {
  serve("/m", page("<div style='position:fixed;inset:0' onclick='for(;;);'></div>"));
  for (bool hangs : {false, true}) {
    show("message", "/m");
    auto processes = host_->program().descendants("WebKitWebProc");
    ASSERT_FALSE(processes.empty());
    if (hangs) {
      tap();
      tap();
    } else {
      for (auto process : processes) kill(process, SIGKILL);
    }
    EXPECT_FALSE(host_->next("error").isNull()) << hangs;
    EXPECT_TRUE(isClosed()) << hangs;
    EXPECT_TRUE(host_->program().isRunning());
  }
}

TEST_F(WebViewTest, AScriptReachesNoFileAndNothingOfTheHost) {
  serve("/m", page(R"(<script>(async () => {
    alert('nobody sees this');
    let file = 'refused', frame = document.createElement('iframe');
    try { await fetch('file:///etc/hostname'); file = 'read'; } catch {}
    let handlers = Object.keys(window.webkit?.messageHandlers ?? {}).length;
    let camera = 'none';
    try { await navigator.mediaDevices.getUserMedia({video: true}); camera = 'open'; } catch {}
    let place = await new Promise(done => navigator.geolocation
        ? navigator.geolocation.getCurrentPosition(() => done('told'), () => done('refused'))
        : done('refused'));
    new Image().src = `/result?${file},${handlers},${camera},${place},${window.open('/x')}`;
  })()</script>)"));
  show("message", "/m");
  EXPECT_TRUE(eventually([&] { return query("/result").has_value(); }));
  EXPECT_EQ(query("/result"), "refused,0,none,refused,null");
  close();
}

TEST_F(WebViewTest, APageIsForgottenIsVerifiedAndCannotBeInspected) {
  serve("/m", page(""));
  show("message", "/m");
  host_->tell("page");
  EXPECT_EQ(
      host_->next("page"),
      Value(Dictionary{{"isEphemeral", true}, {"verifies", true}, {"hasDeveloperTools", false}}));
  close();
}

TEST_F(WebViewTest, APageThatAsksForAPasswordIsShownWithoutOne) {
  serve({{"/secret",
          {{"status", 401},
           {"headers", Dictionary{{"WWW-Authenticate", "Basic realm=\"anybody\""}}},
           {"body", page("")}}}});
  show("message", "/secret");
  close();
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

TEST_F(WebViewTest, AHostThatReplacesItsContentCanShowTheNextView) {
  serve("/m", page(""));
  show("message", "/m");
  host_->tell("replace-content");
  EXPECT_TRUE(isClosed());
  show("browser", "/m");
  close();
}

TEST_F(WebViewTest, AWindowThatKeepsItsContentElsewhereIsCoveredToo) {
  auto usual = std::exchange(host_, std::make_unique<Host>(display_->name(), "adwaita"));
  serve("/m", page(""));
  show("message", "/m");
  EXPECT_TRUE(eventually([&] { return display_->colorAt(400, 300) == 0x12ab34; }));
  EXPECT_EQ(*closeButton().find("isNamedClose"), Value(true));
  close();
  host_->tell("replace-content");
  EXPECT_EQ(host_->next("covered"), Value(false));
  show("browser", "/m");
  close();
  host_ = std::move(usual);
}

}  // namespace
}  // namespace quenwick::tests

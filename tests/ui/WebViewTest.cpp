#include <signal.h>

#include "tests/ui/WebViewFixture.h"

namespace quenwick::tests {
namespace {

TEST_F(WebViewTest, APageArrivesWithItsOwnItemsAndThoseOfTheView) {
  serve("/m", page(""));
  show("message", "/m?a=%2B+b&hideCloseButton=0");
  EXPECT_EQ(query("/m"),
            "a=%2B+b&hideCloseButton=0&qw_viewport_width=800&qw_viewport_height=600"
            "&qw_u=alice&inFrame");
  close();
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
  serve({{"/slow", {{"body", page("")}, {"delay", 6000}}}});
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

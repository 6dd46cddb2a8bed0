#include "quenwick/ui/NavigationRules.h"

#include <gtest/gtest.h>

namespace quenwick {
namespace {

using Action = NavigationDecision::Action;
using Text = std::optional<std::string>;

platform::URL url(const std::string& text) { return platform::URL::parse(text).value(); }

constexpr bool kMessage = false;
constexpr bool kBrowser = true;

TEST(NavigationRules, WhatAPersonStartsIsDecidedByModeSchemeAndQuery) {
  struct Case {
    bool asInAppBrowser;
    const char* url;
    Action action;
    Text buttonID;
  };
  for (const auto& [mode, text, action, button] : {
           Case{kMessage, "tel:+1555?buttonID=call", Action::openOutsideAndDismiss, "call"},
           Case{kBrowser, "shopapp://p/1", Action::openOutsideAndDismiss, {}},
           Case{kMessage, "data:text/html,x", Action::openOutsideAndDismiss, {}},
           Case{kBrowser, "https://h/?buttonID=b", Action::loadInside, "b"},
           Case{kBrowser, "HTTP://h/?inAppBrowser", Action::loadInside, {}},
           Case{kMessage, "https://h/?inFrame&buttonID=b", Action::loadInside, "b"},
           Case{kMessage, "https://h/?inAppBrowser&inFrame=0", Action::loadInside, {}},
           Case{kMessage, "https://h/?inAppBrowser=1&buttonID=", Action::openInAppBrowser, ""},
           Case{kMessage, "https://h/?buttonID=%C3%A9+1&buttonID=2", Action::openOutside,
                "\u00e9+1"},
           Case{kMessage, "https://h/?buttonID&inframe", Action::openOutside, {}},
           Case{kMessage, "https://h/#?inFrame", Action::openOutside, {}},
           Case{kMessage, "https://h/inFrame", Action::openOutside, {}},
       }) {
    for (auto isMainFrame : {std::optional<bool>(), std::optional(true), std::optional(false)}) {
      EXPECT_EQ(decideNavigation(mode, {url(text), true, isMainFrame}),
                (NavigationDecision{action, button}))
          << text;
    }
  }
}

TEST(NavigationRules, WhatNobodyTappedIsDecidedOnceItsFrameIsKnown) {
  struct Case {
    const char* url;
    std::optional<bool> isMainFrame;
    Action action;
    Text buttonID;
  };
  for (const auto& [text, isMainFrame, action, button] : {
           Case{"https://h/?buttonID=b", {}, Action::loadInside, {}},
           Case{"https://h/?buttonID=b", false, Action::loadInside, {}},
           Case{"https://h/?buttonID=b", true, Action::openOutside, "b"},
           Case{"http://h/?inFrame&buttonID=b", true, Action::loadInside, "b"},
           Case{"https://h/?inAppBrowser", true, Action::openInAppBrowser, {}},
           Case{"about:blank", {}, Action::loadInside, {}},
           Case{"DATA:text/html,x?buttonID=b", false, Action::loadInside, {}},
           Case{"blob:https://h/1", true, Action::loadInside, {}},
           Case{"shopapp://p?buttonID=b", {}, Action::openOutsideAndDismiss, "b"},
           Case{"shopapp://p", false, Action::openOutsideAndDismiss, {}},
       }) {
    EXPECT_EQ(decideNavigation(kMessage, {url(text), false, isMainFrame}),
              (NavigationDecision{action, button}))
        << text;
  }
}

TEST(NavigationRules, AWindowOfItsOwnIsNeverMade) {
  struct Case {
    bool asInAppBrowser;
    const char* url;
    bool isUserInitiated;
    NavigationDecision decision;
  };
  for (const auto& [mode, text, isTapped, decision] : {
           Case{kBrowser, "https://h/?buttonID=b", true, {Action::loadInside, "b"}},
           Case{kMessage, "https://h/?inFrame", true, {Action::loadInside}},
           Case{kMessage, "https://h/?inAppBrowser", true, {Action::openInAppBrowser}},
           Case{kBrowser, "https://h/?buttonID=b", false, {Action::refuse}},
           Case{kMessage, "about:blank", false, {Action::refuse}},
           Case{kMessage, "tel:1", false, {Action::openOutsideAndDismiss}},
       }) {
    EXPECT_EQ(decideNavigation(mode, {url(text), isTapped, std::nullopt, true}), decision) << text;
  }
}

}  // namespace
}  // namespace quenwick

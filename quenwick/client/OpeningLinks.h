#pragma once

#include <optional>
#include <string>
#include <vector>

#include "quenwick/platform/Value.h"

namespace quenwick::inline v0 {

/// What the application was launched with, by key.
using LaunchOptions = platform::Dictionary;

/// Key of the URL, as text, that the application was launched to open.
inline constexpr const char* UIApplicationLaunchOptionsURLKey = "UIApplicationLaunchOptionsURLKey";

/// The type of an activity that browses the web.
inline constexpr const char* NSUserActivityTypeBrowsingWeb = "NSUserActivityTypeBrowsingWeb";

/// What the user was doing when the application was opened.
struct NSUserActivity {
  /// `NSUserActivityTypeBrowsingWeb` where it opens a link; others are let pass.
  std::string activityType;
  /// The link.
  std::optional<std::string> webpageURL = {};
};

/// What a window of the application is opened for.
struct UISceneConnectionOptions {
  /// The first that browses the web and has a link counts.
  std::vector<NSUserActivity> userActivities = {};
};

/// Something that the user pasted, in the forms in which it is to be had.
struct NSItemProvider {
  /// As a URL, which is looked at first.
  std::optional<std::string> url = {};
  /// As text, which may be a URL.
  std::optional<std::string> text = {};
};

}  // namespace quenwick::inline v0

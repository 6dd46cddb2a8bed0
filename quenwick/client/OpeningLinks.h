#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "quenwick/platform/Value.h"

namespace quenwick::inline v0 {

/// What the application was launched with, by key.
using LaunchOptions = platform::Dictionary;

/// Key of the URL, as text, that the application was launched to open.
inline constexpr std::string_view UIApplicationLaunchOptionsURLKey =
    "UIApplicationLaunchOptionsURLKey";

/// The type of an activity that browses the web.
inline constexpr std::string_view NSUserActivityTypeBrowsingWeb = "NSUserActivityTypeBrowsingWeb";

/// What the user was doing when the application was opened.
struct NSUserActivity {
  std::string activityType;
  std::optional<std::string> webpageURL = {};
};

/// What a window of the application is opened for.
struct UISceneConnectionOptions {
  std::vector<NSUserActivity> userActivities = {};
};

/// Something that the user pasted, in the forms in which it is to be had.
struct NSItemProvider {
  std::optional<std::string> url = {};
  std::optional<std::string> text = {};
};

}  // namespace quenwick::inline v0

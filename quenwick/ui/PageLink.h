#pragma once

#include <optional>
#include <string>

#include "quenwick/platform/WebView.h"

namespace quenwick {

/// The URL that is loaded for a page's link: the link with its own query items as they are, and
/// behind them "qw_viewport_width" and "qw_viewport_height" in whole points, "qw_u" where there is
/// a link user, and "inFrame" without a value. None where that makes no URL.
std::optional<platform::URL> pageURL(const platform::URL& link, platform::ViewSize viewport,
                                     const std::optional<std::string>& linkUser);

/// Whether the close button is hidden: the host asked for it, or the link does by a query item
/// "hideCloseButton" that has no value, an empty one, or "true", "yes" or "1" in any case. Any
/// other value ("false", "0") leaves the button to the host.
bool isCloseButtonHidden(bool hideCloseButton, const platform::URL& link);

}  // namespace quenwick

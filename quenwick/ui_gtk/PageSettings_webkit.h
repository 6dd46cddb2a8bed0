#pragma once

#include <webkit/webkit.h>

#include "quenwick/ui_gtk/GObjectPointer.h"
#include "quenwick/ui_gtk/quenwick-ui.h"

namespace quenwick::ui {

/// What pages may do, for all views to come.
void configurePages(const Options& options);

/// A view for pages that are not trusted: they reach no file, no device, no other page and nothing
/// of the host; what a page asks for beyond showing itself is refused.
GObjectPointer<WebKitWebView> makePageView();

}  // namespace quenwick::ui

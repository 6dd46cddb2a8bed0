#pragma once

#include <gtk/gtk.h>

#include "quenwick/platform/Executor.h"

namespace quenwick::ui {

/// Moves the widget's opacity to `opacity` over that many seconds, at once where the person wants
/// no animations, and calls `done` when the time is over, whether the widget is still there or not.
void fade(GtkWidget* widget, double opacity, double seconds, platform::Work done = nullptr);

}  // namespace quenwick::ui

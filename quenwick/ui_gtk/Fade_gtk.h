#pragma once

#include <gtk/gtk.h>

#include "quenwick/platform/Executor.h"

namespace quenwick::ui {

/// Moves the widget's opacity to `opacity` over that many seconds, at once where the person wants
/// no animations, and calls `done` when the time is over, whether the widget is still there or not.
/// A later one on the same widget goes on from where this one is.
void fade(GtkWidget* widget, double opacity, double seconds, platform::Work done = nullptr);

}  // namespace quenwick::ui

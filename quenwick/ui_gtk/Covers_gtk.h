#pragma once

#include <gtk/gtk.h>

namespace quenwick::ui {

/// Lays the cover, which floats, over the whole content of the window, before other covers; false,
/// with the cover untouched, where the window has no content. While covered, the content takes no
/// focus and no pointer.
bool addCover(GtkWindow* window, GtkWidget* cover);

/// Takes the cover away. After the last one the window has its content, and the focus, back.
void removeCover(GtkWindow* window, GtkWidget* cover);

}  // namespace quenwick::ui

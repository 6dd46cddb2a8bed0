#pragma once

#include <gtk/gtk.h>

#include <functional>
#include <initializer_list>
#include <string>

namespace storefront {

/// A text in a class of the style sheet, at the start of its line.
GtkWidget* makeLabel(const std::string& text, const char* style);

/// Its children above each other, `spacing` apart.
GtkWidget* makeColumn(int spacing, std::initializer_list<GtkWidget*> children);
/// Beside each other.
GtkWidget* makeRow(int spacing, std::initializer_list<GtkWidget*> children);

/// A button of a class of the style sheet that runs the action whenever it is tapped.
GtkWidget* makeButton(GtkWidget* content, const char* style, std::function<void()> action);
GtkWidget* makeButton(const std::string& text, const char* style, std::function<void()> action);

/// Has the style sheet apply to the whole display.
void useStyle(GdkDisplay* display);

}  // namespace storefront

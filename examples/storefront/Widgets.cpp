#include "Widgets.h"

#include "Style.h"

namespace storefront {
namespace {

using Action = std::function<void()>;

void tapped(GtkButton*, gpointer action) { (*static_cast<Action*>(action))(); }
void forget(gpointer action, GClosure*) { delete static_cast<Action*>(action); }

GtkWidget* makeBox(GtkOrientation orientation, int spacing,
                   std::initializer_list<GtkWidget*> children) {
  auto* box = gtk_box_new(orientation, spacing);
  for (auto* child : children) gtk_box_append(GTK_BOX(box), child);
  return box;
}

}  // namespace

GtkWidget* makeLabel(const std::string& text, const char* style) {
  auto* label = gtk_label_new(text.c_str());
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_widget_set_halign(label, GTK_ALIGN_START);
  gtk_widget_add_css_class(label, style);
  return label;
}

GtkWidget* makeColumn(int spacing, std::initializer_list<GtkWidget*> children) {
  return makeBox(GTK_ORIENTATION_VERTICAL, spacing, children);
}

GtkWidget* makeRow(int spacing, std::initializer_list<GtkWidget*> children) {
  return makeBox(GTK_ORIENTATION_HORIZONTAL, spacing, children);
}

GtkWidget* makeButton(GtkWidget* content, const char* style, Action action) {
  auto* button = gtk_button_new();
  gtk_button_set_child(GTK_BUTTON(button), content);
  gtk_widget_add_css_class(button, style);
  gtk_widget_set_cursor_from_name(button, "pointer");
  g_signal_connect_data(button, "clicked", reinterpret_cast<GCallback>(tapped),
                        new Action(std::move(action)), forget, GConnectFlags(0));
  return button;
}

GtkWidget* makeButton(const std::string& text, const char* style, Action action) {
  auto* button = makeButton(gtk_label_new(text.c_str()), style, std::move(action));
  gtk_widget_set_halign(button, GTK_ALIGN_START);
  gtk_widget_set_valign(button, GTK_ALIGN_CENTER);
  return button;
}

void useStyle(GdkDisplay* display) {
  auto* provider = gtk_css_provider_new();
  gtk_css_provider_load_from_data(provider, kStyle.data(), static_cast<gssize>(kStyle.size()));
  gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(provider),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
  g_object_unref(provider);
}

}  // namespace storefront

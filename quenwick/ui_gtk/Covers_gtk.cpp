#include "quenwick/ui_gtk/Covers_gtk.h"

#include "quenwick/ui_gtk/GObjectPointer.h"

namespace quenwick::ui {
namespace {

constexpr auto kKey = "quenwick-covers";

/// Lies between a window and its content while there are covers.
struct Covers {
  GObjectPointer<GtkOverlay> overlay;
  GObjectPointer<GtkWidget> content;
  bool canFocus = true;
  bool canTarget = true;
  GtkWidget* focus = nullptr;  // weak
  int count = 0;

  ~Covers() { g_clear_weak_pointer(&focus); }
};

/// Windows of some libraries keep their content under another name.
const char* contentProperty(GtkWindow* window) {
  for (auto* type : {"AdwApplicationWindow", "AdwWindow"}) {
    auto known = g_type_from_name(type);
    if (known != 0 && g_type_is_a(G_OBJECT_TYPE(window), known)) return "content";
  }
  return "child";
}

GObjectPointer<GtkWidget> contentOf(GtkWindow* window) {
  GtkWidget* content = nullptr;
  g_object_get(window, contentProperty(window), &content, nullptr);
  return GObjectPointer<GtkWidget>::owned(content);
}

void setContent(GtkWindow* window, GtkWidget* content) {
  g_object_set(window, contentProperty(window), content, nullptr);
}

Covers* find(GtkWindow* window) {
  return static_cast<Covers*>(g_object_get_data(G_OBJECT(window), kKey));
}

Covers* makeCovers(GtkWindow* window) {
  auto content = contentOf(window);
  if (!content) return nullptr;
  auto* covers = new Covers;
  covers->content = content;
  covers->overlay = GObjectPointer<GtkOverlay>::referenced(GTK_OVERLAY(gtk_overlay_new()));
  g_set_weak_pointer(&covers->focus, gtk_window_get_focus(window));
  covers->canFocus = gtk_widget_get_can_focus(*content) != FALSE;
  covers->canTarget = gtk_widget_get_can_target(*content) != FALSE;
  setContent(window, nullptr);
  gtk_overlay_set_child(*covers->overlay, *content);
  setContent(window, GTK_WIDGET(*covers->overlay));
  gtk_widget_set_can_focus(*content, FALSE);
  gtk_widget_set_can_target(*content, FALSE);
  g_object_set_data_full(G_OBJECT(window), kKey, covers,
                         [](gpointer data) { delete static_cast<Covers*>(data); });
  return covers;
}

void restore(GtkWindow* window, const Covers& covers) {
  auto* content = *covers.content;
  gtk_widget_set_can_focus(content, covers.canFocus);
  gtk_widget_set_can_target(content, covers.canTarget);
  gtk_overlay_set_child(*covers.overlay, nullptr);
  bool isStillThere = *contentOf(window) == GTK_WIDGET(*covers.overlay);
  if (!isStillThere) return;  // the host has given the window another content meanwhile
  setContent(window, nullptr);
  setContent(window, content);
  if (covers.focus && gtk_widget_is_ancestor(covers.focus, content)) {
    gtk_widget_grab_focus(covers.focus);
  }
}

}  // namespace

bool addCover(GtkWindow* window, GtkWidget* cover) {
  auto* covers = find(window);
  if (covers && *contentOf(window) != GTK_WIDGET(*covers->overlay)) {
    restore(window, *covers);
    g_object_set_data(G_OBJECT(window), kKey, nullptr);
    covers = nullptr;
  }
  if (!covers) covers = makeCovers(window);
  if (!covers) return false;
  ++covers->count;
  gtk_overlay_add_overlay(*covers->overlay, cover);
  return true;
}

void removeCover(GtkWindow* window, GtkWidget* cover) {
  auto* covers = find(window);
  if (!covers || gtk_widget_get_parent(cover) != GTK_WIDGET(*covers->overlay)) return;
  gtk_overlay_remove_overlay(*covers->overlay, cover);
  if (--covers->count > 0) return;
  restore(window, *covers);
  g_object_set_data(G_OBJECT(window), kKey, nullptr);
}

}  // namespace quenwick::ui

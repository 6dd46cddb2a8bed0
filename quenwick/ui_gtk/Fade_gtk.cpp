#include "quenwick/ui_gtk/Fade_gtk.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace quenwick::ui {
namespace {

struct Fade {
  GtkWidget* widget;
  double from;
  double to;
  double seconds;
  platform::Work done;
  gint64 start = g_get_monotonic_time();
  guint ticks = 0;
};

bool isAnimationWanted(GtkWidget* widget) {
  gboolean isWanted = TRUE;
  g_object_get(gtk_widget_get_settings(widget), "gtk-enable-animations", &isWanted, nullptr);
  return isWanted != FALSE;
}

constexpr auto kLatest = "quenwick-fade";

/// Whether no other one has begun on the widget since.
bool isLatest(const Fade& fade) {
  return fade.widget && g_object_get_data(G_OBJECT(fade.widget), kLatest) == &fade;
}

gboolean step(GtkWidget* widget, GdkFrameClock*, gpointer data) {
  auto& fade = *static_cast<Fade*>(data);
  if (!isLatest(fade)) return G_SOURCE_CONTINUE;
  auto passed = static_cast<double>(g_get_monotonic_time() - fade.start) / G_USEC_PER_SEC;
  auto part = std::clamp(passed / fade.seconds, 0.0, 1.0);
  auto eased = 1 - std::pow(1 - part, 3);
  gtk_widget_set_opacity(widget, fade.from + (fade.to - fade.from) * eased);
  return G_SOURCE_CONTINUE;
}

// Frames stop coming where nothing is seen of the window, so the end is a matter of time.
gboolean end(gpointer data) {
  auto& fade = *static_cast<Fade*>(data);
  if (fade.widget) gtk_widget_remove_tick_callback(fade.widget, fade.ticks);
  if (isLatest(fade)) gtk_widget_set_opacity(fade.widget, fade.to);
  if (fade.done) platform::runWork(fade.done);
  return G_SOURCE_REMOVE;
}

void forget(gpointer data) {
  auto* fade = static_cast<Fade*>(data);
  g_clear_weak_pointer(&fade->widget);
  delete fade;
}

}  // namespace

void fade(GtkWidget* widget, double opacity, double seconds, platform::Work done) {
  if (!isAnimationWanted(widget)) seconds = 0;
  auto* fade = new Fade{nullptr, gtk_widget_get_opacity(widget), opacity, seconds, std::move(done)};
  g_set_weak_pointer(&fade->widget, widget);
  g_object_set_data(G_OBJECT(widget), kLatest, fade);
  fade->ticks = gtk_widget_add_tick_callback(widget, step, fade, nullptr);
  g_timeout_add_full(G_PRIORITY_DEFAULT, static_cast<guint>(seconds * 1000), end, fade, forget);
}

}  // namespace quenwick::ui

#include "quenwick/ui_gtk/Spinner_gtk.h"

#include <numbers>
#include <utility>

namespace quenwick::ui {
namespace {

constexpr int kSize = 37;
constexpr int kSpokes = 8;
constexpr double kThickness = 3.5;
constexpr gint64 kTurn = G_USEC_PER_SEC;

void draw(GtkDrawingArea*, cairo_t* cairo, int width, int height, gpointer) {
  cairo_translate(cairo, width / 2.0, height / 2.0);
  cairo_set_line_width(cairo, kThickness);
  cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
  auto outer = (kSize - kThickness) / 2;
  auto head = static_cast<int>(g_get_monotonic_time() % kTurn * kSpokes / kTurn);
  for (int spoke = 0; spoke < kSpokes; ++spoke) {
    auto age = (head - spoke + kSpokes) % kSpokes;
    cairo_save(cairo);
    cairo_rotate(cairo, 2 * std::numbers::pi * spoke / kSpokes);
    cairo_set_source_rgba(cairo, 1, 1, 1, 0.9 - 0.7 * age / (kSpokes - 1));
    cairo_move_to(cairo, 0, -outer * 0.55);
    cairo_line_to(cairo, 0, -outer);
    cairo_stroke(cairo);
    cairo_restore(cairo);
  }
}

gboolean turn(GtkWidget* area, GdkFrameClock*, gpointer) {
  gtk_widget_queue_draw(area);
  return G_SOURCE_CONTINUE;
}

}  // namespace

Spinner::Spinner() : area_(GObjectPointer<GtkWidget>::referenced(gtk_drawing_area_new())) {
  gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(*area_), draw, nullptr, nullptr);
  gtk_widget_set_size_request(*area_, kSize, kSize);
  gtk_widget_set_halign(*area_, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(*area_, GTK_ALIGN_CENTER);
  gtk_widget_set_can_target(*area_, FALSE);
  ticks_ = gtk_widget_add_tick_callback(*area_, turn, nullptr, nullptr);
}

void Spinner::stopAnimating() {
  if (ticks_ != 0) gtk_widget_remove_tick_callback(*area_, std::exchange(ticks_, 0));
  gtk_widget_set_visible(*area_, FALSE);
}

}  // namespace quenwick::ui

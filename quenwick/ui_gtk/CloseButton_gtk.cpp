#include "quenwick/ui_gtk/CloseButton_gtk.h"

#include <numbers>
#include <utility>

namespace quenwick::ui {
namespace {

constexpr int kHitSize = 44;
constexpr double kDiameter = 32;
constexpr double kArm = 5.25;

constexpr auto kStyle = R"(
  button.quenwick-close {
    background: none; border: none; box-shadow: none; outline: none;
    padding: 0; margin: 0; border-radius: 0; min-width: 44px; min-height: 44px;
    transition: transform 120ms ease-out;
  }
  button.quenwick-close:active { transform: scale(0.92); }
)";

void addStyle(GdkDisplay* display) {
  static GdkDisplay* styled = nullptr;
  if (std::exchange(styled, display) == display) return;
  auto provider = GObjectPointer<GtkCssProvider>::owned(gtk_css_provider_new());
  gtk_css_provider_load_from_data(*provider, kStyle, -1);
  gtk_style_context_add_provider_for_display(display, GTK_STYLE_PROVIDER(*provider),
                                             GTK_STYLE_PROVIDER_PRIORITY_APPLICATION + 1);
}

/// A dark disc with a light rim: seen on a white page as on a black one.
void draw(GtkDrawingArea* area, cairo_t* cairo, int width, int height, gpointer) {
  auto state = gtk_widget_get_state_flags(gtk_widget_get_parent(GTK_WIDGET(area)));
  bool isPointedAt = (state & (GTK_STATE_FLAG_PRELIGHT | GTK_STATE_FLAG_ACTIVE)) != 0;
  bool isFocused = (state & GTK_STATE_FLAG_FOCUS_VISIBLE) != 0;
  cairo_translate(cairo, width / 2.0, height / 2.0);

  cairo_arc(cairo, 0, 0, kDiameter / 2, 0, 2 * std::numbers::pi);
  auto shade = isPointedAt ? 0.27 : 0.13;
  cairo_set_source_rgba(cairo, shade, shade, shade + 0.015, 0.82);
  cairo_fill(cairo);

  auto rim = isFocused ? 2.0 : 1.0;
  cairo_arc(cairo, 0, 0, (kDiameter - rim) / 2, 0, 2 * std::numbers::pi);
  cairo_set_line_width(cairo, rim);
  cairo_set_source_rgba(cairo, 1, 1, 1, isFocused ? 0.95 : 0.24);
  cairo_stroke(cairo);

  cairo_set_line_width(cairo, 2);
  cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
  cairo_set_source_rgba(cairo, 1, 1, 1, isPointedAt ? 1 : 0.92);
  for (double slope : {1.0, -1.0}) {
    cairo_move_to(cairo, -kArm, -kArm * slope);
    cairo_line_to(cairo, kArm, kArm * slope);
  }
  cairo_stroke(cairo);
}

void redraw(GtkWidget* button, GtkStateFlags, gpointer) {
  gtk_widget_queue_draw(gtk_button_get_child(GTK_BUTTON(button)));
}

void clicked(GtkButton*, gpointer action) {
  auto toRun = *static_cast<platform::Work*>(action);
  platform::runWork(toRun);
}

}  // namespace

CloseButton::CloseButton(double margin, platform::Work action)
    : button_(GObjectPointer<GtkWidget>::referenced(gtk_button_new())), action_(std::move(action)) {
  auto* area = gtk_drawing_area_new();
  gtk_widget_set_size_request(area, kHitSize, kHitSize);
  gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), draw, nullptr, nullptr);
  auto* button = *button_;
  addStyle(gtk_widget_get_display(button));
  gtk_button_set_child(GTK_BUTTON(button), area);
  gtk_widget_add_css_class(button, "quenwick-close");
  gtk_widget_set_cursor_from_name(button, "pointer");
  gtk_widget_set_halign(button, GTK_ALIGN_END);
  gtk_widget_set_valign(button, GTK_ALIGN_START);
  auto toHitArea = static_cast<int>(margin - (kHitSize - kDiameter) / 2);
  gtk_widget_set_margin_top(button, toHitArea);
  gtk_widget_set_margin_end(button, toHitArea);
  gtk_accessible_update_property(GTK_ACCESSIBLE(button), GTK_ACCESSIBLE_PROPERTY_LABEL,
                                 g_dgettext("gtk40", "Close"), -1);
  connect(button, "clicked", clicked, &action_);
  connect(button, "state-flags-changed", redraw, nullptr);
}

CloseButton::~CloseButton() { g_signal_handlers_disconnect_by_data(*button_, &action_); }

void CloseButton::setHidden(bool isHidden) { gtk_widget_set_visible(*button_, !isHidden); }

}  // namespace quenwick::ui

#include "Picture.h"

#include <algorithm>
#include <numbers>
#include <sstream>

namespace storefront {
namespace {

constexpr double kSide = 300;
constexpr double kRadius = 18;

struct Picture {
  const std::vector<Shape>& shapes;
  std::optional<unsigned> ground;
};

void useColor(cairo_t* cairo, unsigned color) {
  auto part = [color](unsigned shift) { return (color >> shift & 0xff) / 255.0; };
  cairo_set_source_rgb(cairo, part(16), part(8), part(0));
}

void addPath(cairo_t* cairo, const char* path) {
  std::istringstream words(path);
  auto number = [&words] {
    double value = 0;
    words >> value;
    return value;
  };
  for (char command = 0; words >> command;) {
    double x[3];
    double y[3];
    int points = command == 'Z' ? 0 : command == 'C' ? 3 : 1;
    for (int i = 0; i < points; ++i) {
      x[i] = number();
      y[i] = number();
    }
    if (command == 'M') cairo_move_to(cairo, x[0], y[0]);
    if (command == 'L') cairo_line_to(cairo, x[0], y[0]);
    if (command == 'C') cairo_curve_to(cairo, x[0], y[0], x[1], y[1], x[2], y[2]);
    if (command == 'Z') cairo_close_path(cairo);
  }
}

void addRoundCorners(cairo_t* cairo, double width, double height) {
  constexpr double kRight = std::numbers::pi / 2;
  double centers[4][2] = {{width - kRadius, kRadius},
                          {width - kRadius, height - kRadius},
                          {kRadius, height - kRadius},
                          {kRadius, kRadius}};
  cairo_new_sub_path(cairo);
  for (int i = 0; i < 4; ++i) {
    cairo_arc(cairo, centers[i][0], centers[i][1], kRadius, (i - 1) * kRight, i * kRight);
  }
  cairo_close_path(cairo);
}

void draw(GtkDrawingArea*, cairo_t* cairo, int width, int height, gpointer data) {
  const auto& picture = *static_cast<Picture*>(data);
  addRoundCorners(cairo, width, height);
  cairo_clip(cairo);
  if (picture.ground) {
    useColor(cairo, *picture.ground);
    cairo_paint(cairo);
  }
  auto scale = std::min(width, height) / kSide;
  cairo_translate(cairo, (width - kSide * scale) / 2, (height - kSide * scale) / 2);
  cairo_scale(cairo, scale, scale);
  cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
  for (const auto& shape : picture.shapes) {
    addPath(cairo, shape.path);
    useColor(cairo, shape.color);
    cairo_set_line_width(cairo, shape.width);
    shape.width > 0 ? cairo_stroke(cairo) : cairo_fill(cairo);
  }
}

}  // namespace

GtkWidget* makePicture(const std::vector<Shape>& shapes, std::optional<unsigned> ground, int width,
                       int height) {
  auto* area = gtk_drawing_area_new();
  gtk_widget_set_size_request(area, width, height);
  gtk_drawing_area_set_draw_func(GTK_DRAWING_AREA(area), draw, new Picture{shapes, ground},
                                 [](gpointer data) { delete static_cast<Picture*>(data); });
  return area;
}

}  // namespace storefront

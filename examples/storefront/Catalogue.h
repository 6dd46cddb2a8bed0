#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace storefront {

/// A drawn part of a picture, in a square of 300 by 300.
struct Shape {
  /// "M x y", "L x y", "C x y x y x y" and "Z", as in SVG.
  const char* path;
  unsigned color;
  /// Of the line; 0 fills the shape.
  double width = 0;
};

struct Product {
  std::string id;
  std::string title;
  std::string subtitle;
  std::string price;
  /// Of the picture's ground.
  unsigned ground;
  std::vector<Shape> shapes;
};

const std::vector<Product>& products();

/// Null where there is none of that identifier.
const Product* find(std::string_view id);

}  // namespace storefront

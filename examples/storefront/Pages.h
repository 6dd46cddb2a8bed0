#pragma once

#include <functional>
#include <string>

#include "Catalogue.h"
#include "Widgets.h"

namespace storefront {

/// What can be tapped in a page.
struct Taps {
  std::function<void()> offer;
  std::function<void()> back;
  std::function<void()> care;
  std::function<void(const Product&)> look;
  std::function<void(const Product&)> add;
};

/// The offer, and below it those products whose title contains the words.
GtkWidget* makeShelf(const std::string& words, const Taps& taps);

/// One product. `over` stands above its name.
GtkWidget* makeProductPage(const Product& product, const std::string& over, const Taps& taps);

}  // namespace storefront

#pragma once

#include <gtk/gtk.h>

#include <string>
#include <vector>

#include "Catalogue.h"
#include "Pages.h"

namespace storefront {

/// The shop's window, and what it reports while a customer goes about in it.
class Storefront {
 public:
  /// `pages` is where the shop's messages and pages lie, without a slash at its end.
  Storefront(GtkApplication* application, std::string pages);

  GtkWindow* window() const { return window_; }

  /// Goes where a link leads: "https://shop.example/products/42", "shopapp://product/42".
  void go(const std::string& destination);
  void showShelf();
  /// From here on what the customer looks at is reported, and what is looked at just now.
  void startReporting();
  void note(const std::string& text);

 private:
  Taps taps();
  void put(GtkWidget* page);
  void showProduct(const Product& product);
  void showOffer();
  void add(const Product& product);
  void order();
  void reportPage() const;
  void tellState();
  static void searched(GtkEditable* entry, gpointer self);

  GtkWindow* window_;
  GtkWidget* scroller_;
  GtkWidget* basket_;
  GtkLabel* state_;
  GtkWidget* note_;
  GtkLabel* noteText_;
  std::string pages_;
  std::string destination_;
  std::string words_;
  const Product* shown_ = nullptr;
  std::vector<const Product*> taken_;
  bool isReporting_ = false;
};

}  // namespace storefront

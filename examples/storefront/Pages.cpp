#include "Pages.h"

#include "Picture.h"

namespace storefront {
namespace {

constexpr int kWidth = 944;

/// A page keeps its width in the middle of a window that is larger.
GtkWidget* inTheMiddle(GtkWidget* content, const char* style) {
  gtk_widget_set_size_request(content, kWidth, -1);
  gtk_widget_set_halign(content, GTK_ALIGN_CENTER);
  gtk_widget_set_margin_top(content, 24);
  gtk_widget_set_margin_bottom(content, 20);
  gtk_widget_add_css_class(content, style);
  return content;
}

/// Hills and a sun, on the offer's own ground.
GtkWidget* makeScene() {
  static const std::vector<Shape> shapes{
      {"M250 30 C310 30 310 122 250 122 C190 122 190 30 250 30 Z", 0xfff3d6},
      {"M-124 300 C-60 280 -20 176 70 168 C160 160 190 214 270 214 C330 214 390 190 440 156 L440 "
       "300 Z",
       0x3a9a70},
      {"M-60 300 C20 250 80 236 160 244 C240 252 330 270 440 220 L440 300 Z", 0x24764f}};
  return makePicture(shapes, std::nullopt, 340, 186);
}

GtkWidget* makeOffer(const Taps& taps) {
  auto* text = makeColumn(8, {makeLabel("This week only", "over"),
                              makeLabel("Light layers for long evenings", "headline"),
                              makeButton("See the offer", "dark", taps.offer)});
  gtk_widget_set_hexpand(text, TRUE);
  gtk_widget_set_valign(text, GTK_ALIGN_CENTER);
  auto* offer = makeRow(24, {text, makeScene()});
  gtk_widget_add_css_class(offer, "offer");
  return offer;
}

GtkWidget* makeCard(const Product& product, const Taps& taps) {
  auto* card = makeColumn(
      3, {makePicture(product.shapes, product.ground, 218, 210), makeLabel(product.title, "title"),
          makeLabel(product.subtitle, "subtitle"), makeLabel("€ " + product.price, "price")});
  gtk_widget_set_margin_bottom(gtk_widget_get_first_child(card), 8);
  return makeButton(card, "card", [&product, look = taps.look] { look(product); });
}

bool contains(const std::string& title, const std::string& words) {
  auto* where = g_utf8_casefold(title.c_str(), -1);
  auto* what = g_utf8_casefold(words.c_str(), -1);
  bool isThere = g_strstr_len(where, -1, what) != nullptr;
  g_free(where);
  g_free(what);
  return isThere;
}

}  // namespace

GtkWidget* makeShelf(const std::string& words, const Taps& taps) {
  auto* cards = makeRow(24, {});
  for (const auto& product : products()) {
    if (contains(product.title, words)) gtk_box_append(GTK_BOX(cards), makeCard(product, taps));
  }
  if (!gtk_widget_get_first_child(cards)) {
    gtk_box_append(GTK_BOX(cards), makeLabel("Nothing of that name.", "subtitle"));
  }
  return inTheMiddle(makeColumn(26, {makeOffer(taps), cards}), "shelf");
}

GtkWidget* makeProductPage(const Product& product, const std::string& over, const Taps& taps) {
  auto add = [&product, toCall = taps.add] { toCall(product); };
  auto* text = makeColumn(
      6, {makeLabel(over, "over"), makeLabel(product.title, "name"),
          makeLabel(product.subtitle, "subtitle"), makeLabel("€ " + product.price, "price"),
          makeRow(12, {makeButton("Add to basket", "leaf", add),
                       makeButton("This week’s offer", "sand", taps.offer)}),
          makeButton("How to care for it", "plain", taps.care)});
  gtk_widget_set_valign(text, GTK_ALIGN_CENTER);
  auto* picture = makePicture(product.shapes, product.ground, 440, 440);
  auto* page = makeColumn(
      10, {makeButton("‹  All products", "mist", taps.back), makeRow(56, {picture, text})});
  return inTheMiddle(page, "product");
}

}  // namespace storefront

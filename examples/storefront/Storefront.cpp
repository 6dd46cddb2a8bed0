#include "Storefront.h"

#include <utility>

#include <quenwick/quenwick.h>

namespace storefront {
namespace {

using quenwick::QWClient;

quenwick::ProductProperties propertiesOf(const Product& product) {
  return {.id = product.id, .title = product.title, .price = product.price};
}

std::string amount(const std::vector<const Product*>& taken) {
  double sum = 0;
  for (const auto* one : taken) sum += g_ascii_strtod(one->price.c_str(), nullptr);
  char text[32];
  return g_ascii_formatd(text, sizeof text, "%.2f", sum);
}

GtkWidget* makeSearch() {
  auto* entry = gtk_entry_new();
  gtk_entry_set_placeholder_text(GTK_ENTRY(entry), "Search");
  gtk_entry_set_icon_from_icon_name(GTK_ENTRY(entry), GTK_ENTRY_ICON_PRIMARY,
                                    "system-search-symbolic");
  gtk_widget_add_css_class(entry, "search");
  gtk_widget_set_valign(entry, GTK_ALIGN_CENTER);
  return entry;
}

}  // namespace

Storefront::Storefront(GtkApplication* application, std::string pages)
    : window_(GTK_WINDOW(gtk_application_window_new(application))),
      scroller_(gtk_scrolled_window_new()),
      basket_(makeButton("Basket", "basket", [this] { order(); })),
      state_(GTK_LABEL(makeLabel("", "state"))),
      noteText_(GTK_LABEL(makeLabel("", "text"))),
      pages_(std::move(pages)) {
  useStyle(gtk_widget_get_display(GTK_WIDGET(window_)));
  gtk_widget_add_css_class(GTK_WIDGET(window_), "storefront");
  gtk_window_set_title(window_, "Storefront");
  gtk_window_set_default_size(window_, 1024, 700);

  auto* header = gtk_header_bar_new();
  auto* search = makeSearch();
  g_signal_connect(search, "changed", reinterpret_cast<GCallback>(searched), this);
  gtk_header_bar_pack_start(GTK_HEADER_BAR(header),
                            makeButton("shop.example", "brand", [this] { showShelf(); }));
  gtk_header_bar_set_title_widget(GTK_HEADER_BAR(header), search);
  gtk_header_bar_pack_end(GTK_HEADER_BAR(header), basket_);
  gtk_window_set_titlebar(window_, header);

  gtk_widget_set_vexpand(scroller_, TRUE);
  auto* footer = makeRow(0, {GTK_WIDGET(state_)});
  gtk_widget_add_css_class(footer, "footer");
  note_ = makeRow(0, {GTK_WIDGET(noteText_)});
  gtk_widget_add_css_class(note_, "note");
  gtk_widget_set_halign(note_, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(note_, GTK_ALIGN_END);
  gtk_widget_set_visible(note_, FALSE);
  auto* overlay = gtk_overlay_new();
  gtk_overlay_set_child(GTK_OVERLAY(overlay), makeColumn(0, {scroller_, footer}));
  gtk_overlay_add_overlay(GTK_OVERLAY(overlay), note_);
  gtk_window_set_child(window_, overlay);
  showShelf();
}

void Storefront::go(const std::string& destination) {
  destination_ = destination;
  if (isReporting_) QWClient::identifyUser();  // a link may have brought a customer
  auto path = destination.substr(0, destination.find_first_of("?#"));
  if (const auto* product = find(path.substr(path.rfind('/') + 1))) {
    showProduct(*product);
  } else {
    showShelf();
  }
}

void Storefront::showShelf() {
  shown_ = nullptr;
  put(makeShelf(words_, taps()));
}

void Storefront::showProduct(const Product& product) {
  shown_ = &product;
  auto user = QWClient::qwU();
  put(makeProductPage(product, user ? "Chosen for " + *user : "New this season", taps()));
}

void Storefront::put(GtkWidget* page) {
  gtk_scrolled_window_set_child(GTK_SCROLLED_WINDOW(scroller_), page);
  gtk_widget_set_visible(note_, FALSE);
  tellState();
  reportPage();
}

Taps Storefront::taps() {
  return {.offer = [this] { showOffer(); },
          .back = [this] { showShelf(); },
          .care = [this] { QWClient::showInAppBrowser(pages_ + "/pages/care"); },
          .look = [this](const Product& product) { showProduct(product); },
          .add = [this](const Product& product) { add(product); }};
}

void Storefront::startReporting() {
  isReporting_ = true;
  QWClient::identifyUser();
  tellState();
  reportPage();
}

void Storefront::reportPage() const {
  if (!isReporting_) return;
  if (shown_) {
    QWClient::productViewed(propertiesOf(*shown_));
  } else if (words_.empty()) {
    QWClient::categoryViewed({{"id", "shelf"}, {"title", "All products"}});
  }
}

void Storefront::showOffer() {
  QWClient::showInAppMessage(pages_ + "/messages/offer", /*hideCloseButton=*/false,
                             [this](const std::string& button) {
                               QWClient::logEvent("message_button", {{"button", button}});
                               note("You tapped “" + button + "” in the message");
                             });
}

void Storefront::add(const Product& product) {
  taken_.push_back(&product);
  QWClient::productAdded(propertiesOf(product));
  auto text = "Basket  " + std::to_string(taken_.size()) + "  ·  € " + amount(taken_);
  gtk_label_set_text(GTK_LABEL(gtk_button_get_child(GTK_BUTTON(basket_))), text.c_str());
  note("In your basket: " + product.title);
}

void Storefront::order() {
  if (taken_.empty()) return note("There is nothing in your basket yet");
  quenwick::OrderCompletedProperties properties{.revenue = amount(taken_)};
  for (const auto* one : taken_) {
    properties.products.push_back({.id = one->id, .price = one->price, .quantity = 1});
  }
  QWClient::orderCompleted(std::move(properties));
  taken_.clear();
  gtk_label_set_text(GTK_LABEL(gtk_button_get_child(GTK_BUTTON(basket_))), "Basket");
  note("Thank you for your order");
}

void Storefront::note(const std::string& text) {
  gtk_label_set_text(noteText_, text.c_str());
  gtk_widget_set_visible(note_, TRUE);
}

void Storefront::tellState() {
  auto text = isReporting_ ? std::string("Reporting to the service")
                           : std::string("Waiting for the service to confirm the key");
  if (auto user = QWClient::qwU()) text += "   ·   customer " + *user;
  if (!destination_.empty()) text += "   ·   opened at " + destination_;
  gtk_label_set_text(state_, text.c_str());
}

void Storefront::searched(GtkEditable* entry, gpointer self) {
  auto& shop = *static_cast<Storefront*>(self);
  shop.words_ = gtk_editable_get_text(entry);
  if (!shop.words_.empty()) QWClient::productSearched({{"query", shop.words_}});
  shop.showShelf();
}

}  // namespace storefront

#include "quenwick/ui_gtk/Screen_gtk.h"

#include <utility>

#include "quenwick/platform/MainActor.h"
#include "quenwick/ui_gtk/CloseButton_gtk.h"
#include "quenwick/ui_gtk/Covers_gtk.h"
#include "quenwick/ui_gtk/Fade_gtk.h"
#include "quenwick/ui_gtk/Spinner_gtk.h"
#include "quenwick/ui_gtk/WebView_webkit.h"

namespace quenwick::ui {
namespace {

constexpr double kAppearance = 0.25;

}  // namespace

bool Screen::present(GtkWindow* window, std::shared_ptr<platform::ViewController> controller) {
  std::shared_ptr<Screen> screen(new Screen(std::move(controller)));
  if (!addCover(window, screen->cover_)) return false;
  g_set_weak_pointer(&screen->window_, window);
  screen->self_ = screen;
  screen->controller_->setScreen(screen);
  screen->controller_->viewDidLoad();
  screen->watch();
  gtk_widget_set_opacity(screen->cover_, 0);
  fade(screen->cover_, 1, kAppearance);
  if (screen->page_) gtk_widget_grab_focus(screen->page_);
  return true;
}

Screen::Screen(std::shared_ptr<platform::ViewController> controller)
    : controller_(std::move(controller)) {
  g_set_weak_pointer(&cover_, gtk_overlay_new());
  auto* background = gtk_drawing_area_new();
  gtk_overlay_set_child(GTK_OVERLAY(cover_), background);
  connect(background, "resize", resized, this);
}

// The cover is gone by now; unless it was never shown.
Screen::~Screen() {
  if (cover_) g_object_unref(g_object_ref_sink(cover_));
  g_clear_weak_pointer(&cover_);
  g_clear_weak_pointer(&page_);
  g_clear_weak_pointer(&window_);
}

void Screen::watch() {
  connect(cover_, "notify::root", rootChanged, this);
  // The window's, so that the key is heard wherever the focus is, and before the page hears it.
  keys_ = gtk_event_controller_key_new();
  gtk_event_controller_set_propagation_phase(keys_, GTK_PHASE_CAPTURE);
  connect(keys_, "key-pressed", keyPressed, this);
  gtk_widget_add_controller(GTK_WIDGET(window_), keys_);
}

void Screen::setBlackBackground() {
  auto* background = GTK_DRAWING_AREA(gtk_overlay_get_child(GTK_OVERLAY(cover_)));
  gtk_drawing_area_set_draw_func(background, drawBackground, nullptr, nullptr);
}

std::unique_ptr<platform::WebView> Screen::addWebView(
    std::weak_ptr<platform::WebViewDelegate> delegate) {
  auto view = std::make_unique<WebView>(std::move(delegate), isPresented_);
  g_set_weak_pointer(&page_, view->widget());
  gtk_overlay_add_overlay(GTK_OVERLAY(cover_), page_);
  return view;
}

std::unique_ptr<platform::Button> Screen::addButton(const platform::ButtonDescription& description,
                                                    platform::Work action) {
  auto button = std::make_unique<CloseButton>(description.margin, std::move(action));
  gtk_overlay_add_overlay(GTK_OVERLAY(cover_), button->widget());
  return button;
}

std::unique_ptr<platform::ActivityIndicator> Screen::addActivityIndicator(
    platform::ActivityIndicatorStyle) {
  auto spinner = std::make_unique<Spinner>();
  gtk_overlay_add_overlay(GTK_OVERLAY(cover_), spinner->widget());
  return spinner;
}

void Screen::dismiss(bool animated) {
  if (!std::exchange(*isPresented_, false)) return;
  auto finish = [self = shared_from_this()] { self->end(); };
  if (!animated || !cover_) return platform::MainActor::post(finish);
  gtk_widget_set_can_target(cover_, FALSE);
  fade(cover_, 0, kAppearance, finish);
}

void Screen::end() {
  *isPresented_ = false;
  if (cover_) g_signal_handlers_disconnect_by_data(cover_, this);
  if (cover_) {
    auto* background = gtk_overlay_get_child(GTK_OVERLAY(cover_));
    g_signal_handlers_disconnect_by_data(background, this);
  }
  if (window_ && keys_) {
    gtk_widget_remove_controller(GTK_WIDGET(window_), std::exchange(keys_, nullptr));
  }
  if (window_ && cover_) removeCover(window_, cover_);
  controller_.reset();
  self_.reset();
}

void Screen::layOut() {
  if (*isPresented_ && controller_) controller_->viewDidLayoutSubviews();
}

void Screen::drawBackground(GtkDrawingArea*, cairo_t* cairo, int, int, gpointer) {
  cairo_set_source_rgb(cairo, 0, 0, 0);
  cairo_paint(cairo);
}

// Heard in the middle of the layout, when the other views do not have their places yet.
void Screen::resized(GtkDrawingArea*, int width, int height, gpointer self) {
  if (width <= 0 || height <= 0) return;
  platform::MainActor::post([weak = static_cast<Screen*>(self)->weak_from_this()] {
    if (auto screen = weak.lock()) screen->layOut();
  });
}

void Screen::rootChanged(GtkWidget* cover, GParamSpec*, gpointer self) {
  if (gtk_widget_get_root(cover)) return;
  auto screen = static_cast<Screen*>(self)->shared_from_this();
  *screen->isPresented_ = false;
  platform::MainActor::post([screen] { screen->end(); });
}

gboolean Screen::keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers,
                            gpointer self) {
  auto screen = static_cast<Screen*>(self)->shared_from_this();
  bool isEscape =
      key == GDK_KEY_Escape && (modifiers & gtk_accelerator_get_default_mod_mask()) == 0;
  if (!isEscape || !*screen->isPresented_) return FALSE;
  screen->controller_->performEscape();
  return TRUE;
}

}  // namespace quenwick::ui

#pragma once

#include <gtk/gtk.h>

#include <memory>

#include "quenwick/platform/ViewController.h"

namespace quenwick::ui {

/// A cover over the content of a GTK window. It holds itself and its controller until it is
/// dismissed, or its window is closed or given other content.
class Screen : public platform::Screen, public std::enable_shared_from_this<Screen> {
 public:
  /// False where the window has no content.
  static bool present(GtkWindow* window, std::shared_ptr<platform::ViewController> controller);

  ~Screen() override;

  void setBlackBackground() override;
  std::unique_ptr<platform::WebView> addWebView(
      std::weak_ptr<platform::WebViewDelegate> delegate) override;
  std::unique_ptr<platform::Button> addButton(const platform::ButtonDescription& description,
                                              platform::Work action) override;
  std::unique_ptr<platform::ActivityIndicator> addActivityIndicator(
      platform::ActivityIndicatorStyle style) override;
  void dismiss(bool animated) override;

 private:
  explicit Screen(std::shared_ptr<platform::ViewController> controller);
  void watch();
  void layOut();
  void end();

  static void drawBackground(GtkDrawingArea*, cairo_t* cairo, int, int, gpointer);
  static void resized(GtkDrawingArea*, int width, int height, gpointer self);
  static void rootChanged(GtkWidget*, GParamSpec*, gpointer self);
  static gboolean keyPressed(GtkEventControllerKey*, guint key, guint, GdkModifierType modifiers,
                             gpointer self);

  std::shared_ptr<platform::ViewController> controller_;
  std::shared_ptr<Screen> self_;
  std::shared_ptr<bool> isPresented_ = std::make_shared<bool>(true);
  GtkWindow* window_ = nullptr;         // weak
  GtkWidget* cover_ = nullptr;          // weak
  GtkWidget* page_ = nullptr;           // weak
  GtkEventController* keys_ = nullptr;  // the window's
};

}  // namespace quenwick::ui

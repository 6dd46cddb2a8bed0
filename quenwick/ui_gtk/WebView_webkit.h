#pragma once

#include <webkit/webkit.h>

#include <memory>

#include "quenwick/platform/WebView.h"
#include "quenwick/ui_gtk/GObjectPointer.h"
#include "quenwick/ui_gtk/MainContext_glib.h"
#include "quenwick/ui_gtk/Navigation_webkit.h"

namespace quenwick::ui {

/// A page in WebKit. It tells its delegate nothing more once it is not presented any more.
class WebView : public platform::WebView {
 public:
  WebView(std::weak_ptr<platform::WebViewDelegate> delegate, std::shared_ptr<bool> isPresented);
  ~WebView() override;

  GtkWidget* widget() const { return GTK_WIDGET(*view_); }

  platform::ViewSize frameSize() const override;
  platform::EdgeInsets safeAreaInsets() const override { return {}; }
  void load(const platform::URLRequest& request) override;
  void fadeIn(double seconds) override;

 private:
  std::shared_ptr<platform::WebViewDelegate> delegate() const;
  void expectProgress();
  void fail(const platform::PlatformError& error);
  void finish();
  bool ask(const platform::NavigationAction& action);

  static gboolean decidePolicy(WebKitWebView*, WebKitPolicyDecision* decision,
                               WebKitPolicyDecisionType type, gpointer self);
  static void loadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer self);
  static gboolean loadFailed(WebKitWebView*, WebKitLoadEvent, char* url, GError* error,
                             gpointer self);
  static void progressed(WebKitWebView*, GParamSpec*, gpointer self);
  static void responsivenessChanged(WebKitWebView* view, GParamSpec*, gpointer self);
  static void terminated(WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self);

  std::weak_ptr<platform::WebViewDelegate> delegate_;
  std::shared_ptr<bool> isPresented_;
  GObjectPointer<WebKitWebView> view_;
  Navigation navigation_;
  double timeout_ = 0;
  bool isLoading_ = false;    // what `load` asked for
  bool isCommitted_ = false;  // some of it is there
  MainTimer stalled_;
  MainTimer hung_;
};

}  // namespace quenwick::ui

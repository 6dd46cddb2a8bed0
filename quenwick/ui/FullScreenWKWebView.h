#pragma once

#include <memory>
#include <utility>

#include "quenwick/platform/WebView.h"

namespace quenwick {

/// A page view that is laid out under everything: its safe-area insets are always zero.
class FullScreenWKWebView : public platform::WebView {
 public:
  /// Shows its pages in the platform's view.
  explicit FullScreenWKWebView(std::unique_ptr<platform::WebView> view) : view_(std::move(view)) {}

  platform::ViewSize frameSize() const override { return view_->frameSize(); }
  platform::EdgeInsets safeAreaInsets() const override { return {}; }
  void load(const platform::URLRequest& request) override { view_->load(request); }
  void fadeIn(double seconds) override { view_->fadeIn(seconds); }

 private:
  std::unique_ptr<platform::WebView> view_;
};

}  // namespace quenwick

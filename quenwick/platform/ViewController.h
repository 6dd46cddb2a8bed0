#pragma once

#include <memory>
#include <string>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/WebView.h"

namespace quenwick::platform {

enum class ModalPresentationStyle { overCurrentContext = 6 };
enum class ActivityIndicatorStyle { large = 101 };

class Button {
 public:
  virtual ~Button() = default;
  virtual void setHidden(bool isHidden) = 0;
};

/// Turns from its creation until it is stopped, and is then gone from sight.
class ActivityIndicator {
 public:
  virtual ~ActivityIndicator() = default;
  virtual void stopAnimating() = 0;
};

/// What a button looks like and where it stands.
struct ButtonDescription {
  /// The name of the platform's symbol.
  std::string symbol;
  /// Points from its visible shape to the safe area's top and trailing edge.
  double margin = 0;
};

/// A view over a window's whole content, for as long as a controller is presented. What is added
/// stands before what was added earlier. Made by a window toolkit; used on the main actor only.
class Screen {
 public:
  virtual ~Screen() = default;

  virtual void setBlackBackground() = 0;

  /// A web view on all four edges, transparent until it is faded in.
  virtual std::unique_ptr<WebView> addWebView(std::weak_ptr<WebViewDelegate> delegate) = 0;

  virtual std::unique_ptr<Button> addButton(const ButtonDescription& description, Work action) = 0;

  /// In the centre.
  virtual std::unique_ptr<ActivityIndicator> addActivityIndicator(ActivityIndicatorStyle style) = 0;

  /// Ends the presentation and lets the controller go. Once; does nothing the second time.
  virtual void dismiss(bool animated) = 0;
};

/// Decides what its screen shows. The screen keeps it alive while it is presented.
class ViewController {
 public:
  virtual ~ViewController() = default;

  ModalPresentationStyle modalPresentationStyle = ModalPresentationStyle::overCurrentContext;
  bool modalPresentationCapturesStatusBarAppearance = false;

  /// The screen is there, and empty. Called once.
  virtual void viewDidLoad() = 0;
  /// The views have their places: after the first layout, and after each change of size.
  virtual void viewDidLayoutSubviews() = 0;
  /// The person asks to leave without pointing at anything (the escape key).
  virtual void performEscape() { dismiss(true); }

  /// Does nothing while nothing is presented.
  void dismiss(bool animated) {
    if (auto screen = screen_.lock()) screen->dismiss(animated);
  }

  /// None while nothing is presented. Set by who presents.
  std::shared_ptr<Screen> screen() const { return screen_.lock(); }
  void setScreen(std::weak_ptr<Screen> screen) { screen_ = std::move(screen); }

 private:
  std::weak_ptr<Screen> screen_;
};

}  // namespace quenwick::platform

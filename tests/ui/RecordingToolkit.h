#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quenwick/platform/Application.h"
#include "quenwick/platform/MainActor.h"
#include "quenwick/platform/SerialThread.h"
#include "quenwick/platform/ViewController.h"

namespace quenwick::tests {

/// What a controller asked of its toolkit, line by line, in order.
using Record = std::vector<std::string>;

/// A toolkit without a display: it notes what is asked of it. Its work runs when `run` is called.
class RecordingToolkit : public platform::Application,
                         public platform::Executor,
                         public std::enable_shared_from_this<RecordingToolkit> {
 public:
  static std::shared_ptr<RecordingToolkit> install() {
    auto toolkit = std::make_shared<RecordingToolkit>();
    platform::Application::setShared(toolkit);
    platform::MainActor::setExecutor(toolkit);
    return toolkit;
  }

  void post(platform::Work work) override { waiting_.push_back(std::move(work)); }
  void run() {
    while (!waiting_.empty()) {
      for (auto& work : std::exchange(waiting_, {})) platform::runWork(work);
    }
  }

  void open(const platform::URL& url) override { note("open " + url.absoluteString()); }
  std::vector<std::shared_ptr<platform::Window>> windows() const override { return windows_; }

  /// One more window, in which every presentation is refused where `hasContent` is false.
  void addWindow(std::string name, bool isKey, bool hasContent = true);

  void note(std::string line) { record_.push_back(std::move(line)); }
  /// What was noted since the last call.
  Record taken() { return std::exchange(record_, {}); }

  /// The controllers that are presented, the front one last.
  std::vector<std::shared_ptr<platform::ViewController>> presented;
  platform::URLRequest loaded;
  std::weak_ptr<platform::WebViewDelegate> delegate;
  platform::Work closeAction;

 private:
  std::vector<std::shared_ptr<platform::Window>> windows_;
  std::vector<platform::Work> waiting_;
  Record record_;
};

class RecordingScreen : public platform::Screen,
                        public std::enable_shared_from_this<RecordingScreen> {
 public:
  RecordingScreen(RecordingToolkit& toolkit, platform::ViewController* controller)
      : toolkit_(toolkit), controller_(controller) {}

  void setBlackBackground() override { toolkit_.note("black"); }
  std::unique_ptr<platform::WebView> addWebView(
      std::weak_ptr<platform::WebViewDelegate> delegate) override {
    struct View : platform::WebView {
      explicit View(RecordingToolkit& noted) : toolkit(noted) {}
      platform::ViewSize frameSize() const override { return {390, 844}; }
      platform::EdgeInsets safeAreaInsets() const override { return {47, 0, 34, 0}; }
      void load(const platform::URLRequest& request) override {
        toolkit.note("load");
        toolkit.loaded = request;
      }
      void fadeIn(double seconds) override { toolkit.note("fade " + std::to_string(seconds)); }
      RecordingToolkit& toolkit;
    };
    toolkit_.note("page");
    toolkit_.delegate = std::move(delegate);
    return std::make_unique<View>(toolkit_);
  }
  std::unique_ptr<platform::Button> addButton(const platform::ButtonDescription& description,
                                              platform::Work action) override {
    struct View : platform::Button {
      explicit View(RecordingToolkit& noted) : toolkit(noted) {}
      void setHidden(bool isHidden) override { toolkit.note(isHidden ? "hide" : "show"); }
      RecordingToolkit& toolkit;
    };
    toolkit_.note(description.symbol + " " + std::to_string(description.margin));
    toolkit_.closeAction = std::move(action);
    return std::make_unique<View>(toolkit_);
  }
  std::unique_ptr<platform::ActivityIndicator> addActivityIndicator(
      platform::ActivityIndicatorStyle style) override {
    struct View : platform::ActivityIndicator {
      explicit View(RecordingToolkit& noted) : toolkit(noted) {}
      void stopAnimating() override { toolkit.note("stop"); }
      RecordingToolkit& toolkit;
    };
    toolkit_.note("spinner " + std::to_string(static_cast<int>(style)));
    return std::make_unique<View>(toolkit_);
  }
  void dismiss(bool animated) override {
    toolkit_.note(animated ? "dismiss animated" : "dismiss");
    // Keeps the controller until whoever asked has returned, as a fading view does.
    toolkit_.post([&toolkit = toolkit_, gone = controller_, self = shared_from_this()] {
      std::erase_if(toolkit.presented, [&](const auto& one) { return one.get() == gone; });
    });
  }

 private:
  RecordingToolkit& toolkit_;
  platform::ViewController* controller_;
};

class RecordingWindow : public platform::Window {
 public:
  RecordingWindow(RecordingToolkit& toolkit, std::string name, bool isKey, bool hasContent)
      : toolkit_(toolkit), name_(std::move(name)), isKey_(isKey), hasContent_(hasContent) {}

  bool isKeyWindow() const override { return isKey_; }
  bool present(std::shared_ptr<platform::ViewController> controller) override {
    if (!hasContent_) return false;
    toolkit_.note("present over " + name_);
    screens_.push_back(std::make_shared<RecordingScreen>(toolkit_, controller.get()));
    controller->setScreen(screens_.back());
    toolkit_.presented.push_back(controller);
    controller->viewDidLoad();
    controller->viewDidLayoutSubviews();
    return true;
  }

 private:
  RecordingToolkit& toolkit_;
  std::string name_;
  bool isKey_;
  bool hasContent_;
  std::vector<std::shared_ptr<RecordingScreen>> screens_;
};

inline void RecordingToolkit::addWindow(std::string name, bool isKey, bool hasContent) {
  windows_.push_back(std::make_shared<RecordingWindow>(*this, std::move(name), isKey, hasContent));
}

}  // namespace quenwick::tests

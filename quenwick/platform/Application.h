#pragma once

#include <memory>
#include <vector>

#include "quenwick/platform/Export.h"
#include "quenwick/platform/URL.h"

namespace quenwick::platform {

class ViewController;

/// A window of the application. Used on the main actor only.
class Window {
 public:
  virtual ~Window() = default;

  /// Whether it is the one that the person works with.
  virtual bool isKeyWindow() const = 0;

  /// Shows the controller over all that the window shows; false where there is nothing to show it
  /// over.
  virtual bool present(std::shared_ptr<ViewController> controller) = 0;
};

/// The application as its window toolkit knows it. Used on the main actor only.
class QUENWICK_TOOLKIT_EXPORT Application {
 public:
  virtual ~Application() = default;

  /// Hands the URL to the program that the person uses for such URLs. A failure is logged.
  virtual void open(const URL& url) = 0;

  /// The windows that are shown.
  virtual std::vector<std::shared_ptr<Window>> windows() const = 0;

  /// The one that a window toolkit has set for the process; none without a toolkit. Any thread.
  static std::shared_ptr<Application> shared();
  static void setShared(std::shared_ptr<Application> application);
};

}  // namespace quenwick::platform

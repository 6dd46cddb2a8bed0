#pragma once

#include <memory>
#include <vector>

#include "quenwick/platform/Application.h"

namespace quenwick::ui {

/// The application whose windows GTK shows in this process.
class Application : public platform::Application {
 public:
  /// What belongs to a page alone, or to this machine's files, is not handed on.
  void open(const platform::URL& url) override;

  /// The key window is the application's active one; where there is no GtkApplication, the one that
  /// has the focus, or else the one that was made last.
  std::vector<std::shared_ptr<platform::Window>> windows() const override;
};

}  // namespace quenwick::ui

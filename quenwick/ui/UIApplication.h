#pragma once

#include <memory>

#include "quenwick/platform/Application.h"

namespace quenwick {

struct UIApplication {
  UIApplication() = delete;

  /// The first of the application's windows that is the key window; none where there is none, or no
  /// window toolkit. Main actor only.
  static std::shared_ptr<platform::Window> keyWindow();
};

}  // namespace quenwick

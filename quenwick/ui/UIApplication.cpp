#include "quenwick/ui/UIApplication.h"

namespace quenwick {

std::shared_ptr<platform::Window> UIApplication::keyWindow() {
  auto application = platform::Application::shared();
  if (!application) return nullptr;
  for (auto& window : application->windows()) {
    if (window->isKeyWindow()) return window;
  }
  return nullptr;
}

}  // namespace quenwick

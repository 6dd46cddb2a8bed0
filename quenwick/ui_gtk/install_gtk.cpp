#include <atomic>
#include <memory>

#include "quenwick/platform/MainActor.h"
#include "quenwick/ui_gtk/Application_gtk.h"
#include "quenwick/ui_gtk/MainContext_glib.h"
#include "quenwick/ui_gtk/PageSettings_webkit.h"
#include "quenwick/ui_gtk/Pasteboard_gtk.h"
#include "quenwick/ui_gtk/quenwick-ui.h"

namespace quenwick::ui::inline v0 {

bool install(const Options& options) {
  static std::atomic<bool> isInstalled = false;
  if (isInstalled.exchange(true)) return false;
  configurePages(options);
  platform::MainActor::setToolkitExecutor(std::make_shared<MainContext>());
  platform::MainActor::setExecutor(nullptr);
  platform::Pasteboard::setGeneral(std::make_shared<Pasteboard>());
  platform::Application::setShared(std::make_shared<Application>());
  return true;
}

}  // namespace quenwick::ui::inline v0

#include "quenwick/ui_gtk/Application_gtk.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <array>
#include <string>
#include <utility>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/Text.h"
#include "quenwick/ui_gtk/GObjectPointer.h"
#include "quenwick/ui_gtk/Screen_gtk.h"

namespace quenwick::ui {
namespace {

class Window : public platform::Window {
 public:
  Window(GtkWindow* window, bool isKey)
      : window_(GObjectPointer<GtkWindow>::referenced(window)), isKey_(isKey) {}

  bool isKeyWindow() const override { return isKey_; }
  bool present(std::shared_ptr<platform::ViewController> controller) override {
    return Screen::present(*window_, std::move(controller));
  }

 private:
  GObjectPointer<GtkWindow> window_;
  bool isKey_;
};

std::vector<GtkWindow*> shownWindows() {
  std::vector<GtkWindow*> shown;
  auto* all = gtk_window_get_toplevels();
  for (guint i = 0; i < g_list_model_get_n_items(all); ++i) {
    auto one =
        GObjectPointer<GtkWindow>::owned(static_cast<GtkWindow*>(g_list_model_get_item(all, i)));
    if (gtk_widget_get_visible(GTK_WIDGET(*one))) shown.push_back(*one);
  }
  return shown;
}

GtkWindow* activeWindow(const std::vector<GtkWindow*>& shown) {
  auto* application = g_application_get_default();
  if (GTK_IS_APPLICATION(application)) {
    auto* active = gtk_application_get_active_window(GTK_APPLICATION(application));
    if (std::ranges::find(shown, active) != shown.end()) return active;
  }
  auto focused = std::ranges::find_if(shown, gtk_window_is_active);
  if (focused != shown.end()) return *focused;
  return shown.empty() ? nullptr : shown.back();
}

bool mayBeOpened(const platform::URL& url) {
  static constexpr std::array<std::string_view, 7> kKept{"about", "blob",       "data",    "file",
                                                         "",      "javascript", "resource"};
  return std::ranges::find(kKept, platform::lowercased(url.scheme())) == kKept.end();
}

void logNotOpened(const platform::URL& url, std::string_view reason) {
  platform::logPlatformError("Could not open a URL of the scheme \"" + std::string(url.scheme()) +
                             "\": " + std::string(reason));
}

struct Opening {
  platform::URL url;
  GObjectPointer<GtkWindow> over;
};

void opened(GObject*, GAsyncResult* result, gpointer data) {
  std::unique_ptr<Opening> opening(static_cast<Opening*>(data));
  GError* error = nullptr;
  if (gtk_show_uri_full_finish(*opening->over, result, &error)) return;
  logNotOpened(opening->url, error ? error->message : "unknown");
  g_clear_error(&error);
}

}  // namespace

void Application::open(const platform::URL& url) {
  if (!mayBeOpened(url)) return logNotOpened(url, "such URLs stay inside pages");
  auto* window = activeWindow(shownWindows());
  if (!window) return logNotOpened(url, "the application shows no window");
  gtk_show_uri_full(window, url.absoluteString().c_str(), GDK_CURRENT_TIME, nullptr, opened,
                    new Opening{url, GObjectPointer<GtkWindow>::referenced(window)});
}

std::vector<std::shared_ptr<platform::Window>> Application::windows() const {
  std::vector<std::shared_ptr<platform::Window>> all;
  auto shown = shownWindows();
  auto* active = activeWindow(shown);
  all.reserve(shown.size());
  for (auto* window : shown) all.push_back(std::make_shared<Window>(window, window == active));
  return all;
}

}  // namespace quenwick::ui

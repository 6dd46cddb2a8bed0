// An application with one window, of GTK's or of libadwaita's kind, that shows in-app views. It
// takes one command per line of standard input and writes what it notices to standard output, one
// JSON object per line. It ends in order, with its input or where it is told to.

#include <adwaita.h>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <webkit/webkit.h>

#include <csignal>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <thread>

#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/MainActor.h"
#include "quenwick/platform/Pasteboard.h"
#include "quenwick/state/Analytics.h"
#include "quenwick/ui/UIApplication.h"
#include "quenwick/ui/WebViewController.h"
#include "quenwick/ui_gtk/quenwick-ui.h"

namespace quenwick::tests {
namespace {

GtkWindow* window = nullptr;

/// Where the window keeps its content: there are those with a name of their own for it.
const char* contentProperty = "child";

GtkWidget* content() {
  GtkWidget* found = nullptr;
  g_object_get(window, contentProperty, &found, nullptr);
  if (found) g_object_unref(found);  // the window has it
  return found;
}

void say(const platform::Dictionary& event) {
  auto line = platform::JSONSerialization::text(event) + "\n";
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fflush(stdout);
}

class SayingLog : public platform::LogSink {
 public:
  bool isEnabled(platform::LogLevel level) const override {
    return level == platform::LogLevel::error;
  }
  void write(const platform::LogEntry& entry) override { say({{"error", entry.message}}); }
};

/// What of the window's content can be seen of its own: the label, or a cover over it.
void contentChanged(GtkWindow*, GParamSpec*, gpointer) {
  if (auto* shown = content()) say({{"covered", GTK_IS_OVERLAY(shown) != FALSE}});
}

using IsSought = bool(GtkWidget*);

GtkWidget* find(GtkWidget* widget, IsSought* isSought) {
  if (isSought(widget)) return widget;
  for (auto* child = gtk_widget_get_first_child(widget); child;
       child = gtk_widget_get_next_sibling(child)) {
    if (auto* found = find(child, isSought)) return found;
  }
  return nullptr;
}

bool isCloseButton(GtkWidget* widget) {
  return GTK_IS_BUTTON(widget) && gtk_widget_has_css_class(widget, "quenwick-close");
}

bool isPage(GtkWidget* widget) { return WEBKIT_IS_WEB_VIEW(widget); }

void describePage() {
  auto* page = WEBKIT_WEB_VIEW(find(GTK_WIDGET(window), isPage));
  auto* session = webkit_web_view_get_network_session(page);
  auto* settings = webkit_web_view_get_settings(page);
  auto onErrors = webkit_network_session_get_tls_errors_policy(session);
  say({{"page",
        platform::Dictionary{{"isEphemeral", webkit_network_session_is_ephemeral(session) != FALSE},
                             {"verifies", onErrors == WEBKIT_TLS_ERRORS_POLICY_FAIL},
                             {"hasDeveloperTools",
                              webkit_settings_get_enable_developer_extras(settings) != FALSE}}}});
}

void describeCloseButton() {
  auto* button = find(GTK_WIDGET(window), isCloseButton);
  if (!button) return say({{"closeButton", nullptr}});
  graphene_rect_t bounds;
  if (!gtk_widget_compute_bounds(button, GTK_WIDGET(window), &bounds)) return;
  auto* wrong = gtk_test_accessible_check_property(GTK_ACCESSIBLE(button),
                                                   GTK_ACCESSIBLE_PROPERTY_LABEL, "Close");
  // A cover that is dismissed takes no more clicks while it fades.
  bool isLeaving = !gtk_widget_get_can_target(gtk_widget_get_parent(button));
  say({{"closeButton", platform::Dictionary{{"x", bounds.origin.x},
                                            {"y", bounds.origin.y},
                                            {"width", bounds.size.width},
                                            {"height", bounds.size.height},
                                            {"isVisible", gtk_widget_get_visible(button) != FALSE},
                                            {"isNamedClose", wrong == nullptr},
                                            {"isFocused", gtk_widget_has_focus(button) != FALSE},
                                            {"isLeaving", isLeaving}}}});
  g_free(wrong);
}

/// Shows a page as any controller may, and gives it half a second to come.
class Impatient : public platform::ViewController,
                  public platform::WebViewDelegate,
                  public std::enable_shared_from_this<Impatient> {
 public:
  explicit Impatient(platform::URL url) : url_(std::move(url)) {}

  void viewDidLoad() override { view_ = screen()->addWebView(weak_from_this()); }
  void viewDidLayoutSubviews() override { view_->load({.url = url_, .timeoutInterval = 0.5}); }
  void webViewDidFinish(platform::WebView&) override { end("finished"); }
  void webView(platform::WebView&, const platform::NavigationAction&,
               const DecisionHandler& decide) override {
    decide(platform::NavigationPolicy::allow);
  }
  void webView(platform::WebView&, const platform::PlatformError& error) override {
    end("failed " + std::to_string(error.code()));
  }
  void webViewWebContentProcessDidTerminate(platform::WebView&) override { end("terminated"); }

 private:
  void end(const std::string& how) {
    say({{"load", how}});
    dismiss(/*animated=*/false);
  }

  platform::URL url_;
  std::unique_ptr<platform::WebView> view_;
};

platform::Task<void> paste() {
  auto pasteboard = platform::Pasteboard::general();
  auto hasURLs = co_await pasteboard->hasURLs();
  auto hasStrings = co_await pasteboard->hasStrings();
  auto url = co_await pasteboard->url();
  auto text = co_await pasteboard->string();
  say({{"hasURLs", hasURLs},
       {"hasStrings", hasStrings},
       {"url", url ? platform::Value(url->absoluteString()) : platform::Value()},
       {"string", text ? platform::Value(*text) : platform::Value()}});
}

void copy(const std::string& mimeType, const std::string& content) {
  auto* bytes = g_bytes_new(content.data(), content.size());
  auto* provider = gdk_content_provider_new_for_bytes(mimeType.c_str(), bytes);
  gdk_clipboard_set_content(gtk_widget_get_clipboard(GTK_WIDGET(window)), provider);
  g_object_unref(provider);
  g_bytes_unref(bytes);
  say({{"copied", mimeType}});
}

void obey(const std::string& line) {
  std::istringstream words(line);
  std::string command, first, second;
  words >> command >> first >> second;
  if (command == "message" || command == "message-without-close" || command == "browser") {
    WebViewController::show(*platform::URL::parse(first), command == "browser",
                            command == "message-without-close",
                            [](const std::string& id) { say({{"button", id}}); });
  }
  if (command == "impatient") {
    UIApplication::keyWindow()->present(std::make_shared<Impatient>(*platform::URL::parse(first)));
  }
  if (command == "close-button") describeCloseButton();
  if (command == "page") describePage();
  if (command == "link-user") Analytics::shared().setQWU(first);
  if (command == "copy") copy(first, second);
  if (command == "paste") platform::spawn(paste());
  if (command == "right-to-left") gtk_widget_set_default_direction(GTK_TEXT_DIR_RTL);
  if (command == "left-to-right") gtk_widget_set_default_direction(GTK_TEXT_DIR_LTR);
  if (command == "replace-content")
    g_object_set(window, contentProperty, gtk_label_new("Other"), nullptr);
}

GtkWidget* makeWindow(GtkApplication* application, const std::string& kind) {
  if (kind != "adwaita") return gtk_application_window_new(application);
  adw_init();
  contentProperty = "content";
  return adw_application_window_new(application);
}

void activate(GtkApplication* application, gpointer kind) {
  ui::install();
  window = GTK_WINDOW(makeWindow(application, *static_cast<std::string*>(kind)));
  gtk_window_set_decorated(window, FALSE);
  // There is no window manager to do this.
  GdkRectangle screen;
  auto* display = gtk_widget_get_display(GTK_WIDGET(window));
  auto* monitor =
      static_cast<GdkMonitor*>(g_list_model_get_item(gdk_display_get_monitors(display), 0));
  gdk_monitor_get_geometry(monitor, &screen);
  g_object_unref(monitor);
  gtk_window_set_default_size(window, screen.width, screen.height);
  g_object_set(window, contentProperty, gtk_entry_new(), nullptr);
  auto changed = std::string("notify::") + contentProperty;
  g_signal_connect(window, changed.c_str(), reinterpret_cast<GCallback>(contentChanged), nullptr);
  gtk_window_present(window);
  say({{"ready", !ui::install()}});
  std::thread([application] {
    for (std::string line; std::getline(std::cin, line);) {
      platform::MainActor::post([line] { obey(line); });
    }
    platform::MainActor::post([application] { g_application_quit(G_APPLICATION(application)); });
  }).detach();
}

gboolean quit(gpointer application) {
  g_application_quit(G_APPLICATION(application));
  return G_SOURCE_CONTINUE;
}

int run(const char* home, std::string kind) {
  platform::configureHost({.bundleIdentifier = "com.example.host", .home = home});
  platform::setLogSink(std::make_shared<SayingLog>());
  auto* application = gtk_application_new("com.example.host", G_APPLICATION_NON_UNIQUE);
  g_signal_connect(application, "activate", reinterpret_cast<GCallback>(activate), &kind);
  g_unix_signal_add(SIGTERM, quit, application);
  return g_application_run(G_APPLICATION(application), 0, nullptr);
}

}  // namespace
}  // namespace quenwick::tests

int main(int count, char** words) {
  return count == 3 ? quenwick::tests::run(words[1], words[2]) : 2;
}

// A small shop with a window that takes part: it opens with links, reports what its customers do,
// and shows the service's messages over itself. Key and domains stand in Info.plist.

#include <glib-unix.h>
#include <gtk/gtk.h>

#include <chrono>
#include <csignal>
#include <memory>
#include <string>

#include <quenwick/quenwick.h>
#include <quenwick/ui_gtk/quenwick-ui.h>

#include "Storefront.h"

namespace storefront {
namespace {

using namespace std::chrono_literals;
using quenwick::DeeplinkResult;
using quenwick::QWClient;

/// What the program is called with, to reach a sandbox in place of the service.
struct Options {
  const char* service = nullptr;
  const char* authority = nullptr;
  const char* pages = "https://shop.example";
  const char* home = nullptr;
  int port = 0;
  int httpPort = 0;
};
Options options;

std::unique_ptr<Storefront> shop;

std::string contents(const char* file) {
  char* text = nullptr;
  gsize size = 0;
  if (!file || !g_file_get_contents(file, &text, &size, nullptr)) return "";
  std::string all(text, size);
  g_free(text);
  return all;
}

quenwick::Configuration configuration() {
  quenwick::Configuration configuration{.trustAnchors = contents(options.authority)};
  if (options.service) configuration.serviceURL = options.service;
  if (options.home) configuration.home = options.home;
  for (auto [port, to] : {std::pair(443, options.port), {80, options.httpPort}}) {
    if (to == 0) continue;
    configuration.connectTo.push_back({.port = static_cast<std::uint16_t>(port),
                                       .toAddress = "127.0.0.1",
                                       .toPort = static_cast<std::uint16_t>(to)});
  }
  return configuration;
}

void linkResolved(const DeeplinkResult& result) {
  if (!shop) return;
  if (auto* link = std::get_if<std::string>(&result)) return shop->go(*link);
  shop->note("That link leads nowhere any more");
}

void startUp(GApplication*, gpointer) {
  quenwick::configure(configuration());
  quenwick::ui::install();
  QWClient::setEventsEnabledHandler([] {
    if (shop) shop->startReporting();
  });
  QWClient::start({.deeplinkHandler = linkResolved});
}

void present(GApplication* application) {
  if (!shop) shop = std::make_unique<Storefront>(GTK_APPLICATION(application), options.pages);
  gtk_window_present(shop->window());
}

void activate(GApplication* application, gpointer) {
  present(application);
  QWClient::checkPasteboardOnInstall();
}

/// Links that the desktop hands over, and those of the command line. What is none of the service's
/// is one of the shop's own, such as "shopapp://product/42".
void open(GApplication* application, GFile** files, int count, const char*, gpointer) {
  present(application);
  for (int i = 0; i < count; ++i) {
    auto* link = g_file_get_uri(files[i]);
    if (!QWClient::handleUniversalLink(link)) shop->go(link);
    g_free(link);
  }
}

void shutDown(GApplication*, gpointer) {
  QWClient::flush(2s);
  QWClient::shutdown(2s);
  shop.reset();
}

/// The session's end is an end in order too.
gboolean quit(gpointer application) {
  g_application_quit(G_APPLICATION(application));
  return G_SOURCE_CONTINUE;
}

void addOptions(GApplication* application) {
  const GOptionEntry entries[] = {
      {"service", 0, 0, G_OPTION_ARG_STRING, &options.service, "The service's base URL", "URL"},
      {"authority", 0, 0, G_OPTION_ARG_FILENAME, &options.authority, "An issuer to trust", "PEM"},
      {"port", 0, 0, G_OPTION_ARG_INT, &options.port, "Where HTTPS is, on this machine", "N"},
      {"http-port", 0, 0, G_OPTION_ARG_INT, &options.httpPort, "And HTTP", "N"},
      {"pages", 0, 0, G_OPTION_ARG_STRING, &options.pages, "Where the shop's pages are", "URL"},
      {"home", 0, 0, G_OPTION_ARG_FILENAME, &options.home, "Where state is kept", "FOLDER"},
      {}};
  g_application_add_main_option_entries(application, entries);
}

template <class Function>
void connect(GApplication* application, const char* signal, Function* function) {
  g_signal_connect(application, signal, reinterpret_cast<GCallback>(function), nullptr);
}

}  // namespace
}  // namespace storefront

int main(int count, char** words) {
  auto* application =
      G_APPLICATION(gtk_application_new("com.example.storefront", G_APPLICATION_HANDLES_OPEN));
  storefront::addOptions(application);
  storefront::connect(application, "startup", storefront::startUp);
  storefront::connect(application, "activate", storefront::activate);
  storefront::connect(application, "open", storefront::open);
  storefront::connect(application, "shutdown", storefront::shutDown);
  g_unix_signal_add(SIGTERM, storefront::quit, application);
  int status = g_application_run(application, count, words);
  g_object_unref(application);
  return status;
}

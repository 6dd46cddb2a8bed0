#include "quenwick/ui_gtk/PageSettings_webkit.h"

#include <algorithm>
#include <array>

#include "quenwick/platform/LogSink.h"

namespace quenwick::ui {
namespace {

constexpr auto kOurs = "quenwick-page";

struct Pages {
  bool developerTools = false;
  GObjectPointer<WebKitNetworkSession> session;
  GObjectPointer<WebKitWebContext> context;
};

Pages& pages() {
  static auto& instance = *new Pages;
  return instance;
}

void refuseDownload(WebKitNetworkSession*, WebKitDownload* download, gpointer) {
  auto* view = webkit_download_get_web_view(download);
  if (!view || !g_object_get_data(G_OBJECT(view), kOurs)) return;
  webkit_download_cancel(download);
  platform::logPlatformError("A page's download was refused");
}

void prepare(Pages& pages) {
  if (pages.context) return;
  using Session = GObjectPointer<WebKitNetworkSession>;
  if (!pages.session) {
    pages.session = Session::owned(webkit_network_session_new_ephemeral());
    webkit_network_session_set_tls_errors_policy(*pages.session, WEBKIT_TLS_ERRORS_POLICY_FAIL);
  }
  connect(*pages.session, "download-started", refuseDownload, nullptr);
  pages.context = GObjectPointer<WebKitWebContext>::owned(webkit_web_context_new());
}

GObjectPointer<WebKitSettings> makeSettings(bool developerTools) {
  auto settings = GObjectPointer<WebKitSettings>::owned(webkit_settings_new());
  auto* object = *settings;
  webkit_settings_set_allow_file_access_from_file_urls(object, FALSE);
  webkit_settings_set_allow_universal_access_from_file_urls(object, FALSE);
  webkit_settings_set_allow_top_navigation_to_data_urls(object, FALSE);
  webkit_settings_set_disable_web_security(object, FALSE);
  webkit_settings_set_enable_developer_extras(object, developerTools);
  webkit_settings_set_enable_write_console_messages_to_stdout(object, FALSE);
  webkit_settings_set_javascript_can_open_windows_automatically(object, FALSE);
  webkit_settings_set_javascript_can_access_clipboard(object, FALSE);
  webkit_settings_set_allow_modal_dialogs(object, FALSE);
  webkit_settings_set_enable_fullscreen(object, FALSE);
  webkit_settings_set_enable_media_stream(object, FALSE);
  webkit_settings_set_enable_webrtc(object, FALSE);
  webkit_settings_set_enable_encrypted_media(object, FALSE);
  webkit_settings_set_enable_back_forward_navigation_gestures(object, FALSE);
  return settings;
}

gboolean denyPermission(WebKitWebView*, WebKitPermissionRequest* request, gpointer) {
  webkit_permission_request_deny(request);
  return TRUE;
}

gboolean refuseFiles(WebKitWebView*, WebKitFileChooserRequest* request, gpointer) {
  webkit_file_chooser_request_cancel(request);
  return TRUE;
}

gboolean goOnWithoutCredentials(WebKitWebView*, WebKitAuthenticationRequest* request, gpointer) {
  webkit_authentication_request_authenticate(request, nullptr);
  return TRUE;
}

// Dialogs, notifications, printing: handled by not doing them.
gboolean ignore(WebKitWebView*, gpointer, gpointer) { return TRUE; }

gboolean keepHarmlessItems(WebKitWebView*, WebKitContextMenu* menu, WebKitHitTestResult*,
                           gpointer) {
  static constexpr std::array kHarmless{
      WEBKIT_CONTEXT_MENU_ACTION_COPY,       WEBKIT_CONTEXT_MENU_ACTION_CUT,
      WEBKIT_CONTEXT_MENU_ACTION_PASTE,      WEBKIT_CONTEXT_MENU_ACTION_DELETE,
      WEBKIT_CONTEXT_MENU_ACTION_SELECT_ALL, WEBKIT_CONTEXT_MENU_ACTION_COPY_LINK_TO_CLIPBOARD};
  auto isKept = [](WebKitContextMenuAction action) {
    return std::ranges::find(kHarmless, action) != kHarmless.end() ||
           (action == WEBKIT_CONTEXT_MENU_ACTION_INSPECT_ELEMENT && pages().developerTools);
  };
  auto* items = g_list_copy(webkit_context_menu_get_items(menu));
  for (auto* one = items; one; one = one->next) {
    auto* item = static_cast<WebKitContextMenuItem*>(one->data);
    if (!isKept(webkit_context_menu_item_get_stock_action(item))) {
      webkit_context_menu_remove(menu, item);
    }
  }
  g_list_free(items);
  return webkit_context_menu_get_n_items(menu) == 0;
}

void connectRefusals(WebKitWebView* view) {
  connect(view, "permission-request", denyPermission, nullptr);
  connect(view, "run-file-chooser", refuseFiles, nullptr);
  connect(view, "authenticate", goOnWithoutCredentials, nullptr);
  connect(view, "context-menu", keepHarmlessItems, nullptr);
  for (auto* signal : {"script-dialog", "show-notification", "print", "run-color-chooser"}) {
    connect(view, signal, ignore, nullptr);
  }
}

/// A file that is dropped on a page would be opened in its place.
void refuseDrops(GtkWidget* view) {
  auto controllers = GObjectPointer<GListModel>::owned(gtk_widget_observe_controllers(view));
  for (auto i = g_list_model_get_n_items(*controllers); i-- > 0;) {
    auto one = GObjectPointer<GtkEventController>::owned(
        static_cast<GtkEventController*>(g_list_model_get_item(*controllers, i)));
    bool takesDrops = GTK_IS_DROP_TARGET(*one) || GTK_IS_DROP_TARGET_ASYNC(*one);
    if (takesDrops) gtk_widget_remove_controller(view, *one);
  }
}

}  // namespace

void configurePages(const Options& options) {
  pages().developerTools = options.developerTools;
  pages().session = GObjectPointer<WebKitNetworkSession>::referenced(options.networkSession);
}

GObjectPointer<WebKitWebView> makePageView() {
  prepare(pages());
  auto settings = makeSettings(pages().developerTools);
  auto view = GObjectPointer<WebKitWebView>::referenced(WEBKIT_WEB_VIEW(
      g_object_new(WEBKIT_TYPE_WEB_VIEW, "web-context", *pages().context, "network-session",
                   *pages().session, "settings", *settings, nullptr)));
  g_object_set_data(G_OBJECT(*view), kOurs, &pages());
  connectRefusals(*view);
  refuseDrops(GTK_WIDGET(*view));
  return view;
}

}  // namespace quenwick::ui

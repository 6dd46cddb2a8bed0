#include "quenwick/ui_gtk/WebView_webkit.h"

#include <utility>

#include "quenwick/platform/LogSink.h"
#include "quenwick/ui_gtk/Fade_gtk.h"
#include "quenwick/ui_gtk/PageSettings_webkit.h"

namespace quenwick::ui {
namespace {

/// Beyond what the engine itself waits before it calls a process unresponsive.
constexpr std::chrono::seconds kMayHang{5};

platform::PlatformError errorFrom(const GError& error, const char* url) {
  platform::UserInfo userInfo;
  if (url) {
    userInfo.emplace(platform::NSURLErrorFailingURLStringErrorKey, url);
    userInfo.emplace(platform::NSURLErrorKey, url);
  }
  int code = platform::URLErrorCode::unknown;
  if (error.domain == G_TLS_ERROR) code = platform::URLErrorCode::secureConnectionFailed;
  if (error.domain == G_RESOLVER_ERROR) code = platform::URLErrorCode::cannotFindHost;
  return {std::string(platform::kURLErrorDomain), code, error.message, std::move(userInfo)};
}

platform::PlatformError timedOut() {
  return {std::string(platform::kURLErrorDomain), platform::URLErrorCode::timedOut,
          "the server took too long to answer"};
}

}  // namespace

WebView::WebView(std::weak_ptr<platform::WebViewDelegate> delegate,
                 std::shared_ptr<bool> isPresented)
    : delegate_(std::move(delegate)), isPresented_(std::move(isPresented)), view_(makePageView()) {
  gtk_widget_set_opacity(widget(), 0);
  connect(*view_, "decide-policy", decidePolicy, this);
  connect(*view_, "load-changed", loadChanged, this);
  connect(*view_, "load-failed", loadFailed, this);
  connect(*view_, "notify::estimated-load-progress", progressed, this);
  connect(*view_, "notify::is-web-process-responsive", responsivenessChanged, this);
  connect(*view_, "web-process-terminated", terminated, this);
}

WebView::~WebView() { g_signal_handlers_disconnect_by_data(*view_, this); }

platform::ViewSize WebView::frameSize() const {
  return {static_cast<double>(gtk_widget_get_width(widget())),
          static_cast<double>(gtk_widget_get_height(widget()))};
}

void WebView::load(const platform::URLRequest& request) {
  if (!request.url) return;
  timeout_ = request.timeoutInterval.value_or(0);
  isLoading_ = true;
  isCommitted_ = false;
  expectProgress();
  webkit_web_view_load_uri(*view_, request.url->absoluteString().c_str());
}

void WebView::fadeIn(double seconds) { fade(widget(), 1, seconds); }

std::shared_ptr<platform::WebViewDelegate> WebView::delegate() const {
  return *isPresented_ ? delegate_.lock() : nullptr;
}

void WebView::expectProgress() {
  if (!isLoading_ || timeout_ <= 0) return;
  auto duration = std::chrono::duration<double>(timeout_);
  stalled_.start(std::chrono::ceil<std::chrono::milliseconds>(duration), [this] {
    // A page that lacks only some picture is worth showing.
    isCommitted_ ? finish() : fail(timedOut());
  });
}

void WebView::fail(const platform::PlatformError& error) {
  if (!std::exchange(isLoading_, false)) return;
  stalled_.stop();
  if (auto told = delegate()) told->webView(*this, error);
}

void WebView::finish() {
  isLoading_ = false;
  stalled_.stop();
  if (auto told = delegate()) told->webViewDidFinish(*this);
}

bool WebView::ask(const platform::NavigationAction& action) {
  auto asked = delegate();
  if (!asked) return false;
  bool isAllowed = false;
  asked->webView(*this, action, [&isAllowed](platform::NavigationPolicy policy) {
    isAllowed = policy == platform::NavigationPolicy::allow;
  });
  return isAllowed;
}

gboolean WebView::decidePolicy(WebKitWebView* view, WebKitPolicyDecision* decision,
                               WebKitPolicyDecisionType type, gpointer self) {
  auto& page = *static_cast<WebView*>(self);
  page.navigation_.decide(view, decision, type,
                          [&page](const auto& action) { return page.ask(action); });
  return TRUE;
}

void WebView::loadChanged(WebKitWebView*, WebKitLoadEvent event, gpointer self) {
  auto& page = *static_cast<WebView*>(self);
  if (event == WEBKIT_LOAD_COMMITTED) page.isCommitted_ = true;
  // The end of a load that failed is one too.
  if (event == WEBKIT_LOAD_FINISHED && page.isCommitted_) page.finish();
}

gboolean WebView::loadFailed(WebKitWebView*, WebKitLoadEvent, char* url, GError* error,
                             gpointer self) {
  auto& page = *static_cast<WebView*>(self);
  if (page.isCommitted_) return FALSE;
  page.fail(errorFrom(*error, url));
  return TRUE;  // without the engine's own page about it
}

void WebView::progressed(WebKitWebView*, GParamSpec*, gpointer self) {
  static_cast<WebView*>(self)->expectProgress();
}

void WebView::responsivenessChanged(WebKitWebView* view, GParamSpec*, gpointer self) {
  auto& page = *static_cast<WebView*>(self);
  if (webkit_web_view_get_is_web_process_responsive(view)) return page.hung_.stop();
  page.hung_.start(kMayHang, [view] {
    platform::logPlatformError("A page hangs and is ended");
    webkit_web_view_terminate_web_process(view);
  });
}

void WebView::terminated(WebKitWebView*, WebKitWebProcessTerminationReason, gpointer self) {
  auto& page = *static_cast<WebView*>(self);
  page.isLoading_ = false;
  page.stalled_.stop();
  page.hung_.stop();
  if (auto told = page.delegate()) told->webViewWebContentProcessDidTerminate(page);
}

}  // namespace quenwick::ui

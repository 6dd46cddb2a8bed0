#include "quenwick/ui_gtk/Navigation_webkit.h"

#include <string_view>
#include <utility>

#include "quenwick/platform/Application.h"
#include "quenwick/platform/LogSink.h"

namespace quenwick::ui {
namespace {

std::string withoutFragment(std::string_view url) {
  return std::string(url.substr(0, url.find('#')));
}

bool isDownload(WebKitResponsePolicyDecision* decision) {
  if (!webkit_response_policy_decision_is_mime_type_supported(decision)) return true;
  auto* response = webkit_response_policy_decision_get_response(decision);
  auto* headers = webkit_uri_response_get_http_headers(response);
  auto* disposition =
      headers ? soup_message_headers_get_one(headers, "Content-Disposition") : nullptr;
  return disposition && g_ascii_strncasecmp(disposition, "attachment", 10) == 0;
}

void answer(gpointer decision, bool isAllowed) {
  auto* policy = WEBKIT_POLICY_DECISION(decision);
  isAllowed ? webkit_policy_decision_use(policy) : webkit_policy_decision_ignore(policy);
}

}  // namespace

void Navigation::decide(WebKitWebView* view, WebKitPolicyDecision* decision,
                        WebKitPolicyDecisionType type, const Ask& ask) {
  if (type == WEBKIT_POLICY_DECISION_TYPE_RESPONSE) {
    decideResponse(WEBKIT_RESPONSE_POLICY_DECISION(decision), ask);
  } else {
    decideAction(view, WEBKIT_NAVIGATION_POLICY_DECISION(decision),
                 type == WEBKIT_POLICY_DECISION_TYPE_NEW_WINDOW_ACTION, ask);
  }
}

void Navigation::decideAction(WebKitWebView* view, WebKitNavigationPolicyDecision* decision,
                              bool opensNewWindow, const Ask& ask) {
  auto* action = webkit_navigation_policy_decision_get_navigation_action(decision);
  auto* text = webkit_uri_request_get_uri(webkit_navigation_action_get_request(action));
  auto url = platform::URL::parse(text ? text : "");
  if (!url) {
    platform::logPlatformError("A page's link was refused: it is no URL");
    return answer(decision, false);
  }
  auto page = withoutFragment(url->absoluteString());
  bool isUserInitiated = webkit_navigation_action_is_user_gesture(action) != FALSE;
  bool isMoved = std::exchange(moved_, "") == page && !isUserInitiated;
  bool isAllowed = isMoved || ask({*url, isUserInitiated, std::nullopt, opensNewWindow});
  decided_ = isAllowed && (isUserInitiated || isMoved) ? page : "";
  answer(decision, isAllowed && !opensNewWindow);
  if (!isAllowed || !opensNewWindow) return;
  moved_ = page;
  webkit_web_view_load_uri(view, text);
}

void Navigation::decideResponse(WebKitResponsePolicyDecision* decision, const Ask& ask) {
  auto* text = webkit_uri_request_get_uri(webkit_response_policy_decision_get_request(decision));
  auto url = platform::URL::parse(text ? text : "");
  if (!url) return answer(decision, false);
  bool isMainFrame = webkit_response_policy_decision_is_main_frame_main_resource(decision) != FALSE;
  bool isDecided = std::exchange(decided_, "") == withoutFragment(url->absoluteString());
  if (isDownload(decision)) {
    // The person asked for a file: their browser can keep it.
    auto application = platform::Application::shared();
    if (isDecided && isMainFrame && application) application->open(*url);
    platform::logPlatformError("A page's download was refused");
    return answer(decision, false);
  }
  answer(decision, isDecided || ask({*url, false, isMainFrame, false}));
}

}  // namespace quenwick::ui

#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "quenwick/platform/URLSession.h"

namespace quenwick {

/// Watches the redirects of resolutions: takes the link-user identifier and the rules key from
/// each target into the install's state, and ends the chain where a target asks for it. Has no
/// state of its own, so that any number of sessions may share one.
class URLSessionRedirectDelegate : public platform::URLSessionTaskDelegate {
 public:
  /// The process's own; made on first use, never destroyed.
  static std::shared_ptr<URLSessionRedirectDelegate> shared();

  /// Follows the redirect, request unaltered, or none of it where the target has qw_hr=1.
  platform::Task<std::optional<platform::URLRequest>> urlSession(
      platform::URLSession& session, platform::URLSessionTask& task,
      platform::HTTPURLResponse willPerformHTTPRedirection,
      platform::URLRequest newRequest) override;

  /// Has what the redirects carried written now: whoever waits for the load waits for that too.
  void urlSession(platform::URLSession& session, platform::URLSessionTask& task,
                  const platform::PlatformError* didCompleteWithError) override;

  /// The answer to a redirect for callers that take the answer by a completion handler, called on
  /// the pool. The delegate, the session and the task must live until then.
  void urlSession(platform::URLSession& session, platform::URLSessionTask& task,
                  platform::HTTPURLResponse willPerformHTTPRedirection,
                  platform::URLRequest newRequest,
                  std::function<void(std::optional<platform::URLRequest>)> completionHandler);

  /// Hands the URL's link-user identifier, if it has one, to the install's state.
  virtual void setQWUFromDeeplink(const platform::URL& url);

  /// Hands the rules key of the URL's path, if it has one, to the install's state.
  virtual void setRulesPicKeyFromDeeplink(const platform::URL& url);
};

}  // namespace quenwick

#pragma once

#include <memory>
#include <stop_token>

#include "quenwick/platform/URLSession.h"

namespace quenwick {

/// Resolves one tracking link into the destination it stands for.
class DeeplinkManager {
 public:
  /// `url` is resolved over https whatever its scheme is. Without a session the manager makes one
  /// that `URLSessionRedirectDelegate::shared` watches.
  explicit DeeplinkManager(const platform::URL& url,
                           std::shared_ptr<platform::URLSession> session = nullptr);

  const std::shared_ptr<platform::URLSession>& session() const { return session_; }

  /// The link to resolve, with the scheme "https".
  const platform::URL& url() const { return url_; }

  /// Follows the link's redirects and yields the URL at their end; that may be a URL that could
  /// not be loaded, an application's own link for one. What the redirects carried is on disk by
  /// then. Throws `DeeplinkResolutionError`. A cancelled resolution ends at once, with a failure
  /// that says so. From any thread; the manager may go before the task ends.
  platform::Task<platform::URL> resolve(std::stop_token stop = {}) const;

  /// The end of a chain that was answered; throws `DeeplinkResolutionError` for an error status.
  static platform::URL destination(const platform::DataResponse& outcome,
                                   const platform::URL& link);

  /// The end of a chain that could not be loaded: the URL that failed, if the error names one;
  /// else throws `DeeplinkResolutionError`.
  static platform::URL destination(const platform::Error& error, const platform::URL& link);

 private:
  std::shared_ptr<platform::URLSession> session_;
  platform::URL url_;
};

}  // namespace quenwick

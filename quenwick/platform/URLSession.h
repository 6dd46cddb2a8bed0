#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/Task.h"
#include "quenwick/platform/URLRequest.h"

namespace quenwick::platform {

class TrustStore;
class URLSession;

/// Loads for `host` and `port` connect to `toAddress` and `toPort` instead; the request, the
/// certificate's check and the Host field stay as they are. For tests and development.
struct ConnectTo {
  std::string host;
  std::uint16_t port = 443;
  std::string toAddress;
  std::uint16_t toPort = 443;
};

/// How the loads of a session behave. A proxy is taken from the environment as curl reads it.
struct URLSessionConfiguration {
  /// Seconds without any progress after which a load fails with `timedOut`.
  double requestTimeout = 60;
  /// Seconds that a load may take in all, redirects included.
  double resourceTimeout = 7 * 24 * 3600.0;
  CachePolicy cachePolicy = CachePolicy::useProtocolCachePolicy;
  /// Sent with every request that has no field of that name.
  HeaderFields additionalHeaders = {};
  /// Certificates (PEM text) trusted as issuers beside the system's.
  std::string additionalTrustAnchors = {};
  std::vector<ConnectTo> connectTo = {};
  /// Bytes of a body after decompression, beyond which a load fails.
  std::size_t maximumBodySize = 8UL << 20;
};

/// A load as its delegate sees it.
struct URLSessionTask {
  /// The request that was handed in, before any redirect.
  URLRequest originalRequest;
  /// The answer at the end of the redirects; null before the load has ended, and where it failed.
  std::shared_ptr<const URLResponse> response = nullptr;
};

/// Watches the loads of a session. Called on the session's delegate queue, one call at a time.
class URLSessionTaskDelegate {
 public:
  virtual ~URLSessionTaskDelegate() = default;

  /// A server answered with a redirect. The request that is returned is loaded next; with none
  /// the load ends with the redirect itself as its response. Must not throw.
  virtual Task<std::optional<URLRequest>> urlSession(URLSession& session, URLSessionTask& task,
                                                     HTTPURLResponse willPerformHTTPRedirection,
                                                     URLRequest newRequest);

  /// A load ended, with the error it failed with, if any.
  virtual void urlSession(URLSession& session, URLSessionTask& task,
                          const PlatformError* didCompleteWithError);
};

/// What a load yields: the response at the end of the redirects, and its body.
struct DataResponse {
  Bytes data;
  std::shared_ptr<const URLResponse> response;
};

/// While it lives, loads that this thread starts may wait for each other: they are handed to the
/// loading thread with one wake-up, which costs less than one for each.
class LoadsTogether {
 public:
  LoadsTogether();
  ~LoadsTogether();
  LoadsTogether(const LoadsTogether&) = delete;
  LoadsTogether& operator=(const LoadsTogether&) = delete;
};

/// Loads URLs over HTTP/1.1 and HTTP/2. All sessions share one loading thread and its
/// connections; certificates are always verified, TLS is 1.2 at least, and nothing but http and
/// https is ever loaded. Cookies live for the length of one load.
class URLSession : public std::enable_shared_from_this<URLSession> {
 public:
  static constexpr int kMaximumRedirects = 20;
  /// Loads from one origin that are on the wire at a time where a connection carries several of
  /// them (HTTP/2); six elsewhere. The others wait for their turn.
  static constexpr std::size_t kMostAtOnce = 64;

  /// The process's own, without a delegate.
  static std::shared_ptr<URLSession> shared();

  /// Without a delegate queue the delegate is called on the loading thread itself, which serves all
  /// sessions one call at a time: such a delegate must not block.
  static std::shared_ptr<URLSession> make(
      URLSessionConfiguration configuration = {},
      std::shared_ptr<URLSessionTaskDelegate> delegate = nullptr,
      std::shared_ptr<Executor> delegateQueue = nullptr);

  /// Loads the request. Throws `PlatformError` of `kURLErrorDomain`; unless the caller cancelled,
  /// its user info has the URL that failed under `NSURLErrorFailingURLStringErrorKey`.
  Task<DataResponse> data(URLRequest request, std::stop_token stop = {});
  Task<DataResponse> data(std::shared_ptr<const URLRequest> request, std::stop_token stop = {});

  const URLSessionConfiguration& configuration() const { return *configuration_; }

  /// Closes the process's idle connections and waits for it; the loads that start next open new
  /// ones. Does nothing while a load runs. Never to be called on the loading thread.
  static void closeIdleConnections();

 private:
  URLSession(URLSessionConfiguration configuration,
             std::shared_ptr<URLSessionTaskDelegate> delegate,
             std::shared_ptr<Executor> delegateQueue);

  std::shared_ptr<const URLSessionConfiguration> configuration_;
  std::shared_ptr<URLSessionTaskDelegate> delegate_;
  std::shared_ptr<Executor> delegateQueue_;
  std::shared_ptr<TrustStore> trust_;
};

}  // namespace quenwick::platform

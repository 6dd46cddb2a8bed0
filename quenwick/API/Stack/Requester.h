#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

#include "quenwick/API/Stack/APISessionManager.h"
#include "quenwick/API/Stack/BaseRequest.h"
#include "quenwick/API/Stack/FirstValue.h"
#include "quenwick/API/Stack/ResponseSteps.h"
#include "quenwick/auth/AuthenticationTokenManager.h"

namespace quenwick {

/// A request that is composed before it is sent.
struct APIComposition {
  std::shared_ptr<BaseRequest> request;
};

/// The steps of a composition.
enum class APIComposerValue {
  token,  ///< puts a valid access token on the request, as its bearer
};

/// Sends requests to one API and decodes its answers. From any thread; it may go while requests
/// run, which end as they would have. A request that is handed in is not needed after the call.
class Requester {
 public:
  Requester(std::shared_ptr<APISessionManager> manager, platform::URL baseURL,
            std::shared_ptr<AuthenticationTokenManager> authenticationTokenManager = nullptr);
  virtual ~Requester() = default;

  const std::shared_ptr<APISessionManager>& manager() const { return manager_; }
  const platform::URL& baseURL() const { return baseURL_; }
  /// The subscriptions of the requests that run.
  const Subscriptions& subscriptions() const { return *subscriptions_; }
  /// Null where the API takes no tokens.
  const std::shared_ptr<AuthenticationTokenManager>& authenticationTokenManager() const {
    return authenticationTokenManager_;
  }

  /// The base URL with the request's path right behind it; none where that is no URL.
  std::optional<platform::URL> url(const Request& request) const;

  /// Sends the request and decodes the answer. Throws `APIError`; `TokenError` for status 401;
  /// `MissingOutputError` where the manager has no session. A request that cannot be built or
  /// loaded is logged. A requested stop ends it with the error of a cancelled load.
  template <Decodable T>
  platform::Task<T> requestAPI(const Request& request, const std::stop_token& stop = {}) const {
    return firstValue(publisher<T>(request, stop), subscriptions_);
  }

  /// The same as a publisher, which sends the request once for each subscriber. Values and
  /// failures come on the pool; one of a request that cannot be built inside `subscribe`.
  template <Decodable T>
  platform::FailingPublisher<T> publisher(const Request& request,
                                          const std::stop_token& stop = {}) const {
    return platform::FailingPublisher<T>(
        [sending = sending(request)](const std::stop_token& end) {
          return decoded<T>(load(sending, end));
        },
        stop);
  }

  /// Applies the steps, in their order, to the composition's request. Throws `TokenError`. To ask
  /// a requester without a token manager for the token is a programming fault.
  template <std::same_as<APIComposerValue>... Step>
  platform::Task<void> compose(APIComposition composition, Step... steps) const {
    return composed(authenticationTokenManager_, std::move(composition), {steps...});
  }

  /// Sends the request and keeps the answer's body in the file at its `cachePath`, whole or not at
  /// all, for the user alone to read. Throws as `requestAPI` does, and `platform::PlatformError`
  /// where the file cannot be written.
  platform::Task<std::filesystem::path> download(const Request& request,
                                                 const std::stop_token& stop = {}) const;

  /// The file for the body of the request: one for each method, URL and parameters, named so that
  /// none of them can be read from it. Throws the `APIError` of a request that cannot be built.
  std::filesystem::path cachePath(const Request& request) const;

 private:
  using Body = std::optional<platform::Bytes>;
  struct Sending;

  platform::URLRequest built(const Request& request) const;
  std::shared_ptr<const Sending> sending(const Request& request) const;
  /// The body of a good answer; none where there is no session.
  static platform::Task<Body> load(std::shared_ptr<const Sending> sending, std::stop_token stop);
  template <Decodable T>
  static platform::Task<std::optional<T>> decoded(platform::Task<Body> loading) {
    auto body = co_await loading;
    if (!body) co_return std::nullopt;
    co_return decodedBody<T>(*body);
  }
  static platform::Task<void> composed(std::shared_ptr<AuthenticationTokenManager> tokens,
                                       APIComposition composition,
                                       std::vector<APIComposerValue> steps);

  std::shared_ptr<APISessionManager> manager_;
  platform::URL baseURL_;
  std::shared_ptr<Subscriptions> subscriptions_ = std::make_shared<Subscriptions>();
  std::shared_ptr<AuthenticationTokenManager> authenticationTokenManager_;
};

}  // namespace quenwick

#include "quenwick/API/Stack/Requester.h"

#include "quenwick/API/Stack/RequestConvertible.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/AtomicFile.h"
#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/Writer.h"

namespace quenwick {
namespace {

using platform::Bytes;

std::exception_ptr logged(const platform::Error& error, const std::exception_ptr& failure) {
  Logger::error(QWLogType::behaviorEvent, error.localizedDescription());
  return failure;
}

std::exception_ptr transportFailure(const std::exception_ptr& failure) {
  APIError error(APIError::SessionTaskFailed{platform::errorFrom(failure)});
  return logged(error, std::make_exception_ptr(error));
}

/// Writes where everything is written: no file keeps a thread of the pool.
platform::Task<void> write(std::filesystem::path file, Bytes body) {
  auto bytes = std::make_shared<const Bytes>(std::move(body));
  co_await platform::suspend<void>([&](platform::Continuation<void> continuation) {
    platform::writer().post([file, bytes, continuation] {
      continuation.resumeWith([&] { platform::writeAtomically(file, *bytes); });
    });
  });
}

platform::Task<std::filesystem::path> keep(platform::Task<Bytes> loading,
                                           std::filesystem::path file) {
  auto body = co_await loading;
  co_await write(file, std::move(body));
  co_return file;
}

platform::Task<std::filesystem::path> failed(std::exception_ptr failure) {
  std::rethrow_exception(failure);
  co_return {};
}

}  // namespace

Requester::Requester(std::shared_ptr<APISessionManager> manager, platform::URL baseURL,
                     std::shared_ptr<AuthenticationTokenManager> authenticationTokenManager)
    : manager_(std::move(manager)),
      baseURL_(std::move(baseURL)),
      authenticationTokenManager_(std::move(authenticationTokenManager)) {}

std::optional<platform::URL> Requester::url(const Request& request) const {
  return platform::URL::parse(baseURL_.absoluteString() + request.path());
}

platform::URLRequest Requester::built(const Request& request) const {
  auto target = request.path().empty() ? baseURL_ : url(request);
  if (!target) throw APIError(APIError::InvalidURL{baseURL_.absoluteString() + request.path()});
  return urlRequest(*std::move(target), request.method(), request.headers(), request.parameters(),
                    request.parameterEncoding());
}

/// A request as it is sent; where it could not be built, with why.
struct Requester::Sending {
  std::shared_ptr<platform::URLSession> session;
  std::shared_ptr<const platform::URLRequest> request = nullptr;
  std::map<int, ConvertToError> handlers = {};
  std::exception_ptr failure = nullptr;
};

std::shared_ptr<const Requester::Sending> Requester::sending(const Request& request) const {
  auto session = manager_->session();
  try {
    return std::make_shared<const Sending>(
        session, std::make_shared<const platform::URLRequest>(built(request)), request.exception());
  } catch (const platform::Error& error) {
    auto failure = logged(error, std::current_exception());
    return std::make_shared<const Sending>(Sending{.session = session, .failure = failure});
  }
}

platform::Task<Requester::Body> Requester::load(std::shared_ptr<const Sending> sending,
                                                std::stop_token stop) {
  if (sending->failure) std::rethrow_exception(sending->failure);
  if (!sending->session) co_return std::nullopt;
  platform::DataResponse answer;
  std::exception_ptr failure;
  try {
    answer = co_await sending->session->data(sending->request, stop);
  } catch (...) {
    failure = std::current_exception();
  }
  if (failure) std::rethrow_exception(transportFailure(failure));
  co_return validatedBody(std::move(answer), sending->handlers);
}

platform::Task<void> Requester::composed(std::shared_ptr<AuthenticationTokenManager> tokens,
                                         APIComposition composition,
                                         std::vector<APIComposerValue> steps) {
  for (auto step : steps) {
    switch (step) {
      case APIComposerValue::token:
        if (!tokens) {
          platform::fatalError(
              "Requester as asked to compose a token, but does not contain a manager");
        }
        composition.request->addAuthorization(co_await tokens->validToken());
    }
  }
}

platform::Task<std::filesystem::path> Requester::download(const Request& request,
                                                          const std::stop_token& stop) const {
  platform::FailingPublisher<Bytes> bodies(
      [sending = sending(request)](const std::stop_token& end) { return load(sending, end); },
      stop);
  auto loading = firstValue(std::move(bodies), subscriptions_);
  try {
    return keep(std::move(loading), cachePath(request));
  } catch (const APIError&) {
    return failed(std::current_exception());
  }
}

std::filesystem::path Requester::cachePath(const Request& request) const {
  auto sent = built(request);
  auto described = sent.httpMethod.value_or("") + '\n' + sent.url->absoluteString() + '\n' +
                   sent.httpBody.value_or("");
  return platform::cachesDirectory() / platform::sha256(described);
}

}  // namespace quenwick

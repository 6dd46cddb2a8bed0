#include "quenwick/API/Stack/Requester.h"

#include "quenwick/API/Stack/RequestConvertible.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/AtomicFile.h"
#include "quenwick/platform/DataTaskPublisher.h"
#include "quenwick/platform/FatalError.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/Writer.h"

namespace quenwick {
namespace {

using platform::Bytes;
using platform::FailingPublisher;

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

FailingPublisher<Bytes> Requester::bodies(const Request& request,
                                          const std::stop_token& stop) const {
  try {
    auto sent = built(request);
    if (!manager_->session()) return FailingPublisher<Bytes>::ended(nullptr);
    return platform::dataTaskPublisher(manager_->session(), std::move(sent), stop)
        .mapError(&transportFailure)
        .map([handlers = request.exception()](platform::DataResponse answer) {
          return validatedBody(std::move(answer), handlers);
        });
  } catch (const platform::Error& error) {
    return FailingPublisher<Bytes>::ended(logged(error, std::current_exception()));
  }
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
  auto loading = firstValue(bodies(request, stop), subscriptions_);
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

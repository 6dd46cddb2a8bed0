#include "quenwick/platform/URLSession.h"

#include <utility>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/TrustStore_openssl.h"
#include "quenwick/platform/URLLoader_curl.h"

namespace quenwick::platform {
namespace {

/// A load's delegate with all that its callbacks are given.
struct Watcher {
  std::shared_ptr<URLSession> session;
  std::shared_ptr<URLSessionTaskDelegate> delegate;
  std::shared_ptr<Executor> queue;
  URLSessionTask task;
};

/// Calls on the delegate's queue: by default that is the loading thread, which calls from here.
template <class Call>
void onQueue(const Watcher& watcher, Call call) {
  if (watcher.queue) {
    watcher.queue->post(std::move(call));
  } else {
    call();
  }
}

/// A delegate must not throw; the redirect is followed where it does all the same.
Task<std::optional<URLRequest>> answerOf(Watcher& watcher, HTTPURLResponse response,
                                         URLRequest next) {
  try {
    co_return co_await watcher.delegate->urlSession(*watcher.session, watcher.task,
                                                    std::move(response), next);
  } catch (...) {
    logPlatformError("a delegate threw: " +
                     errorFrom(std::current_exception())->localizedDescription());
  }
  co_return next;
}

Task<void> askDelegate(std::shared_ptr<Watcher> watcher, std::shared_ptr<Load> load,
                       HTTPURLResponse response, URLRequest next) {
  auto answer = co_await answerOf(*watcher, std::move(response), std::move(next));
  URLLoader::shared().answerRedirect(load, std::move(answer));
}

Load::AskRedirect askRedirectOf(const std::shared_ptr<Watcher>& watcher) {
  return [watcher](const std::shared_ptr<Load>& load, HTTPURLResponse response, URLRequest next) {
    if (!watcher->delegate) return URLLoader::shared().answerRedirect(load, std::move(next));
    auto ask = [watcher, load, response = std::move(response), next = std::move(next)]() mutable {
      spawn(askDelegate(watcher, load, std::move(response), std::move(next)));
    };
    onQueue(*watcher, std::move(ask));
  };
}

/// Tells the delegate, on its queue, and then the task that waits.
Load::End endOf(const std::shared_ptr<Watcher>& watcher, Continuation<DataResponse> continuation) {
  return [watcher, continuation](DataResponse outcome, std::shared_ptr<const PlatformError> error) {
    auto finish = [watcher, continuation, outcome = std::move(outcome), error]() mutable {
      if (watcher->delegate) {
        if (!error) watcher->task.response = outcome.response;
        runWork(
            [&] { watcher->delegate->urlSession(*watcher->session, watcher->task, error.get()); });
      }
      if (error) {
        continuation.fail(std::make_exception_ptr(*error));
      } else {
        continuation.resume(std::move(outcome));
      }
    };
    onQueue(*watcher, std::move(finish));
  };
}

}  // namespace

Task<std::optional<URLRequest>> URLSessionTaskDelegate::urlSession(URLSession&, URLSessionTask&,
                                                                   HTTPURLResponse,
                                                                   URLRequest newRequest) {
  co_return newRequest;
}

void URLSessionTaskDelegate::urlSession(URLSession&, URLSessionTask&, const PlatformError*) {}

URLSession::URLSession(URLSessionConfiguration configuration,
                       std::shared_ptr<URLSessionTaskDelegate> delegate,
                       std::shared_ptr<Executor> delegateQueue)
    : configuration_(std::make_shared<URLSessionConfiguration>(std::move(configuration))),
      delegate_(std::move(delegate)),
      delegateQueue_(std::move(delegateQueue)),
      trust_(std::make_shared<TrustStore>(configuration_->additionalTrustAnchors)) {}

std::shared_ptr<URLSession> URLSession::shared() {
  static const auto& instance = *new std::shared_ptr<URLSession>(make());
  return instance;
}

std::shared_ptr<URLSession> URLSession::make(URLSessionConfiguration configuration,
                                             std::shared_ptr<URLSessionTaskDelegate> delegate,
                                             std::shared_ptr<Executor> delegateQueue) {
  return std::shared_ptr<URLSession>(
      new URLSession(std::move(configuration), std::move(delegate), std::move(delegateQueue)));
}

Task<DataResponse> URLSession::data(URLRequest request, std::stop_token stop) {
  return data(std::make_shared<const URLRequest>(std::move(request)), std::move(stop));
}

Task<DataResponse> URLSession::data(std::shared_ptr<const URLRequest> request,
                                    std::stop_token stop) {
  // The request is for the delegate alone.
  URLSessionTask task{delegate_ ? *request : URLRequest{}};
  auto watcher = std::make_shared<Watcher>(
      Watcher{shared_from_this(), delegate_, delegateQueue_, std::move(task)});
  auto load =
      std::make_shared<Load>(std::move(request), configuration_, trust_, askRedirectOf(watcher));
  std::stop_callback cancel(stop, [load] { URLLoader::shared().cancel(load); });
  auto start = [&](Continuation<DataResponse> continuation) {
    URLLoader::shared().start(load, endOf(watcher, continuation));
  };
  co_return co_await suspend<DataResponse>(start);
}

LoadsTogether::LoadsTogether() { URLLoader::hold(); }

LoadsTogether::~LoadsTogether() { URLLoader::letGo(); }

void URLSession::closeIdleConnections() { URLLoader::shared().closeIdleConnections(); }

}  // namespace quenwick::platform

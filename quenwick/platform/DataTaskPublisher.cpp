#include "quenwick/platform/DataTaskPublisher.h"

#include <atomic>
#include <utility>

namespace quenwick::platform {
namespace {

/// One subscription, and the load that runs for it.
struct Subscription {
  explicit Subscription(Subscriber<DataResponse> toCall) : subscriber(std::move(toCall)) {}

  Subscriber<DataResponse> subscriber;
  std::stop_source stop;
  std::atomic<bool> isLive = true;
};

Task<void> run(std::shared_ptr<URLSession> session, URLRequest request, std::stop_token stop,
               std::shared_ptr<Subscription> subscription) {
  std::optional<DataResponse> answer;
  std::exception_ptr failure;
  {
    std::stop_callback onStop(stop, [&] { subscription->stop.request_stop(); });
    try {
      answer = co_await session->data(std::move(request), subscription->stop.get_token());
    } catch (...) {
      failure = std::current_exception();
    }
  }
  if (answer && subscription->isLive) subscription->subscriber.receive(*std::move(answer));
  if (subscription->isLive.exchange(false)) subscription->subscriber.complete(failure);
}

}  // namespace

FailingPublisher<DataResponse> dataTaskPublisher(const std::shared_ptr<URLSession>& session,
                                                 URLRequest request, const std::stop_token& stop) {
  // Shared, as a publisher is copied by every step put behind it.
  auto shared = std::make_shared<const URLRequest>(std::move(request));
  return FailingPublisher<DataResponse>(
      [session, shared, stop](Subscriber<DataResponse> subscriber) {
        auto subscription = std::make_shared<Subscription>(std::move(subscriber));
        spawn(run(session, *shared, stop, subscription));
        return Cancellable([subscription] {
          if (subscription->isLive.exchange(false)) subscription->stop.request_stop();
        });
      });
}

}  // namespace quenwick::platform

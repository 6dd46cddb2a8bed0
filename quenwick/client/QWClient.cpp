#include "quenwick/client/QWClient.h"

#include <mutex>
#include <utility>

#include "quenwick/client/DeeplinkHandlers.h"
#include "quenwick/client/Lifecycle.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {
namespace {

struct Shared {
  std::mutex mutex;
  std::shared_ptr<QWClient> client;
};

Shared& sharedClient() {
  static auto& instance = *new Shared{{}, std::make_shared<QWClient>()};
  return instance;
}

}  // namespace

struct QWClient::State {
  DeeplinkHandlers deeplinkHandlers;
  std::once_flag hasEventManager;
  std::unique_ptr<BehaviorEventManager> eventManager;
};

QWClient::QWClient() : state_(std::make_unique<State>()) {
  Lifecycle::shared().enter();
  Analytics::shared().sdkID();
}

QWClient::~QWClient() = default;

bool QWClient::enter() { return Lifecycle::shared().enter(); }

std::shared_ptr<QWClient> QWClient::shared() {
  auto& shared = sharedClient();
  std::lock_guard lock(shared.mutex);
  return shared.client;
}

void QWClient::setShared(std::shared_ptr<QWClient> client) {
  if (!client) return;
  auto& shared = sharedClient();
  std::lock_guard lock(shared.mutex);
  shared.client.swap(client);
}

BehaviorEventManager& QWClient::eventManager() {
  std::call_once(state_->hasEventManager,
                 [this] { state_->eventManager = std::make_unique<BehaviorEventManager>(); });
  return *state_->eventManager;
}

DeeplinkHandlers& QWClient::deeplinkHandlers() { return state_->deeplinkHandlers; }

}  // namespace quenwick

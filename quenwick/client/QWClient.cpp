#include "quenwick/client/QWClient.h"

#include <mutex>
#include <utility>

#include "quenwick/client/DeeplinkHandlers.h"
#include "quenwick/client/EventsEnabled.h"
#include "quenwick/client/HostCalls.h"
#include "quenwick/client/Lifecycle.h"
#include "quenwick/events/BehaviorEventManager.h"
#include "quenwick/events/Scheduler.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Replaceable.h"
#include "quenwick/platform/URLSession.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {
namespace {

platform::Replaceable<QWClient>& current() {
  static auto& instance = *new platform::Replaceable<QWClient>;
  return instance;
}

}  // namespace

struct QWClient::State : HostHolder {
  DeeplinkHandlers deeplinkHandlers;
  const std::shared_ptr<EventsEnabled> eventsEnabled = std::make_shared<EventsEnabled>();
  std::once_flag hasEventManager;
  std::unique_ptr<BehaviorEventManager> eventManager;

  void release() override {
    deeplinkHandlers.release();
    eventsEnabled->release();
  }
};

QWClient::QWClient() : state_(std::make_shared<State>()) {
  HostCalls::shared().add(state_);
  if (Lifecycle::shared().enter()) Analytics::shared().sdkID();
}

QWClient::~QWClient() = default;

bool QWClient::enter() { return Lifecycle::shared().enter(); }

std::shared_ptr<QWClient> QWClient::shared() {
  if (auto client = current().get()) return client;
  // Without the lock: it opens files, and what is logged there may reach a hook of the host's. Of
  // two that are made at once the second goes.
  return current().orElse(std::make_shared<QWClient>());
}

void QWClient::setShared(std::shared_ptr<QWClient> client) {
  if (client && enter()) current().replace(std::move(client));
}

BehaviorEventManager& QWClient::eventManager() {
  std::call_once(state_->hasEventManager, [this] {
    state_->eventManager = std::make_unique<BehaviorEventManager>(
        platform::URLSession::shared(), Scheduler::main(), Lifecycle::shared().stopToken());
  });
  return *state_->eventManager;
}

QWLogType QWClient::enabledLogTypes() { return SharedLogger::enabledLogTypes(); }

void QWClient::setEnabledLogTypes(QWLogType types) { SharedLogger::setEnabledLogTypes(types); }

DeeplinkHandlers& QWClient::deeplinkHandlers() { return state_->deeplinkHandlers; }

EventsEnabled& QWClient::eventsEnabled() { return *state_->eventsEnabled; }

}  // namespace quenwick

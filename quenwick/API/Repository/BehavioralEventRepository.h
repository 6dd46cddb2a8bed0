#pragma once

#include <memory>
#include <utility>

#include "quenwick/API/Requesters/BehavioralEventRequestable.h"
#include "quenwick/platform/URL.h"

namespace quenwick {

/// Sends behavioural events to one endpoint. From any thread; not needed after a call.
class BehavioralEventRepository {
 public:
  /// Over a requester of the API service with that endpoint for its host.
  explicit BehavioralEventRepository(const platform::URL& url);
  explicit BehavioralEventRepository(std::shared_ptr<const BehavioralEventRequestable> api)
      : api_(std::move(api)) {}

  const std::shared_ptr<const BehavioralEventRequestable>& api() const { return api_; }

  // These throw what `api` does.
  platform::Task<BehavioralEventContainer> sendEvent(platform::Dictionary payload) const {
    return api_->sendEvent(std::move(payload));
  }
  platform::Task<BehavioralEventContainer> identifyUser(platform::Dictionary payload) const {
    return api_->identifyUser(std::move(payload));
  }

 private:
  std::shared_ptr<const BehavioralEventRequestable> api_;
};

}  // namespace quenwick

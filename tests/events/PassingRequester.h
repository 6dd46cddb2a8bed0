#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "quenwick/API/Requesters/BehavioralEventRequestable.h"

namespace quenwick::tests {

using Sending = platform::Task<BehavioralEventContainer>;
using Sender = std::shared_ptr<const BehavioralEventRequestable>;

/// Stands on the way of events from the pipeline to the wire: each goes through the step given.
class PassingRequester : public BehavioralEventRequestable {
 public:
  using Step = std::function<Sending(Sender real, platform::Dictionary payload)>;

  PassingRequester(Sender real, Step step) : real_(std::move(real)), step_(std::move(step)) {}

  Sending sendEvent(platform::Dictionary payload) const override {
    return step_(real_, std::move(payload));
  }
  Sending identifyUser(platform::Dictionary payload) const override {
    return real_->identifyUser(std::move(payload));
  }
  const TimestampGenerator& timestampGenerator() const override {
    return real_->timestampGenerator();
  }

 private:
  const Sender real_;
  const Step step_;
};

}  // namespace quenwick::tests

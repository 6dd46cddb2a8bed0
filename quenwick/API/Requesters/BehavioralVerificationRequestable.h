#pragma once

#include <stop_token>

#include "quenwick/API/Models/BehavioralVerificationContainer.h"
#include "quenwick/platform/Task.h"

namespace quenwick {

/// Performs the verification handshake.
class BehavioralVerificationRequestable {
 public:
  virtual ~BehavioralVerificationRequestable() = default;

  /// What the service answered. Throws; a requested stop ends it early, with an error. The object
  /// is not needed after the call.
  virtual platform::Task<BehavioralVerificationContainer> verify(std::stop_token stop) const = 0;
};

}  // namespace quenwick

#pragma once

#include "quenwick/API/Stack/BaseRequest.h"

namespace quenwick {

/// The requests of the handshake.
enum class BehavioralVerificationRequestType { verify };

/// A new request of that type, without parameters.
inline BaseRequest request(BehavioralVerificationRequestType) {
  return {HTTPMethod::post, "/behavioral_verification"};
}

}  // namespace quenwick

#pragma once

#include "quenwick/API/Stack/BaseRequest.h"

namespace quenwick {

/// The requests of the event transport.
enum class BehavioralEventRequestType { sendEvent };

/// A new request of that type, to the endpoint itself, without parameters.
inline BaseRequest request(BehavioralEventRequestType) { return {HTTPMethod::post, ""}; }

}  // namespace quenwick

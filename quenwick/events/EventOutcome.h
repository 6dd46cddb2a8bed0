#pragma once

#include <string>

#include "quenwick/events/EventLedger.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// How an event ended that was sent, by its error or by none.
EventState stateAfter(const platform::Error* error);

/// The credential that an event which is sent now goes with; empty where none is at hand.
std::string currentCredential();

/// Writes the lines about an event that was sent, by its error or by none. What the service said is
/// shown without the credential of now, and without the one that the event went with.
void tellEvent(const platform::Dictionary& payload, const platform::Error* error,
               const std::string& credential);

/// The same for an identify record: nothing where it succeeded.
void tellIdentification(const platform::Error* error, const std::string& credential);

}  // namespace quenwick

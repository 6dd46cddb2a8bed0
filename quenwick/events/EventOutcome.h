#pragma once

#include "quenwick/events/EventLedger.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/Value.h"

namespace quenwick {

/// How an event ended that was sent, by its error or by none.
EventState stateAfter(const platform::Error* error);

/// Writes the lines about an event that was sent, by its error or by none.
void tellEvent(const platform::Dictionary& payload, const platform::Error* error);

/// The same for an identify record: nothing where it succeeded.
void tellIdentification(const platform::Error* error);

}  // namespace quenwick

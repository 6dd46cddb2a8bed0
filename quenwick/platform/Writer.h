#pragma once

#include <stop_token>

#include "quenwick/platform/SerialThread.h"
#include "quenwick/platform/Task.h"

namespace quenwick::platform {

/// The thread on which everything that is kept is written, in the order in which it was handed
/// over, some milliseconds later unless it is hurried. When the process exits, what is still
/// waiting is written first, for a second at most.
SerialThread& writer();

/// Ends once everything handed to the writer so far was attempted, or a stop is requested.
Task<void> writerIsDone(std::stop_token stop = {});

}  // namespace quenwick::platform

#pragma once

#include <memory>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/Export.h"

namespace quenwick::platform {

/// The one executor on which the host's handlers run. A host sets its own (its main loop); until
/// then it is a thread of the library's own.
struct QUENWICK_TOOLKIT_EXPORT MainActor {
  /// None restores the library's own thread.
  static void setExecutor(std::shared_ptr<Executor> executor);
  static void post(Work work);
};

}  // namespace quenwick::platform

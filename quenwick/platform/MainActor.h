#pragma once

#include <memory>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/Export.h"

namespace quenwick::platform {

/// The one executor on which the host's handlers run. A host sets its own (its main loop); without
/// one it is the window toolkit's, and where there is none, a thread of the library's own.
struct QUENWICK_TOOLKIT_EXPORT MainActor {
  /// None restores what holds without one.
  static void setExecutor(std::shared_ptr<Executor> executor);
  /// That of the thread on which the toolkit's views must be used, for as long as the process
  /// lives.
  static void setToolkitExecutor(std::shared_ptr<Executor> executor);
  static void post(Work work);
};

}  // namespace quenwick::platform

#pragma once

#include <chrono>
#include <functional>
#include <memory>

#include "quenwick/platform/Cancellable.h"
#include "quenwick/platform/Export.h"

namespace quenwick::platform {

using Work = std::function<void()>;

/// Runs the work. Work must not throw; what escapes it all the same ends here, with an error line.
QUENWICK_TOOLKIT_EXPORT void runWork(const Work& work) noexcept;

/// Runs posted work at some later time, never inside `post`.
class Executor {
 public:
  virtual ~Executor() = default;
  virtual void post(Work work) = 0;
};

/// The library's pool: as many threads as cores, at most four. Lives for the process.
QUENWICK_TOOLKIT_EXPORT Executor& pool();

/// An executor on the pool that runs its work one after the other, in the order it was posted.
std::shared_ptr<Executor> makeStrand();

/// Posts the work to the executor once the duration has passed, unless cancelled before.
QUENWICK_TOOLKIT_EXPORT Cancellable postAfter(std::chrono::nanoseconds duration, Executor& executor,
                                              Work work);

}  // namespace quenwick::platform

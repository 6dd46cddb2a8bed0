#include "quenwick/platform/Executor.h"

#include <exception>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/LogSink.h"

namespace quenwick::platform {

void runWork(const Work& work) noexcept {
  try {
    work();
  } catch (...) {
    auto error = errorFrom(std::current_exception());
    logPlatformError("an exception escaped posted work: " + error->localizedDescription());
  }
}

}  // namespace quenwick::platform

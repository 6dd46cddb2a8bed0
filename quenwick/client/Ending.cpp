#include "quenwick/client/Ending.h"

#include <utility>

#include "quenwick/client/Deadline.h"
#include "quenwick/client/Lifecycle.h"

namespace quenwick {

Ending::Ending(std::stop_token caller, std::optional<std::chrono::nanoseconds> deadline)
    : onCaller_(std::move(caller), stop()), onShutDown_(Lifecycle::shared().stopToken(), stop()) {
  if (deadline) {
    deadline_ = platform::postAfter(Deadline(*deadline).left(), platform::pool(), stop());
  }
}

std::function<void()> Ending::stop() const {
  return [source = source_]() mutable { source.request_stop(); };
}

}  // namespace quenwick

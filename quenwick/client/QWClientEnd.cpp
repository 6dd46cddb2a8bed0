#include "quenwick/client/Deadline.h"
#include "quenwick/client/Lifecycle.h"
#include "quenwick/client/QWClient.h"
#include "quenwick/events/BehaviorEventManager.h"

namespace quenwick {

bool QWClient::flush(std::chrono::nanoseconds atMost) {
  if (!enter()) return false;
  Deadline deadline(atMost);
  bool isDone = shared()->eventManager().flush(deadline.left());
  return Lifecycle::writesAreDone(deadline) && isDone;
}

bool QWClient::shutdown(std::chrono::nanoseconds atMost) {
  Deadline deadline(atMost);
  bool isDone = Lifecycle::shared().shutDown(deadline);
  return Lifecycle::writesAreDone(deadline) && isDone;
}

}  // namespace quenwick

#pragma once

#include <mutex>

#include "quenwick/client/DeeplinkResult.h"

namespace quenwick {

/// Who in the host is told of the outcomes of links. From any thread.
class DeeplinkHandlers {
 public:
  void setHandler(DeeplinkHandler handler);
  void setCompatibilityHandler(DeeplinkCompatibilityHandler handler);

  /// Lets go of both; none is taken any more.
  void release();

  /// Calls both, the handler first; what one throws does not keep the outcome from the other.
  void call(const DeeplinkResult& result) const;

 private:
  mutable std::mutex mutex_;
  bool isReleased_ = false;
  DeeplinkHandler handler_;
  DeeplinkCompatibilityHandler compatibilityHandler_;
};

}  // namespace quenwick

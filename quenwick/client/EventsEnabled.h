#pragma once

#include <functional>
#include <mutex>

namespace quenwick {

/// Tells the host when events become enabled. From any thread.
class EventsEnabled {
 public:
  static EventsEnabled& shared();

  /// Called on the main actor at every announcement from now on, and for one that was made already.
  void setHandler(std::function<void()> handler);
  void announce();

 private:
  void tell();

  std::mutex mutex_;
  std::function<void()> handler_;
  bool isAnnounced_ = false;
};

}  // namespace quenwick

#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>

namespace quenwick {

/// Tells the host when a client's events become enabled. From any thread.
class EventsEnabled : public std::enable_shared_from_this<EventsEnabled> {
 public:
  /// Called on the main actor once for every announcement from now on, and once where one was made
  /// already.
  void setHandler(std::function<void()> handler);
  void announce();

  /// Lets go of the handler; none is taken any more.
  void release();

 private:
  void tell(std::uint64_t announcement);

  std::mutex mutex_;
  bool isReleased_ = false;
  std::function<void()> handler_;
  std::uint64_t announced_ = 0;
  std::uint64_t told_ = 0;  // the latest one of which the handler knows
};

}  // namespace quenwick

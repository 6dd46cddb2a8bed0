#pragma once

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <string>

namespace quenwick::platform {

class Load;

/// An origin's places on the wire, and the loads that wait for one, in order. Where connections
/// carry one load each there are no more places than connections: what curl itself keeps waiting
/// for a connection, it may forget. For the loading thread alone.
class LoadPlaces {
 public:
  /// To one origin, at the most.
  static constexpr std::size_t kConnections = 6;

  void wait(const std::string& origin, std::shared_ptr<Load> load);
  void waitFirst(const std::string& origin, std::shared_ptr<Load> load);
  /// The load waits no more, if it did.
  void forget(const std::string& origin, const std::shared_ptr<Load>& load);

  /// The next of those that wait, which has a place from now on; null where nobody waits or all
  /// places are taken.
  std::shared_ptr<Load> takeNext(const std::string& origin);
  /// A load gives its place back.
  void leave(const std::string& origin);
  /// From now on each connection carries many loads.
  void setMultiplexed(const std::string& origin);

 private:
  struct Origin {
    std::size_t taken = 0;
    bool isMultiplexed = false;
    std::deque<std::shared_ptr<Load>> waiting;
  };

  std::map<std::string, Origin> origins_;  // those with loads
};

}  // namespace quenwick::platform

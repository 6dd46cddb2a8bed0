#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "quenwick/client/HostCalls.h"
#include "quenwick/platform/Publisher.h"

namespace quenwick {

/// The last link that resolved, and who is told of it. From any thread; receivers are called on
/// the main actor alone.
class StoredDeeplink : public HostHolder, public std::enable_shared_from_this<StoredDeeplink> {
 public:
  using Link = std::optional<std::string>;
  using Receive = platform::AnyPublisher<Link>::Receive;

  static std::shared_ptr<StoredDeeplink> make();

  Link value() const;

  /// On the main actor.
  void send(const std::string& link);

  /// The value first, then each new one.
  platform::Cancellable subscribe(Receive receive);

  void release() override;

 private:
  struct Subscriber;

  void begin(int id);
  void end(int id);

  mutable std::mutex mutex_;
  Link value_;
  std::map<int, std::shared_ptr<Subscriber>> subscribers_;
  int nextID_ = 0;
  bool isReleased_ = false;
};

}  // namespace quenwick

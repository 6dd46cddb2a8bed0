#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

#include "quenwick/client/QWClient.h"

namespace quenwick::runtime {

/// The clients that a host has asked for, by the numbers that it names them with. Each is kept
/// until the host ends its number, or the library.
class Clients {
 public:
  static Clients& shared();

  std::int64_t number(const std::shared_ptr<QWClient>& client);

  /// Null for a number that names no client.
  std::shared_ptr<QWClient> at(std::int64_t number);

 private:
  void forget(const QWClient* client);

  std::mutex mutex_;
  std::map<std::int64_t, std::shared_ptr<QWClient>> clients_;
};

}  // namespace quenwick::runtime

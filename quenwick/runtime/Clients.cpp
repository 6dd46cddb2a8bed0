#include "quenwick/runtime/Clients.h"

#include <algorithm>

#include "quenwick/runtime/Handles.h"

namespace quenwick::runtime {

Clients& Clients::shared() {
  static auto& instance = *new Clients;
  return instance;
}

std::int64_t Clients::number(const std::shared_ptr<QWClient>& client) {
  std::lock_guard lock(mutex_);
  for (const auto& [number, known] : clients_) {
    if (known == client) return number;
  }
  auto number = Handles::shared().add([this, pointer = client.get()] { forget(pointer); },
                                      [] { return false; });
  clients_.emplace(number, client);
  return number;
}

std::shared_ptr<QWClient> Clients::at(std::int64_t number) {
  std::lock_guard lock(mutex_);
  auto found = clients_.find(number);
  return found != clients_.end() ? found->second : nullptr;
}

void Clients::forget(const QWClient* client) {
  std::map<std::int64_t, std::shared_ptr<QWClient>> forgotten;  // destroyed without the lock
  std::lock_guard lock(mutex_);
  auto found = std::ranges::find_if(
      clients_, [client](const auto& entry) { return entry.second.get() == client; });
  if (found != clients_.end()) forgotten.insert(clients_.extract(found));
}

}  // namespace quenwick::runtime

#include "quenwick/platform/LoadPlaces.h"

#include <utility>

#include "quenwick/platform/URLSession.h"

namespace quenwick::platform {

void LoadPlaces::wait(const std::string& origin, std::shared_ptr<Load> load) {
  origins_[origin].waiting.push_back(std::move(load));
}

void LoadPlaces::waitFirst(const std::string& origin, std::shared_ptr<Load> load) {
  origins_[origin].waiting.push_front(std::move(load));
}

void LoadPlaces::forget(const std::string& origin, const std::shared_ptr<Load>& load) {
  auto found = origins_.find(origin);
  if (found != origins_.end()) std::erase(found->second.waiting, load);
}

std::shared_ptr<Load> LoadPlaces::takeNext(const std::string& origin) {
  auto found = origins_.find(origin);
  if (found == origins_.end()) return nullptr;
  auto& [taken, isMultiplexed, waiting] = found->second;
  auto most = isMultiplexed ? URLSession::kMostAtOnce : kConnections;
  if (waiting.empty() || taken >= most) {
    if (taken == 0) origins_.erase(found);
    return nullptr;
  }
  ++taken;
  auto next = std::move(waiting.front());
  waiting.pop_front();
  return next;
}

void LoadPlaces::leave(const std::string& origin) { --origins_[origin].taken; }

void LoadPlaces::setMultiplexed(const std::string& origin) {
  origins_[origin].isMultiplexed = true;
}

}  // namespace quenwick::platform

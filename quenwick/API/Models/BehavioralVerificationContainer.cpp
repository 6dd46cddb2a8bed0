#include "quenwick/API/Models/BehavioralVerificationContainer.h"

namespace quenwick {

std::optional<platform::URL> BehavioralVerificationContainer::endpointURL() const {
  return platform::URL::parse(endpoint);
}

}  // namespace quenwick

#include "quenwick/API/Repository/BehavioralEventRepository.h"

#include "quenwick/API/APIService/APIService.h"

namespace quenwick {

BehavioralEventRepository::BehavioralEventRepository(const platform::URL& url)
    : api_(APIService::shared()->behavioralEvent(APIService::Host::custom(url))->requester()) {}

}  // namespace quenwick

#include "quenwick/API/Repository/BehavioralEventRepository.h"

#include "quenwick/API/Requesters/BehavioralEventRequester.h"
#include "quenwick/API/Stack/APISource.h"

namespace quenwick {

BehavioralEventRepository::BehavioralEventRepository(const platform::URL& url)
    : api_(std::make_shared<BehavioralEventRequester>(APISource::manager({}), url)) {}

}  // namespace quenwick

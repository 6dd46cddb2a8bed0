#include "quenwick/API/Models/IdentifyUserContainer.h"

#include <utility>

#include "quenwick/API/Models/RecordCoding.h"
#include "quenwick/state/Analytics.h"

namespace quenwick {

using platform::Dictionary;

IdentifyUserContainer::IdentifyUserContainer(std::string user)
    : IdentifyUserContainer(std::move(user), Analytics::shared()) {}

IdentifyUserContainer::IdentifyUserContainer(std::string user, Analytics& analytics)
    : userID(std::move(user)), anonymousID(analytics.anonymousID()) {}

std::optional<Dictionary> IdentifyUserContainer::asDictionary() const& {
  return IdentifyUserContainer(*this).asDictionary();
}

std::optional<Dictionary> IdentifyUserContainer::asDictionary() && {
  Dictionary dictionary;
  dictionary.set("type", type);
  dictionary.set("user_id", std::move(userID));
  dictionary.set("anonymous_id", std::move(anonymousID));
  return checked(std::move(dictionary));
}

}  // namespace quenwick

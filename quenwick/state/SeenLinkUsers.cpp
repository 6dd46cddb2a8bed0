#include "quenwick/state/SeenLinkUsers.h"

#include <utility>

#include "quenwick/CoreData/DeeplinkQWU.h"
#include "quenwick/CoreData/ManagedObjectType.h"
#include "quenwick/platform/ManagedObjectContext.h"

namespace quenwick {

void SeenLinkUsers::note(std::string value, platform::Date seenAt,
                         const std::shared_ptr<platform::ManagedObjectContext>& context) {
  {
    std::lock_guard lock(mutex_);
    waiting_[&context->persistentStore()].push_back({std::move(value), seenAt});
  }
  context->perform([self = shared_from_this(), context] { self->write(*context); });
}

std::vector<SeenLinkUsers::Note> SeenLinkUsers::takeNotes(const platform::PersistentStore& store) {
  std::lock_guard lock(mutex_);
  auto notes = waiting_.extract(&store);
  return notes ? std::move(notes.mapped()) : std::vector<Note>();
}

void SeenLinkUsers::write(platform::ManagedObjectContext& context) {
  for (auto& [value, seenAt] : takeNotes(context.persistentStore())) {
    auto* record = findOrCreate<DeeplinkQWU>(context, DeeplinkQWU::searchByValuePredicate(value));
    if (!record) continue;
    record->setValue(std::move(value));
    record->setLastSeenAt(seenAt);
  }
  context.save();
}

}  // namespace quenwick

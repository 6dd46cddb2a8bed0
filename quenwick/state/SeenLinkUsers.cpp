#include "quenwick/state/SeenLinkUsers.h"

#include <cstddef>
#include <utility>

#include "quenwick/CoreData/DeeplinkQWU.h"
#include "quenwick/CoreData/ManagedObjectType.h"
#include "quenwick/platform/ManagedObjectContext.h"

namespace quenwick {
namespace {

// A context looks through all that it holds for each note: more at once would cost more for each.
constexpr std::size_t kMostAtOnce = 100;

}  // namespace

void SeenLinkUsers::note(std::string value, platform::Date seenAt,
                         const std::shared_ptr<platform::ManagedObjectContext>& context) {
  {
    std::lock_guard lock(mutex_);
    waiting_[&context->persistentStore()].push_back({std::move(value), seenAt});
  }
  context->perform([self = shared_from_this(), context] { self->write(*context); });
}

/// Some of the notes that wait for the store: every one that waits has work posted that comes here.
std::vector<SeenLinkUsers::Note> SeenLinkUsers::takeNotes(const platform::PersistentStore& store) {
  std::vector<Note> taken;
  std::lock_guard lock(mutex_);
  auto found = waiting_.find(&store);
  if (found == waiting_.end()) return taken;
  auto& notes = found->second;
  for (; !notes.empty() && taken.size() < kMostAtOnce; notes.pop_front()) {
    taken.push_back(std::move(notes.front()));
  }
  if (notes.empty()) waiting_.erase(found);
  return taken;
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

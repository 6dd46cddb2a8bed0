#pragma once

#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "quenwick/platform/Clock.h"

namespace quenwick {

namespace platform {
class ManagedObjectContext;
class PersistentStore;
}  // namespace platform

/// Notes in the link-user store when which link user was seen. Notes that wait for the same store
/// are written together, so many by one transaction. From any thread.
class SeenLinkUsers : public std::enable_shared_from_this<SeenLinkUsers> {
 public:
  /// Returns at once; the note is written on the context's queue.
  void note(std::string value, platform::Date seenAt,
            const std::shared_ptr<platform::ManagedObjectContext>& context);

 private:
  struct Note {
    std::string value;
    platform::Date seenAt;
  };
  std::vector<Note> takeNotes(const platform::PersistentStore& store);
  void write(platform::ManagedObjectContext& context);

  std::mutex mutex_;
  std::map<const platform::PersistentStore*, std::deque<Note>> waiting_;
};

}  // namespace quenwick

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "quenwick/platform/Executor.h"
#include "quenwick/platform/FetchRequest.h"
#include "quenwick/platform/ManagedObject.h"

namespace quenwick::platform {

class PersistentStore;

/// Objects of a store in memory, and changes of them on their way to it. All but `perform` and
/// `performAndWait` is called on the context's queue, and throws `Error` where it can fail. What is
/// not saved goes with the context, as do its objects.
class ManagedObjectContext : public std::enable_shared_from_this<ManagedObjectContext> {
 public:
  /// Which queue the context's work runs on: the writer thread's, or the main actor's.
  enum class Queue { writer, main };

  ManagedObjectContext(std::shared_ptr<PersistentStore> store, Queue queue);
  ~ManagedObjectContext();

  /// The store that the context reads and saves to, kept as long as a context needs it.
  const PersistentStore& persistentStore() const { return *store_; }

  /// Runs the work on the context's queue, later and in order with other work there; the context
  /// lives until it has run. What the work throws is logged.
  void perform(Work work);

  /// Runs the work on the context's queue, waits for it, and throws what it threw. For programs
  /// and tests. Called within work of the same queue it runs at once; on the queue's thread but
  /// outside such work it would wait forever.
  void performAndWait(const Work& work);

  /// A new object with nothing set, or null where the model has no such entity. Given a predicate
  /// that the object satisfies when it is saved, it becomes the stored object that satisfies it
  /// too, if there is one by then.
  ManagedObject* insertNewObject(std::string_view entityName,
                                 std::optional<Predicate> isNewUnless = std::nullopt);

  /// The objects asked for, the context's unsaved changes taken into account. A row that is
  /// registered already yields its registered object, with the values of the file unless it has
  /// changes of its own.
  std::vector<ManagedObject*> execute(const FetchRequest& request);

  /// Writes all changes in one transaction. Where it throws the file is as it was, and the changes
  /// are kept.
  void save();
  bool hasChanges() const { return !changed_.empty(); }

  /// Every object that was fetched or inserted.
  std::vector<ManagedObject*> registeredObjects() const;

  /// Turns a saved object into a fault: drops its values, and changes of them.
  void refresh(ManagedObject& object);

 private:
  friend class ManagedObject;

  void post(Work work);
  ManagedObject& registerObject(const EntityDescription& entity, ManagedObjectID id);
  ManagedObject* objectOf(const EntityDescription& entity, std::int64_t key,
                          AttributeValues values);
  void noteChange(ManagedObject& object);
  AttributeValues storedValues(const ManagedObject& object) const;
  void mergeChanges(const FetchRequest& request, std::vector<ManagedObject*>& objects) const;
  void didSave(ManagedObject& object, std::int64_t key, bool wasThere);

  const std::shared_ptr<PersistentStore> store_;
  const Queue queue_;
  std::int64_t lastTemporaryKey_ = 0;
  std::map<ManagedObjectID, std::unique_ptr<ManagedObject>> registered_;
  std::vector<std::unique_ptr<ManagedObject>> replaced_;  // by another object of the same row
  std::vector<ManagedObject*> changed_;  // in the order in which they were first changed
};

}  // namespace quenwick::platform

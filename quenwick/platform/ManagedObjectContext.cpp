#include "quenwick/platform/ManagedObjectContext.h"

#include <algorithm>
#include <exception>
#include <future>
#include <optional>
#include <string>
#include <utility>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/MainActor.h"
#include "quenwick/platform/PersistentStore.h"
#include "quenwick/platform/Writer.h"

namespace quenwick::platform {
namespace {

/// The queue whose work this thread runs just now.
thread_local std::optional<ManagedObjectContext::Queue> currentQueue;

void runLogged(const Work& work) {
  try {
    work();
  } catch (...) {
    logPlatformError("Work on stored objects failed: " +
                     errorFrom(std::current_exception())->localizedDescription());
  }
}

/// What the object brings to the store; throws where it may not be saved as it is.
PersistentStore::Change changeOf(const ManagedObject& object, AttributeValues values) {
  for (const auto& attribute : object.entity().attributes) {
    if (attribute.isOptional || object.valueForKey(attribute.name).index() > 0) continue;
    throw PlatformError(std::string(kObjectStoreErrorDomain), ObjectStoreErrorCode::missingValue,
                        object.entity().name + "." + attribute.name + " is required");
  }
  const auto& id = object.objectID();
  auto key = id.isTemporary ? std::nullopt : std::optional(id.key);
  return {object.entity(), key, std::move(values)};
}

/// Whether the first object comes before the second, as the store orders its rows.
bool isBefore(const ManagedObject& first, const ManagedObject& second,
              const std::vector<SortDescriptor>& descriptors) {
  bool ascending = true;
  for (const auto& descriptor : descriptors) {
    ascending = descriptor.ascending;
    const auto& left = first.valueForKey(descriptor.key);
    const auto& right = second.valueForKey(descriptor.key);
    if (left != right) return (left < right) == ascending;
  }
  return ascending ? first.objectID() < second.objectID() : second.objectID() < first.objectID();
}

}  // namespace

ManagedObjectContext::ManagedObjectContext(std::shared_ptr<PersistentStore> store, Queue queue)
    : store_(std::move(store)), queue_(queue) {}

ManagedObjectContext::~ManagedObjectContext() = default;

void ManagedObjectContext::perform(Work work) {
  post([self = shared_from_this(), work = std::move(work)] { runLogged(work); });
}

void ManagedObjectContext::performAndWait(const Work& work) {
  if (currentQueue == queue_) return work();
  // Shared: the one who waits may go on while the other is still about to leave it.
  auto done = std::make_shared<std::promise<void>>();
  post([&work, done] {
    std::exception_ptr failure;
    try {
      work();
    } catch (...) {
      failure = std::current_exception();
    }
    failure ? done->set_exception(std::move(failure)) : done->set_value();
  });
  if (queue_ != Queue::main) writer().hurry();
  done->get_future().get();
}

void ManagedObjectContext::post(Work work) {
  Work run = [queue = queue_, work = std::move(work)] {
    auto before = std::exchange(currentQueue, queue);
    work();
    currentQueue = before;
  };
  if (queue_ == Queue::main) {
    MainActor::post(std::move(run));
  } else {
    writer().post(std::move(run));
  }
}

ManagedObject* ManagedObjectContext::insertNewObject(std::string_view entityName,
                                                     std::optional<Predicate> isNewUnless) {
  const auto* entity = store_->model().entity(entityName);
  if (!entity) return nullptr;
  auto& object = registerObject(*entity, {entity->name, true, ++lastTemporaryKey_});
  noteChange(object);
  object.isInserted_ = true;
  object.isNewUnless_ = std::move(isNewUnless);
  return &object;
}

std::vector<ManagedObject*> ManagedObjectContext::execute(const FetchRequest& request) {
  auto isOfEntity = [&](auto* object) { return object->entity().name == request.entityName; };
  bool isMerged = std::ranges::any_of(changed_, isOfEntity);
  auto asked = request;
  // A changed object may take the place of any row, or leave its own.
  if (isMerged) asked.fetchLimit = 0;
  std::vector<ManagedObject*> objects;
  for (auto& [key, values] : store_->fetch(asked)) {
    objects.push_back(
        objectOf(*store_->model().entity(request.entityName), key, std::move(values)));
  }
  if (isMerged) mergeChanges(request, objects);
  return objects;
}

void ManagedObjectContext::mergeChanges(const FetchRequest& request,
                                        std::vector<ManagedObject*>& objects) const {
  std::erase_if(objects, [](auto* object) { return object->hasChanges(); });
  for (auto* object : changed_) {
    if (object->entity().name != request.entityName) continue;
    if (!request.predicate || request.predicate->evaluate(*object)) objects.push_back(object);
  }
  std::ranges::sort(objects, [&](auto* first, auto* second) {
    return isBefore(*first, *second, request.sortDescriptors);
  });
  if (request.fetchLimit > 0 && objects.size() > request.fetchLimit) {
    objects.resize(request.fetchLimit);
  }
}

void ManagedObjectContext::save() {
  if (changed_.empty()) return;
  std::vector<PersistentStore::Change> changes;
  for (const auto* object : changed_) {
    AttributeValues values;
    for (const auto& key : object->changedKeys_) values.emplace(key, object->valueForKey(key));
    changes.push_back(changeOf(*object, std::move(values)));
    const auto& unless = object->isNewUnless_;
    if (unless && unless->evaluate(*object)) changes.back().isNewUnless = unless;
  }
  auto saved = store_->save(changes);
  for (std::size_t i = 0; i < saved.size(); ++i) {
    didSave(*changed_[i], saved[i].key, saved[i].wasThere);
  }
  changed_.clear();
}

void ManagedObjectContext::didSave(ManagedObject& object, std::int64_t key, bool wasThere) {
  object.changedKeys_.clear();
  if (!std::exchange(object.isInserted_, false)) return;
  auto node = registered_.extract(object.id_);
  object.id_ = {object.entity().name, false, key};
  if (wasThere) {
    object.values_.clear();
    object.isFault_ = true;
  }
  auto& place = registered_[object.id_];
  if (place) replaced_.push_back(std::move(place));
  place = std::move(node.mapped());
}

std::vector<ManagedObject*> ManagedObjectContext::registeredObjects() const {
  std::vector<ManagedObject*> objects;
  objects.reserve(registered_.size());
  for (const auto& [id, object] : registered_) objects.push_back(object.get());
  return objects;
}

void ManagedObjectContext::refresh(ManagedObject& object) {
  if (object.isInserted_) return;
  std::erase(changed_, &object);
  object.changedKeys_.clear();
  object.values_.clear();
  object.isFault_ = true;
}

ManagedObject& ManagedObjectContext::registerObject(const EntityDescription& entity,
                                                    ManagedObjectID id) {
  auto object =
      entity.makeObject ? entity.makeObject(entity) : std::make_unique<ManagedObject>(entity);
  object->context_ = this;
  object->id_ = id;
  return *(registered_[std::move(id)] = std::move(object));
}

ManagedObject* ManagedObjectContext::objectOf(const EntityDescription& entity, std::int64_t key,
                                              AttributeValues values) {
  ManagedObjectID id{entity.name, false, key};
  auto found = registered_.find(id);
  auto& object = found == registered_.end() ? registerObject(entity, id) : *found->second;
  if (object.hasChanges()) return &object;
  object.values_ = std::move(values);
  object.isFault_ = false;
  return &object;
}

void ManagedObjectContext::noteChange(ManagedObject& object) { changed_.push_back(&object); }

AttributeValues ManagedObjectContext::storedValues(const ManagedObject& object) const {
  return store_->values(object.entity(), object.objectID().key);
}

}  // namespace quenwick::platform

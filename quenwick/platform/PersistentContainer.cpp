#include "quenwick/platform/PersistentContainer.h"

#include <exception>
#include <utility>

#include "quenwick/platform/PersistentStore.h"
#include "quenwick/platform/Writer.h"

namespace quenwick::platform {

using Queue = ManagedObjectContext::Queue;

PersistentContainer::PersistentContainer(std::string name, ManagedObjectModel model,
                                         const std::filesystem::path& directory)
    : name_(std::move(name)),
      store_(std::make_shared<PersistentStore>(directory / (name_ + ".sqlite"), std::move(model))),
      viewContext_(std::make_shared<ManagedObjectContext>(store_, Queue::main)) {}

void PersistentContainer::loadPersistentStores(
    std::function<void(const ErrorPointer& error)> completion) {
  writer().post([store = store_, completion = std::move(completion)] {
    ErrorPointer error;
    try {
      store->load();
    } catch (...) {
      error = errorFrom(std::current_exception());
    }
    completion(error);
  });
}

std::shared_ptr<ManagedObjectContext> PersistentContainer::newBackgroundContext() const {
  return std::make_shared<ManagedObjectContext>(store_, Queue::writer);
}

}  // namespace quenwick::platform

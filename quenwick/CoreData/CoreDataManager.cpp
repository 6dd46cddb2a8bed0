#include "quenwick/CoreData/CoreDataManager.h"

#include <utility>

#include "quenwick/CoreData/DeeplinkQWU.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/ManagedObjectModel.h"
#include "quenwick/platform/StandardStreams.h"
#include "quenwick/platform/Text.h"
#include "quenwick/resources/LibraryBundle.h"

namespace quenwick {
namespace {

constexpr auto kModelName = "QuenwickStorage";

/// One line, whatever the error's text holds.
void printLoadFailure(const platform::Error& error) {
  platform::printLine("Failed to load persistent store: " +
                      platform::escapedControls(error.localizedDescription()));
}

std::shared_ptr<platform::PersistentContainer> makeContainer(
    const platform::Bundle& bundle, const std::filesystem::path& directory) {
  const auto* resource = bundle.resource(kModelName, "momd");
  auto model = resource ? platform::ManagedObjectModel::read(*resource) : std::nullopt;
  if (!model) return nullptr;
  model->setClass<DeeplinkQWU>("DeeplinkQWU");
  auto container =
      std::make_shared<platform::PersistentContainer>(kModelName, *std::move(model), directory);
  container->loadPersistentStores([](const platform::ErrorPointer& error) {
    if (error) printLoadFailure(*error);
  });
  return container;
}

}  // namespace

CoreDataManager& CoreDataManager::shared() {
  platform::HeldLog held;
  static auto& instance = *new CoreDataManager(libraryBundle(), platform::storesDirectory());
  return instance;
}

CoreDataManager::CoreDataManager(const platform::Bundle& bundle,
                                 const std::filesystem::path& directory)
    : persistentContainer_(makeContainer(bundle, directory)) {}

std::shared_ptr<platform::ManagedObjectContext> CoreDataManager::mainContext() const {
  return persistentContainer_ ? persistentContainer_->viewContext() : nullptr;
}

std::shared_ptr<platform::ManagedObjectContext> CoreDataManager::backgroundContext() const {
  return persistentContainer_ ? persistentContainer_->newBackgroundContext() : nullptr;
}

}  // namespace quenwick

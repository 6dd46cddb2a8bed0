#pragma once

#include <filesystem>
#include <memory>

#include "quenwick/platform/Bundle.h"
#include "quenwick/platform/ManagedObjectContext.h"
#include "quenwick/platform/PersistentContainer.h"

namespace quenwick {

/// The link-user identifier store. May be used from any thread.
class CoreDataManager {
 public:
  /// The library's own store. Made, and its file opened, by the first call; never destroyed.
  static CoreDataManager& shared();

  /// A store in the directory, of the model in the bundle. A failure to load it is printed to
  /// standard output.
  CoreDataManager(const platform::Bundle& bundle, const std::filesystem::path& directory);

  /// Null where the bundle holds no readable model; so are the contexts then.
  const std::shared_ptr<platform::PersistentContainer>& persistentContainer() const {
    return persistentContainer_;
  }

  /// The container's view context, whose work runs on the main actor.
  std::shared_ptr<platform::ManagedObjectContext> mainContext() const;

  /// A new background context at each call.
  std::shared_ptr<platform::ManagedObjectContext> backgroundContext() const;

 private:
  const std::shared_ptr<platform::PersistentContainer> persistentContainer_;
};

}  // namespace quenwick

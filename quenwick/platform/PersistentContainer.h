#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/ManagedObjectContext.h"
#include "quenwick/platform/ManagedObjectModel.h"

namespace quenwick::platform {

/// An object store: a model, the file that holds its objects, and contexts to work on them. May
/// be used from any thread.
class PersistentContainer {
 public:
  /// The store lies in the directory, as the file "<name>.sqlite".
  PersistentContainer(std::string name, ManagedObjectModel model,
                      const std::filesystem::path& directory = storesDirectory());

  const std::string& name() const { return name_; }

  /// Has the file opened on the writer thread, before any work that is performed from now on, and
  /// `completion` called there: with the error, or with null. After an error the container may be
  /// used all the same; each use of its contexts tries again.
  void loadPersistentStores(std::function<void(const ErrorPointer& error)> completion);

  /// The context whose work runs on the main actor; always the same one.
  const std::shared_ptr<ManagedObjectContext>& viewContext() const { return viewContext_; }

  /// A new context whose work runs on the writer thread. It may outlive the container.
  std::shared_ptr<ManagedObjectContext> newBackgroundContext() const;

 private:
  const std::string name_;
  const std::shared_ptr<PersistentStore> store_;
  const std::shared_ptr<ManagedObjectContext> viewContext_;
};

}  // namespace quenwick::platform

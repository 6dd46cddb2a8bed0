#pragma once

#include <concepts>
#include <functional>
#include <string>
#include <vector>

#include "quenwick/CoreData/TypedFetchRequest.h"
#include "quenwick/logging/Logger.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/ManagedObjectContext.h"
#include "quenwick/platform/Predicate.h"

namespace quenwick {

/// A class of managed objects that names its entity and the order its objects usually come in.
template <class T>
concept ManagedObjectType = std::derived_from<T, platform::ManagedObject> && requires {
  { T::entityName } -> std::convertible_to<std::string>;
  { T::defaultSortDescriptors() } -> std::convertible_to<std::vector<platform::SortDescriptor>>;
};

// All of these are called on the context's queue; the objects belong to the context.

/// An object registered in the context that matches, or null. Nothing is fetched.
template <ManagedObjectType T>
T* materializedObject(const platform::ManagedObjectContext& context,
                      const platform::Predicate& predicate) {
  for (auto* registered : context.registeredObjects()) {
    if (registered->isFault()) continue;
    auto* object = dynamic_cast<T*>(registered);
    if (object && predicate.evaluate(*object)) return object;
  }
  return nullptr;
}

/// The objects of T's entity, as `configure` narrows and orders the request. Empty, with an error
/// line, where the fetch fails or an object is of another type.
template <ManagedObjectType T>
std::vector<T*> fetch(platform::ManagedObjectContext& context,
                      const std::function<void(TypedFetchRequest<T>&)>& configure = nullptr) {
  TypedFetchRequest<T> request(T::entityName);
  if (configure) configure(request);
  try {
    return request.execute(context);
  } catch (const platform::Error& error) {
    Logger::error(QWLogType::deeplink, "Fetched objects have wrong type");
    Logger::debug(QWLogType::deeplink, "Fetch failed: " + error.localizedDescription());
    return {};
  }
}

/// The registered object that matches, else the first one fetched, else null.
template <ManagedObjectType T>
T* findOrFetch(platform::ManagedObjectContext& context, const platform::Predicate& predicate) {
  if (auto* object = materializedObject<T>(context, predicate)) return object;
  auto objects = fetch<T>(context, [&](TypedFetchRequest<T>& request) {
    request.predicate = predicate;
    request.fetchLimit = 1;
  });
  return objects.empty() ? nullptr : objects.front();
}

/// The object that matches, else a new one with nothing set, which the caller fills and saves; of
/// several contexts or processes that do so at once, all save the same record. Null with an error
/// line where the new one is not a T.
template <ManagedObjectType T>
T* findOrCreate(platform::ManagedObjectContext& context, const platform::Predicate& predicate) {
  if (auto* object = findOrFetch<T>(context, predicate)) return object;
  auto* object = dynamic_cast<T*>(context.insertNewObject(T::entityName, predicate));
  if (!object) Logger::error(QWLogType::deeplink, "Wrong Object Type");
  return object;
}

}  // namespace quenwick

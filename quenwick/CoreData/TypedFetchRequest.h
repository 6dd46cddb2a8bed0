#pragma once

#include <string>
#include <utility>
#include <vector>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/FetchRequest.h"
#include "quenwick/platform/ManagedObjectContext.h"

namespace quenwick {

/// A fetch request for objects of type T.
template <class T>
struct TypedFetchRequest : platform::FetchRequest {
  explicit TypedFetchRequest(std::string entity) : platform::FetchRequest{std::move(entity)} {}

  /// The objects asked for, which belong to the context. Throws `platform::Error` where the fetch
  /// fails or an object is of another type.
  std::vector<T*> execute(platform::ManagedObjectContext& context) const {
    std::vector<T*> objects;
    for (auto* fetched : context.execute(*this)) {
      auto* object = dynamic_cast<T*>(fetched);
      if (!object) throw platform::OtherError("an object of " + entityName + " has another type");
      objects.push_back(object);
    }
    return objects;
  }
};

}  // namespace quenwick

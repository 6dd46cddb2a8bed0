#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/FetchRequest.h"
#include "quenwick/platform/ManagedObjectModel.h"

namespace quenwick::platform {

class SQLiteDatabase;

/// Domain of the object store's own errors, and its codes.
inline constexpr std::string_view kObjectStoreErrorDomain = "com.quenwick.sdk.objectStore";

namespace ObjectStoreErrorCode {
inline constexpr int cannotLoad = 1;
inline constexpr int invalidRequest = 2;
inline constexpr int missingValue = 3;
}  // namespace ObjectStoreErrorCode

/// The file in which the objects of a container's contexts are kept. Several processes may share
/// it. It is opened by its first use; a damaged one is set aside and a new one begun. From any
/// thread, one operation at a time: each holds a lock during its I/O. All throw `Error`.
class PersistentStore {
 public:
  PersistentStore(std::filesystem::path file, ManagedObjectModel model);
  ~PersistentStore();
  PersistentStore(const PersistentStore&) = delete;
  PersistentStore& operator=(const PersistentStore&) = delete;

  const ManagedObjectModel& model() const { return model_; }

  /// Opens the file, and brings it up to the model.
  void load();

  struct Row {
    std::int64_t key = 0;
    AttributeValues values;
  };
  std::vector<Row> fetch(const FetchRequest& request);

  /// The values of one row; all unset where it is gone.
  AttributeValues values(const EntityDescription& entity, std::int64_t key);

  struct Change {
    const EntityDescription& entity;
    /// None for a new row.
    std::optional<std::int64_t> key;
    AttributeValues values;
    /// A row that matches by then, another process's for one, is changed in place of a new one.
    std::optional<Predicate> isNewUnless = std::nullopt;
  };
  struct Saved {
    std::int64_t key = 0;
    /// The change was meant to be a new row, and is none.
    bool wasThere = false;
  };
  /// Writes all of the changes or, where it throws, none of them. Their rows, in their order.
  std::vector<Saved> save(const std::vector<Change>& changes);

 private:
  template <class Use>
  auto withDatabase(Use use);
  SQLiteDatabase& open();

  const std::filesystem::path file_;
  const ManagedObjectModel model_;
  std::mutex mutex_;
  std::unique_ptr<SQLiteDatabase> database_;
};

}  // namespace quenwick::platform

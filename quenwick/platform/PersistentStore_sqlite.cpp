#include <algorithm>
#include <utility>

#include "quenwick/platform/ObjectStoreStatements_sqlite.h"
#include "quenwick/platform/PersistentStore.h"
#include "quenwick/platform/SQLiteDatabase.h"

namespace quenwick::platform {
namespace {

std::vector<SQLiteDatabase::Row> run(SQLiteDatabase& database, const SQLiteStatement& statement) {
  return database.run(statement.text, statement.values);
}

/// Makes what the file lacks: it may be new, or of an earlier model.
void bringUp(SQLiteDatabase& database, const EntityDescription& entity) {
  database.run(createTable(entity));
  if (database.run(tableKey(entity)).empty()) {
    throw SQLiteError::damaged("the table of " + entity.name + " is not as it was made");
  }
  auto present = database.run(tableColumns(entity));
  for (const auto& attribute : entity.attributes) {
    if (std::ranges::find(present, SQLiteDatabase::Row{attribute.name}) == present.end()) {
      database.run(addColumn(entity, attribute));
    }
    if (attribute.isIndexed) database.run(createIndex(entity, attribute));
  }
}

void prepare(SQLiteDatabase& database, const ManagedObjectModel& model) {
  database.check();
  SQLiteTransaction transaction(database);
  for (const auto& entity : model.entities()) bringUp(database, entity);
  transaction.commit();
}

const EntityDescription& require(const ManagedObjectModel& model, const std::string& entityName) {
  if (const auto* entity = model.entity(entityName)) return *entity;
  throw PlatformError(std::string(kObjectStoreErrorDomain), ObjectStoreErrorCode::invalidRequest,
                      "the model has no entity " + entityName);
}

/// The first row that matches the change's condition.
std::optional<std::int64_t> rowInPlace(SQLiteDatabase& database,
                                       const PersistentStore::Change& change) {
  if (change.key || !change.isNewUnless) return std::nullopt;
  auto found = run(database, selectRows(change.entity, {.entityName = change.entity.name,
                                                        .predicate = change.isNewUnless,
                                                        .fetchLimit = 1}));
  const auto* key = found.empty() ? nullptr : std::get_if<std::int64_t>(&found[0].front());
  return key ? std::optional(*key) : std::nullopt;
}

PersistentStore::Saved save(SQLiteDatabase& database, const PersistentStore::Change& change) {
  auto inPlace = rowInPlace(database, change);
  auto key = change.key ? change.key : inPlace;
  if (!key) {
    run(database, insertRow(change.entity, change.values));
    return {database.lastInsertedRow()};
  }
  if (!change.values.empty()) run(database, updateRow(change.entity, *key, change.values));
  return {*key, inPlace.has_value()};
}

}  // namespace

PersistentStore::PersistentStore(std::filesystem::path file, ManagedObjectModel model)
    : file_(std::move(file)), model_(std::move(model)) {}

PersistentStore::~PersistentStore() = default;

template <class Use>
auto PersistentStore::withDatabase(Use use) {
  std::lock_guard lock(mutex_);
  if (database_ && database_->isReplaced()) database_.reset();
  try {
    return use(open());
  } catch (const SQLiteError& error) {
    if (!error.isDamaged()) throw;
    // Damaged while in use. Not set aside at once: another process may have begun anew already.
    database_.reset();
  }
  return use(open());
}

void PersistentStore::load() {
  std::lock_guard lock(mutex_);
  open();
}

std::vector<PersistentStore::Row> PersistentStore::fetch(const FetchRequest& request) {
  const auto& entity = require(model_, request.entityName);
  auto statement = selectRows(entity, request);
  auto found = withDatabase([&](SQLiteDatabase& database) { return run(database, statement); });
  std::vector<Row> rows;
  for (const auto& row : found) {
    const auto* key = std::get_if<std::int64_t>(&row.front());
    if (key) rows.push_back({*key, attributeValues(entity, row)});
  }
  return rows;
}

AttributeValues PersistentStore::values(const EntityDescription& entity, std::int64_t key) {
  auto found =
      withDatabase([&](SQLiteDatabase& database) { return run(database, selectRow(entity, key)); });
  return found.empty() ? AttributeValues() : attributeValues(entity, found.front());
}

std::vector<PersistentStore::Saved> PersistentStore::save(const std::vector<Change>& changes) {
  return withDatabase([&](SQLiteDatabase& database) {
    std::vector<Saved> saved;
    saved.reserve(changes.size());
    SQLiteTransaction transaction(database);
    for (const auto& change : changes) saved.push_back(platform::save(database, change));
    transaction.commit();
    return saved;
  });
}

SQLiteDatabase& PersistentStore::open() {
  if (database_) return *database_;
  try {
    database_ = openOrBeginAnew(file_, NewFile::quick,
                                [this](SQLiteDatabase& database) { prepare(database, model_); });
  } catch (const SQLiteError& error) {
    throw PlatformError(std::string(kObjectStoreErrorDomain), ObjectStoreErrorCode::cannotLoad,
                        file_.string() + ": " + error.localizedDescription());
  }
  return *database_;
}

}  // namespace quenwick::platform

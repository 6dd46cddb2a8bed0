#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "quenwick/platform/FetchRequest.h"
#include "quenwick/platform/ManagedObjectModel.h"
#include "quenwick/platform/SQLiteDatabase.h"

namespace quenwick::platform {

/// A statement and the values bound to it. Its text holds names of the model alone, quoted.
struct SQLiteStatement {
  std::string text;
  std::vector<SQLiteValue> values = {};
};

/// An entity is a table: "id", then a column for each attribute.
std::string createTable(const EntityDescription& entity);
/// One row where the table's key is what rows are found by.
std::string tableKey(const EntityDescription& entity);
std::string tableColumns(const EntityDescription& entity);
std::string addColumn(const EntityDescription& entity, const AttributeDescription& attribute);
std::string createIndex(const EntityDescription& entity, const AttributeDescription& attribute);

/// The rows asked for, each "id" and the attributes in the entity's order. Throws `PlatformError`
/// where the request names an attribute that the entity has not, or a value of another type.
SQLiteStatement selectRows(const EntityDescription& entity, const FetchRequest& request);
SQLiteStatement selectRow(const EntityDescription& entity, std::int64_t key);

SQLiteStatement insertRow(const EntityDescription& entity, const AttributeValues& values);
SQLiteStatement updateRow(const EntityDescription& entity, std::int64_t key,
                          const AttributeValues& values);

/// The values of a row's columns behind "id". One that is not of its attribute's type is unset.
AttributeValues attributeValues(const EntityDescription& entity, const SQLiteDatabase::Row& row);

}  // namespace quenwick::platform

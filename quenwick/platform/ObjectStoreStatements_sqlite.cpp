#include "quenwick/platform/ObjectStoreStatements_sqlite.h"

#include <cmath>

#include "quenwick/platform/PersistentStore.h"

namespace quenwick::platform {
namespace {

/// Beyond this many seconds from 1970 a number is no date.
constexpr double kLargestDate = 9e12;

/// Names are identifiers: none holds a quote.
std::string quotedName(std::string_view name) { return '"' + std::string(name) + '"'; }

std::string column(const AttributeDescription& attribute) {
  return quotedName(attribute.name) + (attribute.type == AttributeType::text ? " TEXT" : " REAL");
}

SQLiteValue content(const AttributeValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  if (const auto* date = std::get_if<Date>(&value)) return secondsSince1970(*date);
  return nullptr;
}

AttributeValue valueFrom(AttributeType type, const SQLiteValue& content) {
  if (const auto* text = std::get_if<std::string>(&content); text && type == AttributeType::text) {
    return *text;
  }
  const auto* seconds = std::get_if<double>(&content);
  if (seconds && type == AttributeType::date && std::abs(*seconds) < kLargestDate) {
    return dateFrom(*seconds);
  }
  return {};
}

const AttributeDescription& require(const EntityDescription& entity, const std::string& key) {
  if (const auto* attribute = entity.attribute(key)) return *attribute;
  throw PlatformError(std::string(kObjectStoreErrorDomain), ObjectStoreErrorCode::invalidRequest,
                      entity.name + " has no attribute " + key);
}

std::string columns(const EntityDescription& entity) {
  std::string out = "id";
  for (const auto& attribute : entity.attributes) out += ", " + quotedName(attribute.name);
  return out;
}

std::string order(const EntityDescription& entity, const std::vector<SortDescriptor>& descriptors) {
  std::string out = " ORDER BY ";
  const char* direction = "";
  for (const auto& descriptor : descriptors) {
    direction = descriptor.ascending ? "" : " DESC";
    out += quotedName(require(entity, descriptor.key).name) + direction + ", ";
  }
  return out + "id" + direction;
}

}  // namespace

std::string createTable(const EntityDescription& entity) {
  std::string out =
      "CREATE TABLE IF NOT EXISTS " + quotedName(entity.name) + " (id INTEGER PRIMARY KEY";
  for (const auto& attribute : entity.attributes) out += ", " + column(attribute);
  return out + ")";
}

std::string tableKey(const EntityDescription& entity) {
  return "SELECT 1 FROM pragma_table_info('" + entity.name +
         "') WHERE name = 'id' AND pk = 1 AND upper(type) = 'INTEGER'";
}

std::string tableColumns(const EntityDescription& entity) {
  return "SELECT name FROM pragma_table_info('" + entity.name + "')";
}

std::string addColumn(const EntityDescription& entity, const AttributeDescription& attribute) {
  return "ALTER TABLE " + quotedName(entity.name) + " ADD COLUMN " + column(attribute);
}

std::string createIndex(const EntityDescription& entity, const AttributeDescription& attribute) {
  // The point keeps an index's name apart from every table's.
  return "CREATE INDEX IF NOT EXISTS " + quotedName(entity.name + "." + attribute.name) + " ON " +
         quotedName(entity.name) + " (" + quotedName(attribute.name) + ")";
}

SQLiteStatement selectRows(const EntityDescription& entity, const FetchRequest& request) {
  SQLiteStatement out{"SELECT " + columns(entity) + " FROM " + quotedName(entity.name)};
  if (request.predicate) {
    const auto& attribute = require(entity, request.predicate->key());
    if (!attribute.accepts(request.predicate->argument())) {
      throw PlatformError(std::string(kObjectStoreErrorDomain),
                          ObjectStoreErrorCode::invalidRequest,
                          "the predicate's value is not of the type of " + attribute.name);
    }
    // IS, as = is never true of an unset value.
    out.text += " WHERE " + quotedName(attribute.name) + " IS ?";
    out.values.push_back(content(request.predicate->argument()));
  }
  out.text += order(entity, request.sortDescriptors);
  if (request.fetchLimit > 0) {
    out.text += " LIMIT ?";
    out.values.push_back(static_cast<std::int64_t>(request.fetchLimit));
  }
  return out;
}

SQLiteStatement selectRow(const EntityDescription& entity, std::int64_t key) {
  return {"SELECT " + columns(entity) + " FROM " + quotedName(entity.name) + " WHERE id = ?",
          {key}};
}

SQLiteStatement insertRow(const EntityDescription& entity, const AttributeValues& values) {
  SQLiteStatement out{"INSERT INTO " + quotedName(entity.name) + " (" + columns(entity) +
                      ") VALUES (NULL"};
  for (const auto& attribute : entity.attributes) {
    auto found = values.find(attribute.name);
    out.text += ", ?";
    out.values.push_back(found == values.end() ? SQLiteValue() : content(found->second));
  }
  out.text += ")";
  return out;
}

SQLiteStatement updateRow(const EntityDescription& entity, std::int64_t key,
                          const AttributeValues& values) {
  SQLiteStatement out{"UPDATE " + quotedName(entity.name) + " SET "};
  for (const char* separator = ""; const auto& [name, value] : values) {
    out.text += separator + quotedName(name) + " = ?";
    out.values.push_back(content(value));
    separator = ", ";
  }
  out.text += " WHERE id = ?";
  out.values.emplace_back(key);
  return out;
}

AttributeValues attributeValues(const EntityDescription& entity, const SQLiteDatabase::Row& row) {
  AttributeValues values;
  for (std::size_t i = 0; i < entity.attributes.size() && i + 1 < row.size(); ++i) {
    const auto& attribute = entity.attributes[i];
    values.insert_or_assign(attribute.name, valueFrom(attribute.type, row[i + 1]));
  }
  return values;
}

}  // namespace quenwick::platform

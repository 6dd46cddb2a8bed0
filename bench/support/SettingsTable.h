#pragma once

#include <filesystem>
#include <string>

struct sqlite3;
struct sqlite3_stmt;

namespace quenwick::bench {

/// SQLite alone, keeping texts by key in a file: with a write-ahead log and statements that are
/// prepared once, the fastest way that it has.
class SettingsTable {
 public:
  explicit SettingsTable(const std::filesystem::path& file);
  ~SettingsTable();
  SettingsTable(const SettingsTable&) = delete;
  SettingsTable& operator=(const SettingsTable&) = delete;

  void set(const std::string& key, const std::string& value);
  /// Empty where the key has none.
  std::string value(const std::string& key);

 private:
  sqlite3* database_ = nullptr;
  sqlite3_stmt* insert_ = nullptr;
  sqlite3_stmt* select_ = nullptr;
};

}  // namespace quenwick::bench

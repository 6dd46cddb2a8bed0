#include "bench/support/SettingsTable.h"

#include <sqlite3.h>

#include <stdexcept>

namespace quenwick::bench {
namespace {

void require(int code, int expected = SQLITE_OK) {
  if (code != expected) throw std::runtime_error(sqlite3_errstr(code));
}

void bind(sqlite3_stmt* statement, int place, const std::string& text) {
  require(sqlite3_bind_text(statement, place, text.data(), static_cast<int>(text.size()),
                            SQLITE_TRANSIENT));
}

}  // namespace

SettingsTable::SettingsTable(const std::filesystem::path& file) {
  require(sqlite3_open(file.c_str(), &database_));
  require(sqlite3_exec(database_,
                       "PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL;"
                       "CREATE TABLE settings (key TEXT PRIMARY KEY, value TEXT) WITHOUT ROWID",
                       nullptr, nullptr, nullptr));
  require(sqlite3_prepare_v2(database_, "INSERT OR REPLACE INTO settings VALUES (?, ?)", -1,
                             &insert_, nullptr));
  require(sqlite3_prepare_v2(database_, "SELECT value FROM settings WHERE key = ?", -1, &select_,
                             nullptr));
}

SettingsTable::~SettingsTable() {
  sqlite3_finalize(insert_);
  sqlite3_finalize(select_);
  sqlite3_close(database_);
}

void SettingsTable::set(const std::string& key, const std::string& value) {
  bind(insert_, 1, key);
  bind(insert_, 2, value);
  require(sqlite3_step(insert_), SQLITE_DONE);
  sqlite3_reset(insert_);
}

std::string SettingsTable::value(const std::string& key) {
  bind(select_, 1, key);
  std::string value;
  if (sqlite3_step(select_) == SQLITE_ROW) {
    value = reinterpret_cast<const char*>(sqlite3_column_text(select_, 0));
  }
  sqlite3_reset(select_);
  return value;
}

}  // namespace quenwick::bench

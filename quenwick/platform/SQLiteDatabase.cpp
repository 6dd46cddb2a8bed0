#include "quenwick/platform/SQLiteDatabase.h"

#include <sqlite3.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>
#include <utility>

#include "quenwick/platform/LogSink.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::milliseconds kPatience(5000);
constexpr std::chrono::milliseconds kPause(1);

SQLiteValue column(sqlite3_stmt* statement, int index) {
  switch (sqlite3_column_type(statement, index)) {
    case SQLITE_INTEGER:
      return sqlite3_column_int64(statement, index);
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement, index);
    case SQLITE_NULL:
      return nullptr;
    default: {
      const auto* bytes = static_cast<const char*>(sqlite3_column_blob(statement, index));
      auto size = static_cast<std::size_t>(sqlite3_column_bytes(statement, index));
      return bytes ? std::string(bytes, size) : std::string();
    }
  }
}

struct Bind {
  sqlite3_stmt* statement;
  int index;

  int operator()(std::nullptr_t) const { return sqlite3_bind_null(statement, index); }
  int operator()(std::int64_t number) const { return sqlite3_bind_int64(statement, index, number); }
  int operator()(double number) const { return sqlite3_bind_double(statement, index, number); }
  int operator()(const std::string& text) const {
    return sqlite3_bind_text64(statement, index, text.data(), text.size(), SQLITE_STATIC,
                               SQLITE_UTF8);
  }
};

}  // namespace

bool SQLiteError::isDamaged() const {
  // The statements are fixed and sound: one that the file does not understand meets other tables.
  constexpr std::array kCodes = {SQLITE_CORRUPT, SQLITE_NOTADB, SQLITE_ERROR, SQLITE_MISMATCH};
  return std::ranges::find(kCodes, code_ & 0xff) != kCodes.end();
}

bool SQLiteError::isBusy() const { return (code_ & 0xff) == SQLITE_BUSY; }

SQLiteError SQLiteError::busy(std::string description) {
  return SQLiteError(SQLITE_BUSY, std::move(description));
}

SQLiteError SQLiteError::damaged(std::string description) {
  return SQLiteError(SQLITE_CORRUPT, std::move(description));
}

void SQLiteDatabase::Close::operator()(sqlite3* database) const { sqlite3_close_v2(database); }
void SQLiteDatabase::Close::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

SQLiteDatabase::SQLiteDatabase(const std::filesystem::path& file, NewFile newFile) : file_(file) {
  if (!makePrivateFile(file)) throw SQLiteError(SQLITE_CANTOPEN, "the file cannot be opened");
  sqlite3* database = nullptr;
  int code =
      sqlite3_open_v2(file.c_str(), &database,
                      SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE, nullptr);
  database_.reset(database);
  if (code != SQLITE_OK) throw SQLiteError(code, sqlite3_errstr(code));
  identity_ = fileIdentity(file);
  sqlite3_busy_timeout(database, static_cast<int>(kPatience.count()));
  std::error_code error;
  bool isBegun = std::filesystem::file_size(file, error) > 0;
  bool isUnwaited = !isBegun && newFile == NewFile::quick;
  run(isUnwaited ? "PRAGMA synchronous = OFF" : "PRAGMA synchronous = NORMAL");
  keepLog();
}

/// Of several that begin a file at once the engine refuses all but one, without any patience.
void SQLiteDatabase::keepLog() {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  for (;;) {
    try {
      run("PRAGMA journal_mode = WAL");
      return;
    } catch (const SQLiteError& error) {
      if (!error.isBusy() || std::chrono::steady_clock::now() >= end) throw;
    }
    std::this_thread::sleep_for(kPause);
  }
}

std::vector<SQLiteDatabase::Row> SQLiteDatabase::run(std::string_view statement,
                                                     const std::vector<SQLiteValue>& values) {
  auto* ready = prepared(statement);
  bind(ready, values);
  struct Reset {
    sqlite3_stmt* statement;
    ~Reset() {
      sqlite3_reset(statement);
      sqlite3_clear_bindings(statement);
    }
  } reset{ready};
  std::vector<Row> rows;
  for (;;) {
    int code = sqlite3_step(ready);
    if (code == SQLITE_DONE) return rows;
    if (code != SQLITE_ROW) fail(code);
    Row row;
    for (int i = 0; i < sqlite3_column_count(ready); ++i) row.push_back(column(ready, i));
    rows.push_back(std::move(row));
  }
}

void SQLiteDatabase::check() {
  // Of the file alone: without a name the engine makes a temporary database too, to check that.
  auto rows = run("PRAGMA main.quick_check(1)");
  const auto* verdict = rows.empty() ? nullptr : std::get_if<std::string>(&rows.front().front());
  if (!verdict || *verdict != "ok") {
    throw SQLiteError(SQLITE_CORRUPT, verdict ? *verdict : "the file cannot be checked");
  }
}

std::int64_t SQLiteDatabase::lastInsertedRow() const {
  return sqlite3_last_insert_rowid(database_.get());
}

void SQLiteDatabase::fail(int code) const {
  throw SQLiteError(code, sqlite3_errmsg(database_.get()));
}

sqlite3_stmt* SQLiteDatabase::prepared(std::string_view statement) {
  auto known = std::ranges::find(statements_, statement, &decltype(statements_)::value_type::first);
  if (known != statements_.end()) return known->second.get();
  sqlite3_stmt* made = nullptr;
  int code =
      sqlite3_prepare_v3(database_.get(), statement.data(), static_cast<int>(statement.size()),
                         SQLITE_PREPARE_PERSISTENT, &made, nullptr);
  if (code != SQLITE_OK) fail(code);
  return statements_.emplace_back(std::string(statement), Statement(made)).second.get();
}

void SQLiteDatabase::bind(sqlite3_stmt* statement, const std::vector<SQLiteValue>& values) {
  for (int index = 1; const auto& value : values) {
    int code = std::visit(Bind{statement, index++}, value);
    if (code != SQLITE_OK) fail(code);
  }
}

bool SQLiteDatabase::isInTransaction() const {
  return sqlite3_get_autocommit(database_.get()) == 0;
}

SQLiteTransaction::SQLiteTransaction(SQLiteDatabase& database) : database_(database) {
  database_.run("BEGIN IMMEDIATE");
}

SQLiteTransaction::~SQLiteTransaction() {
  // Some failures have the engine take everything back by itself.
  if (!isOpen_ || !database_.isInTransaction()) return;
  try {
    database_.run("ROLLBACK");
  } catch (const SQLiteError& error) {
    logPlatformError("A transaction cannot be taken back: " + error.localizedDescription());
  }
}

void SQLiteTransaction::commit() {
  database_.run("COMMIT");
  isOpen_ = false;
}

}  // namespace quenwick::platform

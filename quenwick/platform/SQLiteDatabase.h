#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/PrivateFile.h"

struct sqlite3;
struct sqlite3_stmt;

namespace quenwick::platform {

/// A failure of the database. `isDamaged` tells a file that is no sound database, or not the
/// library's, from a passing trouble such as a full disk.
class SQLiteError : public Error {
 public:
  SQLiteError(int code, std::string description) : Error(std::move(description)), code_(code) {}
  bool isDamaged() const;
  /// Another connection has the file.
  bool isBusy() const;

  /// For what the engine itself takes for sound.
  static SQLiteError damaged(std::string description);
  /// For what is not the engine's to wait for.
  static SQLiteError busy(std::string description);

 private:
  int code_;
};

/// A value of a column.
using SQLiteValue = std::variant<std::nullptr_t, std::int64_t, double, std::string>;

/// How a file that is missing is begun. `lasting`: on the disk before anything is kept in it.
/// `quick`: without waiting for the disk; a power cut in its first moments may leave a damaged one.
enum class NewFile { lasting, quick };

/// One connection to one SQLite file, with its write-ahead log. Used by one thread at a time.
/// All operations throw `SQLiteError`.
class SQLiteDatabase {
 public:
  /// Opens the file, which is made (mode 0600) where it is missing. A new one that is begun quickly
  /// waits for no disk until it is told to.
  explicit SQLiteDatabase(const std::filesystem::path& file, NewFile newFile = NewFile::lasting);

  using Row = std::vector<SQLiteValue>;

  /// Runs one statement with the values bound in their order; its rows are returned whole.
  std::vector<Row> run(std::string_view statement, const std::vector<SQLiteValue>& values = {});

  /// Checks the file's structure; throws where it is damaged.
  void check();

  std::int64_t lastInsertedRow() const;

  /// Whether a transaction is open.
  bool isInTransaction() const;

  /// Whether the file is no longer at its place, or another one is: what is written here is lost.
  bool isReplaced() const { return identity_ && !isAtItsPlace(file_, *identity_); }

 private:
  struct Close {
    void operator()(sqlite3* database) const;
    void operator()(sqlite3_stmt* statement) const;
  };
  using Statement = std::unique_ptr<sqlite3_stmt, Close>;

  void keepLog();
  [[noreturn]] void fail(int code) const;
  sqlite3_stmt* prepared(std::string_view statement);
  void bind(sqlite3_stmt* statement, const std::vector<SQLiteValue>& values);

  const std::filesystem::path file_;
  std::unique_ptr<sqlite3, Close> database_;
  std::optional<FileIdentity> identity_;
  std::vector<std::pair<std::string, Statement>> statements_;
};

/// Commits on success; takes everything back when destroyed before `commit`.
class SQLiteTransaction {
 public:
  explicit SQLiteTransaction(SQLiteDatabase& database);
  ~SQLiteTransaction();
  SQLiteTransaction(const SQLiteTransaction&) = delete;
  SQLiteTransaction& operator=(const SQLiteTransaction&) = delete;
  void commit();

 private:
  SQLiteDatabase& database_;
  bool isOpen_ = true;
};

/// Opens the file; a damaged one is set aside, with an error line, and a new one begun. `prepare`
/// makes the tables and reads what must be readable. Of several processes that find the same
/// damage one sets the file aside.
template <class Prepare>
std::unique_ptr<SQLiteDatabase> openOrBeginAnew(const std::filesystem::path& file, NewFile newFile,
                                                Prepare prepare) {
  auto open = [&] {
    auto database = std::make_unique<SQLiteDatabase>(file, newFile);
    prepare(*database);
    if (newFile == NewFile::quick) database->run("PRAGMA synchronous = NORMAL");
    return database;
  };
  try {
    // Not while another one sets the file aside, piece by piece.
    DirectoryLock lock(file.parent_path(), FileLockKind::shared);
    return open();
  } catch (const SQLiteError& error) {
    if (!error.isDamaged()) throw;
  }
  DirectoryLock lock(file.parent_path());
  try {
    return open();
  } catch (const SQLiteError& error) {
    if (!error.isDamaged()) throw;
    setAside(file, error.localizedDescription());
    return open();
  }
}

}  // namespace quenwick::platform

#include <atomic>
#include <utility>

#include "quenwick/platform/GenerationCounter.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/PrivateFile.h"
#include "quenwick/platform/SQLiteDatabase.h"
#include "quenwick/platform/Seal_openssl.h"
#include "quenwick/platform/SecItemBackend.h"
#include "quenwick/platform/UUID.h"

namespace quenwick::platform {
namespace {

constexpr std::string_view kBoundToFile = "com.quenwick.sdk.keychain 1";

/// What an item's secret is bound to, each part behind its length.
std::string boundTo(const SecItemKey& key, const SecItem& item) {
  std::string text(kBoundToFile);
  for (const auto& part :
       {key.service, key.account, item.generic, item.accessible, item.reference}) {
    text += std::to_string(part.size()) + ":" + part;
  }
  return text;
}

/// The key beside the database; made where there is none yet.
SealingKey keyFrom(const std::filesystem::path& file) {
  auto bytes = privateFileContents(file);
  if (!bytes) {
    makePrivateFileOnce(file, randomBytes(SealingKey::kSize));
    bytes = privateFileContents(file);
  }
  if (!bytes || bytes->size() != SealingKey::kSize) {
    throw SQLiteError::damaged("its key is damaged");
  }
  return SealingKey(*bytes);
}

void makeTables(SQLiteDatabase& database) {
  database.run("PRAGMA synchronous = FULL");  // a secret reported stored survives a power cut too
  database.run(
      "CREATE TABLE IF NOT EXISTS items"
      " (service TEXT, account TEXT, generic TEXT NOT NULL, accessible TEXT NOT NULL,"
      " reference TEXT NOT NULL, sealed BLOB NOT NULL, PRIMARY KEY (service, account))"
      " WITHOUT ROWID");
  database.run("CREATE TABLE IF NOT EXISTS seal (id INTEGER PRIMARY KEY, sealed BLOB NOT NULL)");
  database.check();
  database.run(
      "SELECT service, account, generic, accessible, reference, sealed FROM items LIMIT 1");
}

/// Whether the key is the one that the database was begun with.
void checkKey(SQLiteDatabase& database, const SealingKey& key) {
  auto rows = database.run("SELECT sealed FROM seal WHERE id = 1");
  if (rows.empty()) {
    database.run("INSERT OR IGNORE INTO seal VALUES (1, CAST(? AS BLOB))",
                 {key.seal(kBoundToFile, kBoundToFile)});
    rows = database.run("SELECT sealed FROM seal WHERE id = 1");
  }
  const auto* sealed = rows.empty() ? nullptr : std::get_if<std::string>(&rows.front().front());
  if (!sealed || key.open(*sealed, kBoundToFile) != kBoundToFile) {
    throw SQLiteError::damaged("its key is not the one it was sealed with");
  }
}

/// One SQLite file of sealed items, its key beside it. Several processes may use it.
class SealedBackend : public SecItemBackend {
 public:
  explicit SealedBackend(const std::filesystem::path& folder)
      : file_(folder / "keychain.sqlite"), generation_(file_.string() + ".generation") {}

  SecItems load() override {
    return withDatabase([this](SQLiteDatabase& database) {
      seenGeneration_ = generation_.value();
      items_ = stored(database);
      return items_;
    });
  }

  std::optional<SecItem> add(const SecItemKey& key, SecItem item) override {
    item.reference = UUID::random().uuidString();
    bool isAdded = write([&](SQLiteDatabase& database) { return insert(database, key, item); });
    if (!isAdded) return std::nullopt;
    items_.insert_or_assign(key, item);
    return item;
  }

  bool update(const SecItemKey& key, const Bytes& data) override {
    SecItem item;
    bool isUpdated = write([&](SQLiteDatabase& database) {
      auto rows = database.run(
          "SELECT generic, accessible, reference FROM items WHERE service = ? AND account = ?",
          {key.service, key.account});
      if (rows.empty()) return false;
      item = {text(rows[0][0]), text(rows[0][1]), data, text(rows[0][2])};
      database.run("UPDATE items SET sealed = CAST(? AS BLOB) WHERE service = ? AND account = ?",
                   {key_->seal(data, boundTo(key, item)), key.service, key.account});
      return true;
    });
    if (isUpdated) items_.insert_or_assign(key, std::move(item));
    return isUpdated;
  }

  bool remove(const SecItemKey& key) override {
    bool isRemoved = write([&](SQLiteDatabase& database) {
      return !database
                  .run("DELETE FROM items WHERE service = ? AND account = ? RETURNING service",
                       {key.service, key.account})
                  .empty();
    });
    items_.erase(key);
    return isRemoved;
  }

  bool mayHaveChanged() const override { return generation_.value() != seenGeneration_; }

 private:
  static std::string text(const SQLiteValue& value) {
    const auto* found = std::get_if<std::string>(&value);
    return found ? *found : std::string();
  }

  bool insert(SQLiteDatabase& database, const SecItemKey& key, const SecItem& item) const {
    return !database
                .run(
                    "INSERT OR IGNORE INTO items VALUES (?, ?, ?, ?, ?, CAST(? AS BLOB))"
                    " RETURNING service",
                    {key.service, key.account, item.generic, item.accessible, item.reference,
                     key_->seal(item.data, boundTo(key, item))})
                .empty();
  }

  /// The items that open; of those that do not, one line tells.
  SecItems stored(SQLiteDatabase& database) {
    SecItems items;
    int closed = 0;
    for (const auto& row : database.run(
             "SELECT service, account, generic, accessible, reference, sealed FROM items")) {
      SecItemKey key{text(row[0]), text(row[1])};
      SecItem item{text(row[2]), text(row[3]), {}, text(row[4])};
      auto data = key_->open(text(row[5]), boundTo(key, item));
      if (data) {
        item.data = std::move(*data);
        items.emplace(std::move(key), std::move(item));
      } else {
        ++closed;
      }
    }
    if (closed > 0 && !std::exchange(hasReportedClosed_, true)) {
      logPlatformError("Items of the keychain were changed from outside and are left out: " +
                       std::to_string(closed));
    }
    return items;
  }

  /// Runs the change in one transaction, and lets other processes know.
  template <class Change>
  bool write(Change change) {
    return withDatabase([&](SQLiteDatabase& database) {
      GenerationCounter::Raise raise(generation_);
      SQLiteTransaction transaction(database);
      bool isChanged = change(database);
      transaction.commit();
      if (!isChanged) return false;
      auto before = raise.commit();
      // Where others have raised it too, the difference stays and has their writes noticed.
      seenGeneration_.compare_exchange_strong(before, before + 1);
      return true;
    });
  }

  /// Runs the work on the opened file; once more where the file proves damaged or replaced.
  template <class Work>
  auto withDatabase(Work work) -> decltype(work(std::declval<SQLiteDatabase&>())) {
    try {
      if (database_ && database_->isReplaced()) database_.reset();
      try {
        return work(open());
      } catch (const SQLiteError& error) {
        if (!error.isDamaged() || !database_) throw;
        database_.reset();
        return work(open());
      }
    } catch (const SecItemError&) {
      throw;
    } catch (const Error& error) {
      throw SecItemError(errSecNotAvailable, error.localizedDescription());
    }
  }

  /// Opens the file. One that took the place of another is given what this process knows.
  SQLiteDatabase& open() {
    if (database_) return *database_;
    auto database = openOrBeginAnew(file_, NewFile::lasting, [this](SQLiteDatabase& opened) {
      makeTables(opened);
      key_.emplace(keyFrom(file_.string() + "-key"));
      checkKey(opened, *key_);
    });
    auto identity = fileIdentity(file_);
    if (identity_ && identity_ != identity) restore(*database);
    identity_ = identity;
    database_ = std::move(database);
    return *database_;
  }

  void restore(SQLiteDatabase& database) {
    GenerationCounter::Raise raise(generation_);
    SQLiteTransaction transaction(database);
    for (const auto& [key, item] : items_) insert(database, key, item);
    transaction.commit();
    raise.commit();  // read again by all, this process too
  }

  const std::filesystem::path file_;
  GenerationCounter generation_;
  std::atomic<std::uint64_t> seenGeneration_ = 0;
  std::unique_ptr<SQLiteDatabase> database_;
  std::optional<FileIdentity> identity_;
  std::optional<SealingKey> key_;
  SecItems items_;
  bool hasReportedClosed_ = false;
};

}  // namespace

std::unique_ptr<SecItemBackend> makeSealedBackend(const std::filesystem::path& folder) {
  return std::make_unique<SealedBackend>(folder);
}

}  // namespace quenwick::platform

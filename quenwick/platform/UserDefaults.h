#pragma once

#include <atomic>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "quenwick/platform/CoarseClock.h"
#include "quenwick/platform/Executor.h"

namespace quenwick::platform {

class GenerationCounter;
class SQLiteDatabase;

/// A value that the preferences store holds.
using DefaultsValue = std::variant<bool, std::int64_t, std::uint64_t, float, double, std::string>;

/// The preferences store: typed values by text key, over a layer of registered defaults that is
/// not written. Reads are served from memory; a write is seen by this process at once and reaches
/// the disk in order, on the writer thread, those that wait together in one transaction. What
/// another process wrote is noticed by reads and served soon after. A number that is not finite,
/// text that is not UTF-8 or longer than 1 MiB is refused with one log line. May be used from any
/// thread; nothing throws.
class UserDefaults {
 public:
  /// The application's own. Its file is opened by the first call. Never destroyed.
  static UserDefaults& standard();

  /// A store in the given file, read at once. A damaged file is set aside; one that cannot be
  /// opened is reported, and values live in memory until it can. Lives until the process ends.
  static UserDefaults& make(std::filesystem::path file);

  /// The value under the key: what was set, else the registered default, else none.
  std::optional<DefaultsValue> object(std::string_view key) const;

  /// False, with an error line, where the value cannot be kept: a text that is not UTF-8 or longer
  /// than a megabyte, or a number that is not finite.
  bool setObject(DefaultsValue value, std::string key);
  void removeObject(std::string key);

  /// Sets the value unless the key has one, also one that only the file knows of so far: then that
  /// is read in its place, once `synchronize` has returned.
  void setObjectIfAbsent(DefaultsValue value, std::string key);

  /// Values that a key has while nothing is set under it. Not written to disk.
  void registerDefaults(const std::map<std::string, DefaultsValue>& defaults);

  /// Waits until everything written so far was attempted on disk.
  void synchronize();

 private:
  explicit UserDefaults(std::filesystem::path file);

  using Values = std::map<std::string, DefaultsValue, std::less<>>;

  /// A write on its way to the disk; without a value the key is removed.
  struct Write {
    std::string key;
    std::optional<DefaultsValue> value;
    bool isOnlyIfAbsent = false;
  };
  static void apply(const Write& write, Values& values);

  bool enqueue(Write write);
  void postWrite();
  void open();
  void writeWaiting();
  void commit(const std::deque<Write>& writes);
  void beginAnew();
  void lookForOthersWrites() const;
  void tryReread();
  void reread();
  void takeOver(Values values);
  bool isStored(const std::string& key);
  static Values stored(SQLiteDatabase& database);

  const std::filesystem::path file_;
  const std::unique_ptr<GenerationCounter> generation_;
  // On the writer thread alone, but for the construction.
  std::unique_ptr<SQLiteDatabase> database_;
  bool hasReportedFailure_ = false;
  bool hasBegunAnew_ = false;
  bool isRereadDue_ = false;
  Cancellable retry_;

  mutable std::mutex mutex_;  // never held during I/O
  Values values_;
  Values defaults_;
  std::deque<Write> waiting_;
  bool isWriteComing_ = false;
  mutable std::atomic<std::uint64_t> seenGeneration_ = 0;
  mutable LookInterval lookInterval_;
};

}  // namespace quenwick::platform

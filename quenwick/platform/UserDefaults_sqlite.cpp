#include <algorithm>
#include <chrono>
#include <cmath>
#include <memory>

#include "quenwick/platform/GenerationCounter.h"
#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/KeptForGood.h"
#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/SQLiteDatabase.h"
#include "quenwick/platform/Text.h"
#include "quenwick/platform/UserDefaults.h"
#include "quenwick/platform/Writer.h"

namespace quenwick::platform {
namespace {

constexpr std::chrono::seconds kRetryInterval(1);
constexpr std::size_t kMaximumText = 1U << 20;

bool isAcceptable(const DefaultsValue& value) {
  if (const auto* number = std::get_if<float>(&value)) return std::isfinite(*number);
  if (const auto* number = std::get_if<double>(&value)) return std::isfinite(*number);
  const auto* text = std::get_if<std::string>(&value);
  return !text || (text->size() <= kMaximumText && isUTF8(*text));
}

/// A value as its row holds it: the index of its kind, and its content. An unsigned integer is
/// kept as the signed one of the same bits.
SQLiteValue content(const DefaultsValue& value) {
  struct Convert {
    SQLiteValue operator()(bool flag) const { return std::int64_t{flag}; }
    SQLiteValue operator()(std::int64_t number) const { return number; }
    SQLiteValue operator()(std::uint64_t number) const { return static_cast<std::int64_t>(number); }
    SQLiteValue operator()(float number) const { return double{number}; }
    SQLiteValue operator()(double number) const { return number; }
    SQLiteValue operator()(const std::string& text) const { return text; }
  };
  return std::visit(Convert{}, value);
}

/// None where the row holds no value that this library has written.
std::optional<DefaultsValue> valueFrom(const SQLiteValue& kindOfRow, const SQLiteValue& content) {
  const auto* known = std::get_if<std::int64_t>(&kindOfRow);
  auto kind = known ? *known : -1;
  if (const auto* number = std::get_if<std::int64_t>(&content)) {
    if (kind == 0) return *number != 0;
    if (kind == 1) return *number;
    if (kind == 2) return static_cast<std::uint64_t>(*number);
  }
  if (const auto* number = std::get_if<double>(&content)) {
    if (kind == 3) return static_cast<float>(*number);
    if (kind == 4) return *number;
  }
  if (const auto* text = std::get_if<std::string>(&content); text && kind == 5 && isUTF8(*text)) {
    return *text;
  }
  return std::nullopt;
}

void makeTable(SQLiteDatabase& database) {
  database.run(
      "CREATE TABLE IF NOT EXISTS settings"
      " (key TEXT PRIMARY KEY, kind INTEGER NOT NULL, value) WITHOUT ROWID");
  database.check();
}

}  // namespace

UserDefaults& UserDefaults::standard() {
  HeldLog held;
  static auto& instance = make(settingsDirectory() / "preferences.sqlite");
  return instance;
}

UserDefaults& UserDefaults::make(std::filesystem::path file) {
  return keptForGood(std::unique_ptr<UserDefaults>(new UserDefaults(std::move(file))));
}

UserDefaults::UserDefaults(std::filesystem::path file)
    : file_(std::move(file)),
      generation_(std::make_unique<GenerationCounter>(file_.string() + ".generation")),
      seenGeneration_(generation_->value()) {
  try {
    open();
  } catch (const SQLiteError& error) {
    hasReportedFailure_ = true;
    logPlatformError("Settings cannot be read: " + error.localizedDescription());
  }
}

std::optional<DefaultsValue> UserDefaults::object(std::string_view key) const {
  lookForOthersWrites();
  std::lock_guard lock(mutex_);
  if (auto found = values_.find(key); found != values_.end()) return found->second;
  if (auto found = defaults_.find(key); found != defaults_.end()) return found->second;
  return std::nullopt;
}

bool UserDefaults::setObject(DefaultsValue value, std::string key) {
  return enqueue({std::move(key), std::move(value)});
}

void UserDefaults::setObjectIfAbsent(DefaultsValue value, std::string key) {
  enqueue({std::move(key), std::move(value), true});
}

void UserDefaults::removeObject(std::string key) { enqueue({std::move(key), std::nullopt}); }

void UserDefaults::registerDefaults(const std::map<std::string, DefaultsValue>& defaults) {
  std::lock_guard lock(mutex_);
  for (const auto& [key, value] : defaults) defaults_.insert_or_assign(key, value);
}

void UserDefaults::synchronize() { writer().drain(std::chrono::minutes(1)); }

void UserDefaults::apply(const Write& write, Values& values) {
  if (!write.value) {
    values.erase(write.key);
  } else if (write.isOnlyIfAbsent) {
    values.emplace(write.key, *write.value);
  } else {
    values.insert_or_assign(write.key, *write.value);
  }
}

bool UserDefaults::enqueue(Write write) {
  if (!isUTF8(write.key) || (write.value && !isAcceptable(*write.value))) {
    logPlatformError("A value that cannot be kept was refused for the setting " + shown(write.key));
    return false;
  }
  {
    std::lock_guard lock(mutex_);
    apply(write, values_);
    waiting_.push_back(std::move(write));
  }
  postWrite();
  return true;
}

void UserDefaults::postWrite() {
  {
    std::lock_guard lock(mutex_);
    if (std::exchange(isWriteComing_, true)) return;
  }
  writer().post([this] { writeWaiting(); });
}

/// Opens the file where it is not open, and takes over what it holds; what waits stays on top.
void UserDefaults::open() {
  if (database_) return;
  Values values;
  database_ = openOrBeginAnew(file_, NewFile::quick, [&values](SQLiteDatabase& database) {
    makeTable(database);
    values = stored(database);
  });
  takeOver(std::move(values));
}

/// Writes all that waits, in order, in one transaction. What fails stays, and is tried again.
void UserDefaults::writeWaiting() {
  std::deque<Write> writes;
  {
    std::lock_guard lock(mutex_);
    isWriteComing_ = false;
    writes = waiting_;
  }
  if (writes.empty()) return;
  if (database_ && database_->isReplaced()) return beginAnew();
  try {
    open();
    commit(writes);
  } catch (const SQLiteError& error) {
    if (error.isDamaged() && database_) return beginAnew();
    if (!std::exchange(hasReportedFailure_, true)) {
      logPlatformError("A setting cannot be written: " + error.localizedDescription());
    }
    retry_ = postAfter(kRetryInterval, writer(), [this] { writeWaiting(); });
    return;
  }
  hasReportedFailure_ = false;
  hasBegunAnew_ = false;
  {
    std::lock_guard lock(mutex_);
    waiting_.erase(waiting_.begin(), waiting_.begin() + static_cast<std::ptrdiff_t>(writes.size()));
  }
  if (std::exchange(isRereadDue_, false)) tryReread();
}

void UserDefaults::commit(const std::deque<Write>& writes) {
  GenerationCounter::Raise raise(*generation_);
  SQLiteTransaction transaction(*database_);
  for (const auto& [key, value, isOnlyIfAbsent] : writes) {
    if (!value) {
      database_->run("DELETE FROM settings WHERE key = ?", {key});
      continue;
    }
    if (isOnlyIfAbsent && isStored(key)) continue;
    database_->run("INSERT OR REPLACE INTO settings VALUES (?, ?, ?)",
                   {key, static_cast<std::int64_t>(value->index()), content(*value)});
  }
  transaction.commit();
  auto before = raise.commit();
  // Raised by this process alone since it last looked, and no value of an other's was kept in place
  // of one's own: there is nothing to read again.
  bool isOwnAlone = seenGeneration_.compare_exchange_strong(before, before + 1);
  if (!isOwnAlone || std::ranges::any_of(writes, &Write::isOnlyIfAbsent)) isRereadDue_ = true;
}

/// The file was damaged or replaced while in use: what this process knows goes into the one that
/// takes its place, unless another process has written there already.
void UserDefaults::beginAnew() {
  database_.reset();
  if (std::exchange(hasBegunAnew_, true)) {  // and in vain: not at once again
    retry_ = postAfter(kRetryInterval, writer(), [this] { writeWaiting(); });
    return;
  }
  bool isAnythingKnown = false;
  {
    std::lock_guard lock(mutex_);
    for (const auto& [key, value] : values_) waiting_.push_back({key, value, true});
    isAnythingKnown = !waiting_.empty();
  }
  // At once: whoever waits for the writer waits for what it has been given already.
  isAnythingKnown ? writeWaiting() : tryReread();
}

void UserDefaults::lookForOthersWrites() const {
  if (!lookInterval_.isOver()) return;
  auto value = generation_->value();
  auto seen = seenGeneration_.load();
  if (seen == value || seenGeneration_.exchange(value) != seen) return;
  writer().post([self = const_cast<UserDefaults*>(this)] { self->tryReread(); });
}

void UserDefaults::tryReread() {
  if (database_ && database_->isReplaced()) return beginAnew();
  try {
    open();
    reread();
    hasBegunAnew_ = false;
  } catch (const SQLiteError& error) {
    --seenGeneration_;  // the next look finds the difference again
    if (std::exchange(hasReportedFailure_, true)) return;
    logPlatformError("Settings cannot be read again: " + error.localizedDescription());
  }
}

void UserDefaults::reread() { takeOver(stored(*database_)); }

void UserDefaults::takeOver(Values values) {
  std::lock_guard lock(mutex_);
  for (const auto& write : waiting_) apply(write, values);
  values_ = std::move(values);
}

bool UserDefaults::isStored(const std::string& key) {
  auto rows = database_->run("SELECT kind, value FROM settings WHERE key = ?", {key});
  return !rows.empty() && valueFrom(rows[0][0], rows[0][1]);
}

UserDefaults::Values UserDefaults::stored(SQLiteDatabase& database) {
  Values values;
  for (auto& row : database.run("SELECT key, kind, value FROM settings")) {
    auto* key = std::get_if<std::string>(&row[0]);
    auto value = valueFrom(row[1], row[2]);
    if (key && value) values.insert_or_assign(std::move(*key), std::move(*value));
  }
  return values;
}

}  // namespace quenwick::platform

// The sealed file: who can read it, what can be done to it from outside, and how it is begun anew.

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cerrno>
#include <csignal>
#include <fstream>
#include <functional>
#include <set>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/PrivateFile.h"
#include "tests/support/FileContents.h"
#include "tests/support/Program.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SecretPlace.h"

namespace quenwick::platform {
namespace {

using tests::add;
using tests::becomes;
using tests::contents;
using tests::data;
using tests::item;

constexpr auto kKeysService = "com.example.keys";

/// What a process has left that kept twenty items, "a0" and so on, and ended.
struct Left {
  Left() {
    auto finished = tests::runProgram(place.keys(KEYS, {"write", "a"}));
    EXPECT_EQ(finished.exitCode, 0) << finished.errors;
  }

  /// Changes the database from outside; no process has it open.
  void change(const std::string& statement) const {
    auto changed = tests::runProgram({"sqlite3", file.string(), statement});
    EXPECT_EQ(changed.exitCode, 0) << changed.errors;
  }
  SecItemStore& open() { return place.openOfKeys(); }

  tests::SecretPlace place{SecItemBackendKind::sealedFile};
  const std::filesystem::path folder = place.folder() / "com.example.keys";
  const std::filesystem::path file = folder / "keychain.sqlite";
  const std::filesystem::path key = folder / "keychain.sqlite-key";
};

class SealedFileTest : public testing::Test {
 protected:
  SecItemStore& open() { return place_.open(); }

  tests::SecretPlace place_{SecItemBackendKind::sealedFile};
  const std::filesystem::path file_ = place_.folder() / "keychain.sqlite";
  const std::filesystem::path key_ = place_.folder() / "keychain.sqlite-key";
};

TEST_F(SealedFileTest, FilesAreTheUsersAloneAndHoldNoSecretInClear) {
  auto before = ::umask(0);
  auto& store = open();
  add(store, "account", "a very secret value");
  store.update(item("account"), {.kSecValueData = "another secret value"});
  ::umask(before);
  int files = 0;
  for (const auto& entry : std::filesystem::directory_iterator(place_.folder())) {
    using std::filesystem::perms;
    EXPECT_EQ(entry.status().permissions(), perms::owner_read | perms::owner_write) << entry;
    EXPECT_EQ(contents(entry.path()).find("secret value"), std::string::npos) << entry;
    ++files;
  }
  EXPECT_GE(files, 4);  // the file, its log, its key, its counter
}

TEST_F(SealedFileTest, AKeyThatCannotBeWrittenWholeLeavesNothingBehind) {
  auto key = place_.folder() / "new" / "key";
  auto before = ::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  ::getrlimit(RLIMIT_FSIZE, &limit);
  rlimit small{.rlim_cur = 10, .rlim_max = limit.rlim_max};
  ::setrlimit(RLIMIT_FSIZE, &small);
  int code = 0;
  try {
    makePrivateFileOnce(key, "as long as a key is");
  } catch (const PlatformError& error) {
    code = error.code();
  }
  ::setrlimit(RLIMIT_FSIZE, &limit);
  ::signal(SIGXFSZ, before);
  EXPECT_EQ(code, EFBIG);
  EXPECT_TRUE(std::filesystem::is_empty(key.parent_path()));
  makePrivateFileOnce(key, "as long as a key is");
  EXPECT_EQ(contents(key), "as long as a key is");
}

TEST_F(SealedFileTest, AKeyThatOthersCouldReadIsMadeTheUsersAlone) {
  add(open(), "account", "value");
  ::chmod(key_.c_str(), 0644);
  EXPECT_EQ(data(open(), "account"), "value");
  struct stat status{};
  ASSERT_EQ(::stat(key_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(SealedFileTest, TheSameSecretIsNeverSealedTheSameWay) {
  auto& store = open();
  std::set<std::string> seals;
  for (int i = 0; i < 20; ++i) {
    i == 0 ? add(store, "account", "value")
           : store.update(item("account"), {.kSecValueData = "value"});
    seals.insert(
        tests::runProgram({"sqlite3", file_.string(), "SELECT hex(sealed) FROM items"}).output);
  }
  EXPECT_EQ(seals.size(), 20U);
}

// Whoever can write the file cannot have one item read as another, nor change an item's names.
TEST_F(SealedFileTest, WhatWasChangedFromOutsideDoesNotOpenAndTheRestDoes) {
  const std::vector<std::string> changes = {
      "UPDATE items SET sealed = (SELECT sealed FROM items WHERE account = 'a1') WHERE account = "
      "'a0'",
      "UPDATE items SET account = 'a0' WHERE account = 'a2'",
      "UPDATE items SET service = 'another' WHERE account = 'a0'",
      "UPDATE items SET generic = 'b' WHERE account = 'a0'",
      "UPDATE items SET accessible = 'b' WHERE account = 'a0'",
      "UPDATE items SET reference = 'b' WHERE account = 'a0'",
      "UPDATE items SET sealed = substr(sealed, 1, length(sealed) - 1) WHERE account = 'a0'",
      "UPDATE items SET sealed = x'00' WHERE account = 'a0'",
      "UPDATE items SET sealed = 5 WHERE account = 'a0'"};
  for (const auto& statement : changes) {
    SCOPED_TRACE(statement);
    Left left;
    if (statement.find("a2") != std::string::npos)
      left.change("DELETE FROM items WHERE account = 'a0'");
    left.change(statement);
    auto log = tests::RecordingLog::install();
    auto& store = left.open();
    EXPECT_EQ(data(store, "a0", kKeysService), std::nullopt);
    EXPECT_EQ(data(store, "a0", "another"), std::nullopt);
    EXPECT_EQ(data(store, "a1", kKeysService), "value of a1");
    EXPECT_EQ(log->count("error: Items of the keychain were changed from outside"), 1);
  }
}

TEST_F(SealedFileTest, AnItemThatDoesNotOpenCanBeWrittenAnew) {
  Left left;
  left.change("UPDATE items SET sealed = x'00'");
  auto& store = left.open();
  auto query = item("a0", kKeysService);
  EXPECT_EQ(store.add(query), errSecDuplicateItem);
  EXPECT_EQ(store.update(query, {.kSecValueData = "anew"}), errSecSuccess);
  EXPECT_EQ(data(left.open(), "a0", kKeysService), "anew");
}

TEST_F(SealedFileTest, DamagedFilesAreSetAsideWithOneLineAndNewOnesBegun) {
  auto write = [](const std::filesystem::path& file, const std::string& text) {
    std::ofstream(file, std::ios::binary) << text;
  };
  struct Case {
    const char* name;
    std::function<void(const Left&)> damage;
  };
  const std::vector<Case> cases = {
      {"the database is garbage",
       [&](const Left& left) {
         write(left.file, std::string(5000, 'x'));
         std::filesystem::remove(left.file.string() + "-wal");  // which would mend it
       }},
      {"the key is cut short", [&](const Left& left) { write(left.key, "short"); }},
      {"the key is too long", [&](const Left& left) { write(left.key, std::string(5000, 'x')); }},
      {"the key is empty", [&](const Left& left) { write(left.key, ""); }},
      {"the key is another one", [&](const Left& left) { write(left.key, std::string(32, 'x')); }},
      {"the key is gone", [&](const Left& left) { std::filesystem::remove(left.key); }},
      {"the database has other tables", [&](const Left& left) {
         left.change("DROP TABLE items");
         left.change("CREATE TABLE items(a)");
       }}};
  for (const auto& [name, damage] : cases) {
    SCOPED_TRACE(name);
    Left left;
    damage(left);
    auto log = tests::RecordingLog::install();
    auto& store = left.open();
    EXPECT_EQ(data(store, "a0", kKeysService), std::nullopt);
    EXPECT_EQ(add(store, "account", "new"), errSecSuccess);
    EXPECT_EQ(data(left.open(), "account"), "new");
    EXPECT_EQ(log->count("error: "), 1) << testing::PrintToString(log->lines());
    EXPECT_EQ(log->count("set aside"), 1);
  }
}

TEST_F(SealedFileTest, WhatThisProcessKnowsOutlivesAFileThatIsDamagedWhileInUse) {
  auto log = tests::RecordingLog::install();
  auto& store = open();
  add(store, "account", "value");
  ASSERT_EQ(data(store, "account"), "value");
  auto broken = tests::runProgram(
      {"sqlite3", file_.string(), ".dbconfig defensive off", "PRAGMA writable_schema = ON",
       "UPDATE sqlite_schema SET rootpage = 999", "PRAGMA schema_version = 999"});
  ASSERT_EQ(broken.exitCode, 0) << broken.errors;
  EXPECT_EQ(add(store, "other", "value"), errSecSuccess);
  EXPECT_EQ(data(open(), "account"), "value");
  EXPECT_EQ(data(open(), "other"), "value");
  EXPECT_EQ(log->count("set aside"), 1);
}

// Another process has found damage and begun anew: what this one writes goes where that one reads.
TEST_F(SealedFileTest, AFileThatTookTheOldOnesPlaceIsTheOneThatIsWritten) {
  auto& store = open();
  add(store, "account", "value");
  std::filesystem::remove(key_);
  auto& other = open();
  EXPECT_EQ(data(other, "account"), std::nullopt);
  EXPECT_EQ(add(store, "later", "value"), errSecSuccess);
  EXPECT_EQ(data(open(), "later"), "value");
  EXPECT_TRUE(becomes(other, "account", "value")) << "the first process still knew it";
}

TEST_F(SealedFileTest, WithoutAPlaceToWriteNothingIsStoredAndOneLineSaysSo) {
  auto log = tests::RecordingLog::install();
  auto& store = SecItemStore::make(
      {place_.folder() / "file" / "app", "com.example.tests", SecItemBackendKind::sealedFile});
  std::ofstream(place_.folder() / "file") << "a file where the folder should be";
  for (int i = 0; i < 3; ++i) EXPECT_NE(add(store, "account", "value"), errSecSuccess);
  EXPECT_EQ(data(store, "account"), std::nullopt);
  EXPECT_EQ(store.backend(), std::nullopt);
  EXPECT_EQ(log->lines().size(), 1U);
}

}  // namespace
}  // namespace quenwick::platform

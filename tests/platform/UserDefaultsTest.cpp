#include "quenwick/platform/UserDefaults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <fstream>
#include <thread>

#include "tests/support/Program.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::platform {
namespace {

/// Reads until the value is there, as another process's write is served a little later.
bool becomes(const UserDefaults& defaults, std::string_view key, const DefaultsValue& expected) {
  for (int i = 0; i < 5000; ++i) {
    if (defaults.object(key) == expected) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

class UserDefaultsTest : public testing::Test {
 protected:
  UserDefaults& open() { return UserDefaults::make(file_); }

  tests::TemporaryDirectory folder_;
  std::filesystem::path file_ = folder_.path() / "app" / "preferences.sqlite";
};

TEST_F(UserDefaultsTest, EveryKindOfValueIsThereAfterARestart) {
  using namespace std::string_literals;
  const std::map<std::string, DefaultsValue> all{
      {"bool", true},
      {"int", std::int64_t{-9'223'372'036'854'775'807 - 1}},
      {"uint", std::uint64_t{18'446'744'073'709'551'615U}},
      {"float", 0.1F},
      {"double", 0.1},
      {"text", "ü\0 'quoted'"s},
      {"empty", ""s}};
  auto& first = open();
  for (const auto& [key, value] : all) first.setObject(value, key);
  first.setObject(1.0, "gone");
  first.removeObject("gone");
  first.synchronize();
  auto& second = open();
  for (const auto& [key, value] : all) EXPECT_EQ(second.object(key), value) << key;
  EXPECT_EQ(second.object("gone"), std::nullopt);
}

TEST_F(UserDefaultsTest, RegisteredDefaultsStandBehindAndAreNotWritten) {
  auto& first = open();
  first.registerDefaults({{"key", true}});
  EXPECT_EQ(first.object("key"), DefaultsValue(true));
  first.setObject(false, "key");
  EXPECT_EQ(first.object("key"), DefaultsValue(false));
  first.removeObject("key");
  EXPECT_EQ(first.object("key"), DefaultsValue(true));
  first.synchronize();
  EXPECT_EQ(open().object("key"), std::nullopt);
}

TEST_F(UserDefaultsTest, FoldersAndFilesAreTheUsersAlone) {
  auto before = ::umask(0);
  open().setObject(1.0, "key");
  open().synchronize();
  ::umask(before);
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(file_.parent_path()).permissions(), perms::owner_all);
  for (const auto& entry : std::filesystem::directory_iterator(file_.parent_path())) {
    EXPECT_EQ(entry.status().permissions(), perms::owner_read | perms::owner_write) << entry;
  }
}

TEST_F(UserDefaultsTest, AnotherProcesssWritesAreServedAndOwnOnesKept) {
  auto& ours = open();
  auto& theirs = open();  // an instance of its own stands for another process
  theirs.setObject(std::string("theirs"), "key");
  EXPECT_TRUE(becomes(ours, "key", std::string("theirs")));
  theirs.removeObject("key");
  theirs.setObject(1.5, "other");
  EXPECT_TRUE(becomes(ours, "other", 1.5));
  EXPECT_EQ(ours.object("key"), std::nullopt);
}

TEST_F(UserDefaultsTest, ADamagedFileIsSetAsideOnceAndWhatIsInMemoryIsKept) {
  auto log = tests::RecordingLog::install();
  std::filesystem::create_directories(file_.parent_path());
  std::ofstream(file_) << std::string(5000, 'x');
  auto& defaults = open();
  EXPECT_EQ(log->count("set aside"), 1);
  defaults.setObject(1.5, "key");
  defaults.synchronize();
  EXPECT_EQ(open().object("key"), DefaultsValue(1.5));

  // Now while it is in use: the table's root page is gone.
  auto broken = tests::runProgram(
      {"sqlite3", file_.string(), ".dbconfig defensive off", "PRAGMA writable_schema = ON",
       "UPDATE sqlite_schema SET rootpage = 999", "PRAGMA schema_version = 999"});
  ASSERT_EQ(broken.exitCode, 0) << broken.errors;
  defaults.setObject(2.5, "other");
  defaults.synchronize();
  EXPECT_EQ(log->count("set aside"), 2);
  EXPECT_EQ(open().object("key"), DefaultsValue(1.5));
  EXPECT_EQ(open().object("other"), DefaultsValue(2.5));
}

// Another process has found damage and begun anew, or the person has put the folder elsewhere.
TEST_F(UserDefaultsTest, AFileThatTookTheOldOnesPlaceIsTheOneThatIsWritten) {
  auto& ours = open();
  ours.setObject(1.5, "key");
  ours.synchronize();
  for (auto companion : {"", "-wal", "-shm"}) {
    std::filesystem::rename(file_.string() + companion, file_.string() + ".aside" + companion);
  }
  auto& theirs = open();
  theirs.setObject(2.5, "theirs");
  theirs.synchronize();
  ours.setObject(3.5, "later");
  ours.synchronize();
  EXPECT_EQ(open().object("later"), DefaultsValue(3.5));
  EXPECT_TRUE(becomes(theirs, "key", 1.5)) << "the first process still knew it";
  EXPECT_TRUE(becomes(ours, "theirs", 2.5));
}

TEST_F(UserDefaultsTest, AProcessThatStoppedWhileItWroteHoldsUpNobodyForGood) {
  auto log = tests::RecordingLog::install();
  auto& defaults = open();
  int stopped = ::open((file_.string() + ".generation").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(stopped, LOCK_EX), 0);
  defaults.setObject(1.5, "key");
  for (int i = 0; i < 6000 && log->lines().empty(); ++i) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  EXPECT_EQ(log->count("error: A setting cannot be written: "), 1);
  ::close(stopped);
  EXPECT_TRUE(becomes(open(), "key", 1.5)) << "tried again by itself";
}

TEST_F(UserDefaultsTest, WithoutAPlaceToWriteValuesLiveInMemoryAndOneLineSaysSo) {
  auto log = tests::RecordingLog::install();
  std::ofstream(file_.parent_path()) << "a file where the folder should be";
  auto& defaults = open();
  for (int i = 0; i < 3; ++i) {
    defaults.setObject(double(i), "key");
    defaults.synchronize();
  }
  EXPECT_EQ(defaults.object("key"), DefaultsValue(2.0));
  EXPECT_EQ(log->lines().size(), 1U);
}

// The file cannot be opened for a while (here: another program holds it), and then it can.
TEST_F(UserDefaultsTest, WhatTheFileHoldsIsNotReplacedByWhatWasMadeBeforeItCouldBeRead) {
  auto log = tests::RecordingLog::install();
  open().setObject(std::string("the install"), "id");
  open().synchronize();
  auto aside = file_.string() + ".away";
  std::filesystem::rename(file_, aside);
  std::filesystem::create_directory(file_);
  auto& defaults = open();
  defaults.setObjectIfAbsent(std::string("made meanwhile"), "id");
  defaults.setObject(1.5, "set meanwhile");
  defaults.synchronize();
  EXPECT_EQ(defaults.object("id"), DefaultsValue(std::string("made meanwhile")));
  // At one stroke: a try between two steps would find no file there, and make one.
  ASSERT_EQ(renameat2(AT_FDCWD, aside.c_str(), AT_FDCWD, file_.c_str(), RENAME_EXCHANGE), 0);
  EXPECT_TRUE(becomes(defaults, "id", std::string("the install"))) << "tried again by itself";
  defaults.synchronize();
  EXPECT_EQ(open().object("set meanwhile"), DefaultsValue(1.5));
  EXPECT_EQ(open().object("id"), DefaultsValue(std::string("the install")));
  EXPECT_EQ(log->count("error: "), 1);
}

TEST_F(UserDefaultsTest, AFileOfOtherTablesIsSetAside) {
  auto log = tests::RecordingLog::install();
  std::filesystem::create_directories(file_.parent_path());
  tests::runProgram({"sqlite3", file_.string(), "CREATE TABLE settings(a)"});
  open().setObject(1.5, "key");
  open().synchronize();
  EXPECT_EQ(open().object("key"), DefaultsValue(1.5));
  EXPECT_EQ(log->count("set aside"), 1);
}

TEST_F(UserDefaultsTest, ARemovalHoldsAlsoForWhatOnlyTheFileKnowsOf) {
  auto& ours = open();
  auto& theirs = open();
  theirs.setObject(1.5, "key");
  theirs.synchronize();
  ours.removeObject("key");
  ours.synchronize();
  EXPECT_EQ(open().object("key"), std::nullopt);
}

TEST_F(UserDefaultsTest, OfTwoThatMakeTheSameValueTheFirstOnDiskIsBothTheirs) {
  auto& ours = open();
  auto& theirs = open();
  ours.setObjectIfAbsent(std::string("ours"), "id");
  theirs.setObjectIfAbsent(std::string("theirs"), "id");
  theirs.synchronize();
  EXPECT_EQ(ours.object("id"), DefaultsValue(std::string("ours")));
  EXPECT_EQ(theirs.object("id"), DefaultsValue(std::string("ours")));
}

TEST_F(UserDefaultsTest, ValuesThatCannotBeKeptAreRefusedWithALine) {
  auto log = tests::RecordingLog::install();
  auto& defaults = open();
  defaults.setObject(1.5, "key");
  for (const DefaultsValue& bad :
       {DefaultsValue(std::nan("")), DefaultsValue(HUGE_VALF), DefaultsValue(std::string("\xff")),
        DefaultsValue(std::string(10'000'000, 'x'))}) {
    defaults.setObject(bad, "key");
  }
  EXPECT_EQ(log->count("refused for the setting key"), 4);
  EXPECT_EQ(defaults.object("key"), DefaultsValue(1.5));
}

TEST_F(UserDefaultsTest, NobodyIsHurtByACounterFileThatIsCutShort) {
  auto& ours = open();
  auto& theirs = open();
  std::filesystem::resize_file(file_.string() + ".generation", 0);
  std::this_thread::sleep_for(std::chrono::milliseconds(20));  // until the next look
  EXPECT_EQ(ours.object("key"), std::nullopt);
  theirs.setObject(1.5, "key");
  EXPECT_TRUE(becomes(ours, "key", 1.5));
}

TEST_F(UserDefaultsTest, NoneOfTheWritesOfSeveralThreadsIsLost) {
  auto& defaults = open();
  defaults.setObject(0.0, "count");
  defaults.synchronize();
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&defaults, t] {
      for (int i = 0; i < 250; ++i) {
        defaults.setObject(double(i), "thread" + std::to_string(t) + "." + std::to_string(i));
        defaults.object("count");
      }
    });
  }
  for (auto& thread : threads) thread.join();
  defaults.synchronize();
  auto counted = tests::runProgram({"sqlite3", file_.string(), "SELECT count(*) FROM settings"});
  EXPECT_EQ(counted.output, "1001\n") << counted.errors;
}

}  // namespace
}  // namespace quenwick::platform

// What holds wherever secrets are kept: the same cases with a real keyring and with the sealed
// file.

#include "quenwick/platform/SecItem.h"

#include <gtest/gtest.h>

#include <chrono>
#include <set>
#include <thread>

#include "quenwick/platform/KeysThread.h"
#include "quenwick/platform/SecItemStore.h"
#include "tests/support/Keyring.h"
#include "tests/support/Program.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SecretPlace.h"

namespace quenwick::platform {
namespace {

using tests::add;
using tests::becomes;
using tests::data;
using tests::item;

class SecItemTest : public testing::TestWithParam<SecItemBackendKind> {
 protected:
  SecItemStore& open() { return place_.open(); }
  std::vector<std::string> keys(const std::vector<std::string>& words) {
    return place_.keys(KEYS, words);
  }

  tests::SecretPlace place_{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Both, SecItemTest, tests::kBothPlaces, tests::nameOf);

TEST_P(SecItemTest, EveryCallTellsWhatItFound) {
  auto& store = open();
  auto query = item("account");
  EXPECT_EQ(data(store, "account"), std::nullopt);
  EXPECT_EQ(store.remove(query), errSecItemNotFound);
  EXPECT_EQ(store.update(query, {.kSecValueData = "new"}), errSecItemNotFound);
  EXPECT_EQ(add(store, "account", "first"), errSecSuccess);
  EXPECT_EQ(add(store, "account", "second"), errSecDuplicateItem);
  EXPECT_EQ(data(store, "account"), "first");
  EXPECT_EQ(store.update(query, {.kSecValueData = "second"}), errSecSuccess);
  EXPECT_EQ(data(store, "account"), "second");
  auto other = query;
  other.kSecAttrGeneric = "another";
  std::optional<Bytes> result;
  EXPECT_EQ(store.copyMatching(other, result), errSecItemNotFound);
  EXPECT_EQ(store.update(other, {.kSecValueData = "third"}), errSecItemNotFound);
  EXPECT_EQ(store.remove(other), errSecItemNotFound);
  EXPECT_EQ(store.remove(query), errSecSuccess);
  EXPECT_EQ(data(store, "account"), std::nullopt);
  EXPECT_EQ(store.backend(), GetParam());
}

TEST_P(SecItemTest, NamesThatNoBackendKnowsAreRefused) {
  auto& store = open();
  using namespace std::string_literals;
  for (const auto& bad : {"\xff"s, "a\0b"s}) EXPECT_EQ(add(store, bad, "x"), errSecParam);
  auto synchronizable = item("account");
  synchronizable.kSecAttrSynchronizable = true;
  EXPECT_EQ(store.add(synchronizable), errSecParam);
}

TEST_P(SecItemTest, BytesOfAnyKindAreThereAfterARestart) {
  using namespace std::string_literals;
  const std::vector<std::pair<std::string, Bytes>> all{{"empty", ""},
                                                       {"zero", "a\0b"s},
                                                       {"no text", "\xff\xfe\n\r"},
                                                       {"long", std::string(200'000, '\x01')},
                                                       {"ä key with 'quotes'", "ü"}};
  auto& first = open();
  for (const auto& [account, bytes] : all) EXPECT_EQ(add(first, account, bytes), errSecSuccess);
  auto& second = open();
  for (const auto& [account, bytes] : all) EXPECT_EQ(data(second, account), bytes) << account;
}

TEST_P(SecItemTest, AReferenceStaysTheSameWhileItsItemIsKept) {
  auto& store = open();
  auto query = item("account");
  query.kSecReturnPersistentRef = true;
  add(store, "account", "first");
  add(store, "other", "first");
  std::optional<Bytes> first;
  std::optional<Bytes> other;
  std::optional<Bytes> later;
  ASSERT_EQ(store.copyMatching(query, first), errSecSuccess);
  store.update(query, {.kSecValueData = "second"});
  ASSERT_EQ(open().copyMatching(query, later), errSecSuccess);
  EXPECT_EQ(first, later);
  query.kSecAttrAccount = "other";
  store.copyMatching(query, other);
  EXPECT_NE(first, other);
}

TEST_P(SecItemTest, WhatAnotherProcessWritesIsServedSoonAfter) {
  auto& ours = open();
  EXPECT_EQ(data(ours, "account"), std::nullopt);
  auto& theirs = open();  // an instance of its own stands for another process
  add(theirs, "account", "theirs");
  EXPECT_TRUE(becomes(ours, "account", "theirs"));
  theirs.update(item("account"), {.kSecValueData = "renewed"});
  EXPECT_TRUE(becomes(ours, "account", "renewed"));
  theirs.remove(item("account"));
  EXPECT_TRUE(becomes(ours, "account", std::nullopt));
}

TEST_P(SecItemTest, NothingIsLostWhenTwoProcessesStartAndWriteAtOnce) {
  tests::Finished others[2];
  std::vector<std::thread> threads;
  for (int i = 0; i < 2; ++i) {
    threads.emplace_back(
        [&, i] { others[i] = tests::runProgram(keys({"write", i == 0 ? "a" : "b"})); });
  }
  for (auto& thread : threads) thread.join();
  for (const auto& other : others) EXPECT_EQ(other.exitCode, 0) << other.errors;
  auto& store = place_.openOfKeys();
  // A busy keyring may need more than its second for so many items, and another try.
  EXPECT_TRUE(becomes(store, "a0", "value of a0", "com.example.keys"));
  for (int i = 0; i < 20; ++i) {
    for (std::string prefix : {"a", "b"}) {
      auto account = prefix + std::to_string(i);
      EXPECT_EQ(data(store, account, "com.example.keys"), "value of " + account);
    }
  }
}

TEST_P(SecItemTest, WhatWasReportedStoredSurvivesAKillRightAfter) {
  auto killed = tests::runProgram(keys({"die"}));
  ASSERT_EQ(killed.exitCode, 128 + 9) << killed.errors;
  EXPECT_EQ(data(place_.openOfKeys(), "kept", "com.example.keys"), "a secret");
}

TEST_P(SecItemTest, ReadsOfWhatIsKnownReachNeitherBusNorDisk) {
  auto& store = open();
  add(store, "account", "value");
  ASSERT_EQ(data(store, "account"), "value");
  keysThread().drain(std::chrono::minutes(1));
  std::binary_semaphore begun{0};
  std::binary_semaphore end{0};
  keysThread().post([&] {
    begun.release();
    end.acquire();
  });
  begun.acquire();  // from now on the keychain's thread does nothing for anybody
  auto start = std::chrono::steady_clock::now();
  for (int i = 0; i < 10'000; ++i) ASSERT_EQ(data(store, "account"), "value");
  EXPECT_EQ(data(store, "absent"), std::nullopt);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(20));
  end.release();
  keysThread().drain(std::chrono::minutes(1));  // what waits there is this function's own
}

TEST_P(SecItemTest, ACallerThatGaveUpHasWrittenNothing) {
  auto& store = place_.openOfUsualPatience();
  for (int i = 0; i < 10 && !store.isInMemory(); ++i) data(store, "account");
  ASSERT_TRUE(store.isInMemory());
  std::binary_semaphore end{0};
  keysThread().post([&] { end.acquire(); });
  auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(add(store, "account", "value"), errSecNotAvailable);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
  end.release();
  keysThread().drain(std::chrono::minutes(1));
  EXPECT_EQ(data(open(), "account"), std::nullopt);
}

TEST_P(SecItemTest, WhereSecretsAreKeptIsLoggedOnceAndTheSecretsNever) {
  auto log = tests::RecordingLog::install();
  auto& store = open();
  for (int i = 0; i < 3; ++i) {
    add(store, "account", "a secret value");
    data(store, "account");
  }
  EXPECT_EQ(log->count("default: Secrets are kept in "), 1);
  EXPECT_EQ(log->count("a secret value"), 0);
  EXPECT_EQ(log->lines().size(), 1U);
}

}  // namespace
}  // namespace quenwick::platform

// A keyring comes, goes, is locked and hangs; the install's choice stays.

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <type_traits>
#include <utility>

#include "quenwick/platform/KeysThread.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/SecretPlace.h"

namespace quenwick::platform {
namespace {

using tests::add;
using tests::becomes;
using tests::data;
using tests::item;

constexpr auto kSecretService = SecItemBackendKind::secretService;
constexpr auto kSealedFile = SecItemBackendKind::sealedFile;

/// How long the work takes.
template <class Work>
std::chrono::steady_clock::duration duration(Work work) {
  auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::steady_clock::now() - start;
}

/// What the work returns on the keychain's thread, where no call is given up.
template <class Work>
Task<std::invoke_result_t<Work>> there(Work work) {
  co_return co_await onKeysThread(std::move(work));
}

class KeyringTest : public testing::Test {
 protected:
  /// A keychain that has made no choice yet.
  SecItemStore& undecided() {
    return SecItemStore::make({.folder = folder(),
                               .application = "com.example.tests",
                               .patience = std::chrono::minutes(1)});
  }
  const std::filesystem::path& folder() const { return place_.folder(); }
  tests::Keyring& keyring() { return place_.keyring(); }

  /// Writes until that has succeeded, if only after its caller had given up.
  static bool isStored(SecItemStore& store, std::string_view account) {
    for (int i = 0; i < 5000; ++i) {
      auto status = add(store, account, "value");
      if (status == errSecSuccess || status == errSecDuplicateItem) return true;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return false;
  }

  tests::SecretPlace place_{kSecretService};
};

TEST_F(KeyringTest, IsChosenWhereItAnswersAndIsUnlocked) {
  auto& store = undecided();
  EXPECT_EQ(store.backend(), kSecretService);
  EXPECT_EQ(add(store, "account", "value"), errSecSuccess);
  EXPECT_FALSE(std::filesystem::exists(folder() / "keychain.sqlite"));
}

TEST_F(KeyringTest, IsNotChosenWhereItCannotBeUsed) {
  struct Case {
    const char* name;
    std::function<void()> prepare;
    std::function<void()> restore;
  };
  const std::vector<Case> cases = {
      {"locked", [this] { keyring().lock(); }, [this] { keyring().unlock(); }},
      {"hanging", [this] { keyring().daemon().signal(SIGSTOP); },
       [this] { keyring().daemon().signal(SIGCONT); }},
      {"a hanging bus", [this] { keyring().bus().signal(SIGSTOP); },
       [this] { keyring().bus().signal(SIGCONT); }},
      {"gone", [this] { keyring().kill(); }, [this] { keyring().start(); }},
      {"a dead bus", [this] { keyring().bus().kill(); }, [] {}}};
  for (const auto& [name, prepare, restore] : cases) {
    SCOPED_TRACE(name);
    prepare();
    auto home = folder() / name;
    auto& store = SecItemStore::make({home, "com.example.tests"});
    EXPECT_LT(duration([&] { store.backend(); }), std::chrono::seconds(2));
    keysThread().drain(std::chrono::minutes(1));  // a disk may be slow, too
    EXPECT_EQ(store.backend(), kSealedFile);
    EXPECT_EQ(wait(there([&] { return add(store, "account", "value"); })), errSecSuccess);
    restore();
    // The choice is for good.
    auto& later = SecItemStore::make({home, "com.example.tests", kSecretService});
    EXPECT_EQ(data(later, "account"), "value");
    EXPECT_EQ(later.backend(), kSealedFile);
  }
}

TEST_F(KeyringTest, NoBusIsStartedForIt) {
  for (std::string address : {"", "autolaunch:", "unix:path=/nowhere;autolaunch:scope=user"}) {
    tests::SessionBus bus(address);
    auto& store = SecItemStore::make({folder() / ("at " + address.substr(0, 4)), "com.example"});
    EXPECT_EQ(store.backend(), kSealedFile) << address;
  }
}

TEST_F(KeyringTest, WhatIsKnownIsServedWhileItIsLockedAndNothingIsWritten) {
  auto& store = place_.open();
  ASSERT_EQ(add(store, "account", "value"), errSecSuccess);
  ASSERT_EQ(data(store, "account"), "value");
  auto log = tests::RecordingLog::install();
  keyring().lock();
  EXPECT_EQ(add(store, "other", "value"), errSecInteractionNotAllowed);
  EXPECT_EQ(store.update(item("account"), {.kSecValueData = "new"}), errSecInteractionNotAllowed);
  EXPECT_EQ(store.remove(item("account")), errSecInteractionNotAllowed);
  EXPECT_EQ(data(store, "account"), "value");
  EXPECT_EQ(data(store, "absent"), std::nullopt);
  EXPECT_EQ(log->count("error: The keychain is out of reach"), 1);

  auto& unknowing = place_.open();
  EXPECT_EQ(data(unknowing, "account"), std::nullopt);
  EXPECT_GE(log->count("error: The keychain is out of reach: the keyring is locked"), 1);
  EXPECT_LT(duration([&] {
              for (int i = 0; i < 1000; ++i) data(unknowing, "account");
            }),
            std::chrono::seconds(20));
  keyring().unlock();
  EXPECT_TRUE(becomes(unknowing, "account", "value"));
  EXPECT_TRUE(isStored(store, "other"));
  EXPECT_FALSE(std::filesystem::exists(folder() / "keychain.sqlite"));
}

TEST_F(KeyringTest, WhatIsKnownIsServedWhenItIsKilledAndItIsUsedAgainOnceItIsBack) {
  auto& store = place_.openOfUsualPatience();
  ASSERT_TRUE(isStored(store, "account"));
  ASSERT_TRUE(becomes(store, "account", "value"));
  keyring().kill();
  EXPECT_LT(duration([&] { EXPECT_NE(add(store, "other", "value"), errSecSuccess); }),
            std::chrono::seconds(3));
  EXPECT_EQ(data(store, "account"), "value");
  EXPECT_EQ(data(store, "absent"), std::nullopt);
  keyring().start();
  EXPECT_TRUE(isStored(store, "other"));
  auto& later = place_.open();
  EXPECT_EQ(data(later, "account"), "value");
  EXPECT_EQ(data(later, "other"), "value");
}

TEST_F(KeyringTest, AHangingKeyringOrBusBlocksNobodyForLong) {
  auto& store = place_.openOfUsualPatience();
  ASSERT_TRUE(isStored(store, "account"));
  ASSERT_TRUE(becomes(store, "account", "value"));
  for (auto* hanging : {&keyring().daemon(), &keyring().bus()}) {
    hanging->signal(SIGSTOP);
    EXPECT_LT(duration([&] { EXPECT_NE(add(store, "other", "value"), errSecSuccess); }),
              std::chrono::seconds(2));
    EXPECT_EQ(data(store, "account"), "value");
    hanging->signal(SIGCONT);
    EXPECT_TRUE(isStored(store, hanging == &keyring().bus() ? "after bus" : "after keyring"));
  }
}

// Tasks read there, one after the other: if each waited, the last would wait for all.
TEST_F(KeyringTest, OnTheKeychainsThreadManyReadsOfAHangingKeyringWaitOnce) {
  ASSERT_TRUE(isStored(place_.openOfUsualPatience(), "account"));
  auto& store = place_.openOfUsualPatience();
  keyring().daemon().signal(SIGSTOP);
  auto read = [&] { return data(store, "account"); };
  auto took = duration([&] {
    for (int i = 0; i < 20; ++i) EXPECT_EQ(wait(there(read)), std::nullopt);
  });
  EXPECT_LT(took, std::chrono::seconds(8));
  keyring().daemon().signal(SIGCONT);
  bool isBack = false;
  for (int i = 0; i < 10'000 && !isBack; ++i) {
    isBack = wait(there(read)) == "value";
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  EXPECT_TRUE(isBack);
}

TEST_F(KeyringTest, ItemsOfAnotherApplicationAreNotSeen) {
  add(place_.open(), "account", "value");
  auto& other = SecItemStore::make(
      {folder() / "other", "com.example.other", kSecretService, std::chrono::minutes(1)});
  EXPECT_EQ(data(other, "account"), std::nullopt);
  EXPECT_EQ(add(other, "account", "another"), errSecSuccess);
  EXPECT_EQ(data(place_.open(), "account"), "value");
}

TEST_F(KeyringTest, ARecordThatSaysNothingIsSetAsideAndItemsInTheFileAreFound) {
  auto log = tests::RecordingLog::install();
  add(SecItemStore::make({folder(), "com.example.tests", kSealedFile}), "account", "value");
  std::ofstream(folder() / "keychain.backend") << "?";
  auto& store = undecided();
  EXPECT_EQ(data(store, "account"), "value");
  EXPECT_EQ(store.backend(), kSealedFile);
  EXPECT_EQ(log->count("error: A damaged file was set aside as keychain.backend"), 1);
}

// A bus that dies takes down hosts whose connection says so; the library's says nothing.
TEST_F(KeyringTest, AHostsMainLoopGoesOnWhenTheBusDies) {
  tests::Daemon host(place_.keys(KEYS, {"loop"}));
  ASSERT_EQ(host.line(), "ready");
  keyring().bus().kill();
  EXPECT_EQ(host.line(), "a secret");
  EXPECT_EQ(host.wait(), 0);
}

}  // namespace
}  // namespace quenwick::platform

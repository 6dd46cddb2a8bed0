#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "quenwick/platform/SecItemStore.h"
#include "tests/support/Keyring.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

constexpr auto kTestService = "com.example.service";

inline platform::SecItemQuery item(std::string_view account, const char* service = kTestService) {
  return {.kSecAttrService = service, .kSecAttrAccount = std::string(account)};
}

inline platform::OSStatus add(platform::SecItemStore& store, std::string_view account,
                              std::string_view value) {
  auto full = item(account);
  full.kSecValueData = std::string(value);
  return store.add(full);
}

inline std::optional<std::string> data(platform::SecItemStore& store, std::string_view account,
                                       const char* service = kTestService) {
  auto query = item(account, service);
  query.kSecReturnData = true;
  std::optional<std::string> found;
  store.copyMatching(query, found);
  return found;
}

/// Reads until the value is so, as changes from outside are served a little later.
inline bool becomes(platform::SecItemStore& store, std::string_view account,
                    const std::optional<std::string>& expected,
                    const char* service = kTestService) {
  for (int i = 0; i < 10'000; ++i) {
    if (data(store, account, service) == expected) return true;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return false;
}

/// Both places where secrets are kept, for tests that hold in each, and how such a test is called.
inline const auto kBothPlaces = testing::Values(platform::SecItemBackendKind::secretService,
                                                platform::SecItemBackendKind::sealedFile);
inline std::string nameOf(const testing::TestParamInfo<platform::SecItemBackendKind>& place) {
  return place.param == platform::SecItemBackendKind::secretService ? "Keyring" : "SealedFile";
}

/// A folder, and with `secretService` a keyring too, in which an application keeps secrets.
class SecretPlace {
 public:
  explicit SecretPlace(platform::SecItemBackendKind kind) : kind_(kind) {
    if (kind == platform::SecItemBackendKind::secretService) {
      keyring_ = std::make_unique<Keyring>();
    }
    bus_ = std::make_unique<SessionBus>(keyring_ ? keyring_->address() : std::string());
  }

  Keyring& keyring() { return *keyring_; }
  const std::filesystem::path& folder() const { return folder_.path(); }

  /// The application's keychain, as a new process of it has it. Its keyring may be slow, unless the
  /// test is of one that hangs.
  platform::SecItemStore& open() {
    return platform::SecItemStore::make({folder_.path(), "com.example.tests", kind_, kSlow});
  }
  platform::SecItemStore& openOfUsualPatience() {
    return platform::SecItemStore::make({folder_.path(), "com.example.tests", kind_});
  }

  /// The command line of the program `keys`, and the keychain that it has.
  std::vector<std::string> keys(const char* program, const std::vector<std::string>& words) const {
    bool isSealed = kind_ == platform::SecItemBackendKind::sealedFile;
    std::vector<std::string> line{program, folder_.path().string(),
                                  isSealed ? "sealedFile" : "secretService"};
    line.insert(line.end(), words.begin(), words.end());
    return line;
  }
  platform::SecItemStore& openOfKeys() {
    return platform::SecItemStore::make(
        {folder_.path() / "com.example.keys", "com.example.keys", kind_, kSlow});
  }

 private:
  static constexpr std::chrono::minutes kSlow{1};

  const platform::SecItemBackendKind kind_;
  TemporaryDirectory folder_;
  std::unique_ptr<Keyring> keyring_;
  std::unique_ptr<SessionBus> bus_;
};

}  // namespace quenwick::tests

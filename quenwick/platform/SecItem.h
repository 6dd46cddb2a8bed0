#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "quenwick/platform/HostConfiguration.h"
#include "quenwick/platform/URLRequest.h"

namespace quenwick::platform {

using OSStatus = std::int32_t;

inline constexpr OSStatus errSecSuccess = 0;
inline constexpr OSStatus errSecIO = -36;
inline constexpr OSStatus errSecParam = -50;
inline constexpr OSStatus errSecNotAvailable = -25291;
inline constexpr OSStatus errSecDuplicateItem = -25299;
inline constexpr OSStatus errSecItemNotFound = -25300;
inline constexpr OSStatus errSecInteractionNotAllowed = -25308;

enum class SecClass { kSecClassGenericPassword };
enum class SecMatchLimit { kSecMatchLimitOne };

/// The accessibility of items that can be read while the keychain is unlocked.
inline constexpr auto kSecAttrAccessibleWhenUnlocked = "ak";

/// The attributes of a keychain call. Service and account name an item, and are texts; what is
/// not given of the rest matches every item.
struct SecItemQuery {
  SecClass kSecClass = SecClass::kSecClassGenericPassword;
  std::string kSecAttrService = {};
  Bytes kSecAttrAccount = {};
  std::optional<Bytes> kSecAttrGeneric = std::nullopt;
  /// Items never leave the device; true finds nothing and is refused.
  bool kSecAttrSynchronizable = false;
  std::optional<std::string> kSecAttrAccessible = std::nullopt;
  std::optional<Bytes> kSecValueData = std::nullopt;
  SecMatchLimit kSecMatchLimit = SecMatchLimit::kSecMatchLimitOne;
  bool kSecReturnData = false;
  /// Instead of the data, what refers to the item for as long as it is kept.
  bool kSecReturnPersistentRef = false;
};

/// The application's keychain. What the process knows, absence included, is answered from memory;
/// all else is done on the keychain's thread, for which a caller waits a second and a half at
/// most (a write that has not begun by then never takes place). What the keyring tells while it
/// is locked or away is `errSecInteractionNotAllowed` or `errSecNotAvailable`. A write that
/// succeeded is on disk. From any thread; nothing throws.
OSStatus SecItemAdd(const SecItemQuery& attributes);
OSStatus SecItemUpdate(const SecItemQuery& query, const SecItemQuery& attributesToUpdate);
OSStatus SecItemCopyMatching(const SecItemQuery& query, std::optional<Bytes>& result);
OSStatus SecItemDelete(const SecItemQuery& query);

/// Whether items are read from memory, so that `SecItemCopyMatching` waits for nothing; from then
/// on for good.
bool SecItemsAreInMemory();

/// Where this install keeps its secrets, decided by the first use; none where that cannot be
/// settled (no place to record it).
std::optional<SecItemBackendKind> secItemBackend();

}  // namespace quenwick::platform

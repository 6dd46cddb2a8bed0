#include "quenwick/auth/Keychain.h"

#include "quenwick/platform/KeyedArchive.h"
#include "quenwick/platform/SecItem.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

using platform::Bytes;
using platform::KeyedArchive;
using platform::NSNumber;
using platform::SecItemQuery;

SecItemQuery baseQuery(const std::string& service, std::string_view key) {
  return {.kSecClass = platform::SecClass::kSecClassGenericPassword,
          .kSecAttrService = service,
          .kSecAttrAccount = Bytes(key),
          .kSecAttrGeneric = Bytes(key),
          .kSecAttrSynchronizable = false};
}

std::optional<Bytes> matching(const SecItemQuery& query) {
  std::optional<Bytes> result;
  auto status = platform::SecItemCopyMatching(query, result);
  return status == platform::errSecSuccess ? result : std::nullopt;
}

std::optional<NSNumber> number(const std::optional<Bytes>& data) {
  return data ? KeyedArchive::unarchivedNumber(*data) : std::nullopt;
}

}  // namespace

const Keychain& Keychain::standard() {
  static const auto& instance = *new Keychain("com.quenwick.sdk.keychain");
  return instance;
}

std::optional<Bytes> Keychain::data(std::string_view key) const {
  auto query = baseQuery(serviceName_, key);
  query.kSecReturnData = true;
  return matching(query);
}

std::optional<Bytes> Keychain::dataRef(std::string_view key) const {
  auto query = baseQuery(serviceName_, key);
  query.kSecReturnPersistentRef = true;
  return matching(query);
}

std::optional<std::string> Keychain::string(std::string_view key) const {
  auto bytes = data(key);
  return bytes && platform::isUTF8(*bytes) ? bytes : std::nullopt;
}

std::optional<platform::UUID> Keychain::uuid(std::string_view key) const {
  auto text = string(key);
  return text ? platform::UUID::parse(*text) : std::nullopt;
}

std::optional<std::int64_t> Keychain::integer(std::string_view key) const {
  auto found = number(data(key));
  return found ? std::optional(found->integerValue()) : std::nullopt;
}

std::optional<float> Keychain::floatValue(std::string_view key) const {
  auto found = number(data(key));
  return found ? std::optional(found->floatValue()) : std::nullopt;
}

std::optional<double> Keychain::doubleValue(std::string_view key) const {
  auto found = number(data(key));
  return found ? std::optional(found->doubleValue()) : std::nullopt;
}

std::optional<bool> Keychain::boolValue(std::string_view key) const {
  auto found = number(data(key));
  return found ? std::optional(found->boolValue()) : std::nullopt;
}

bool Keychain::set(const Bytes& data, std::string_view key) const {
  auto item = baseQuery(serviceName_, key);
  item.kSecValueData = data;
  item.kSecAttrAccessible = platform::kSecAttrAccessibleWhenUnlocked;
  auto status = platform::SecItemAdd(item);
  if (status == platform::errSecDuplicateItem) return update(data, key);
  return status == platform::errSecSuccess;
}

bool Keychain::set(std::string_view text, std::string_view key) const {
  return platform::isUTF8(text) && set(Bytes(text), key);
}

bool Keychain::set(const platform::UUID& uuid, std::string_view key) const {
  return set(std::string_view(uuid.uuidString()), key);
}

bool Keychain::set(std::int64_t number, std::string_view key) const {
  return setArchived(number, key);
}

bool Keychain::set(float number, std::string_view key) const { return setArchived(number, key); }

bool Keychain::set(double number, std::string_view key) const { return setArchived(number, key); }

bool Keychain::set(bool flag, std::string_view key) const { return setArchived(flag, key); }

bool Keychain::set(const platform::List& list, std::string_view key) const {
  return setArchived(list, key);
}

bool Keychain::set(const platform::Dictionary& dictionary, std::string_view key) const {
  return setArchived(dictionary, key);
}

bool Keychain::removeObject(std::string_view key) const {
  return platform::SecItemDelete(baseQuery(serviceName_, key)) == platform::errSecSuccess;
}

bool Keychain::setArchived(const platform::Value& root, std::string_view key) const {
  auto archive = KeyedArchive::archivedData(root);
  return archive && set(*archive, key);
}

bool Keychain::update(const Bytes& data, std::string_view key) const {
  return platform::SecItemUpdate(baseQuery(serviceName_, key), {.kSecValueData = data}) ==
         platform::errSecSuccess;
}

}  // namespace quenwick

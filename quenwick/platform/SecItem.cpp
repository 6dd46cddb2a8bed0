#include "quenwick/platform/SecItem.h"

#include "quenwick/platform/SecItemStore.h"

namespace quenwick::platform {

OSStatus SecItemAdd(const SecItemQuery& attributes) {
  return SecItemStore::standard().add(attributes);
}

OSStatus SecItemUpdate(const SecItemQuery& query, const SecItemQuery& attributesToUpdate) {
  return SecItemStore::standard().update(query, attributesToUpdate);
}

OSStatus SecItemCopyMatching(const SecItemQuery& query, std::optional<Bytes>& result) {
  return SecItemStore::standard().copyMatching(query, result);
}

OSStatus SecItemDelete(const SecItemQuery& query) { return SecItemStore::standard().remove(query); }

bool SecItemsAreInMemory() { return SecItemStore::standard().isInMemory(); }

std::optional<SecItemBackendKind> secItemBackend() { return SecItemStore::standard().backend(); }

}  // namespace quenwick::platform

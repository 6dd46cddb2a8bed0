#include "quenwick/platform/SecItemChoice.h"

#include <optional>
#include <string_view>
#include <system_error>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/PrivateFile.h"

namespace quenwick::platform {
namespace {

constexpr std::string_view kSecretService = "secret-service\n";
constexpr std::string_view kSealedFile = "sealed-file\n";

std::optional<SecItemBackendKind> recorded(const std::filesystem::path& record) {
  auto text = privateFileContents(record);
  if (text == kSecretService) return SecItemBackendKind::secretService;
  if (text == kSealedFile) return SecItemBackendKind::sealedFile;
  return std::nullopt;
}

/// A record that says nothing makes way for a new one.
void setAsideWhereDamaged(const std::filesystem::path& record) {
  DirectoryLock lock(record.parent_path());
  if (privateFileContents(record) && !recorded(record)) {
    setAside(record, "it does not say where secrets are kept");
  }
}

}  // namespace

SecItemBackendKind chosenSecItemBackend(const std::filesystem::path& folder,
                                        const std::function<SecItemBackendKind()>& choose) {
  auto record = folder / "keychain.backend";
  if (auto kind = recorded(record)) return *kind;
  setAsideWhereDamaged(record);
  // Items that lie there already are not left behind for a keyring.
  std::error_code error;
  bool hasFile = std::filesystem::exists(folder / "keychain.sqlite", error);
  auto kind = hasFile ? SecItemBackendKind::sealedFile : choose();
  makePrivateFileOnce(record,
                      kind == SecItemBackendKind::sealedFile ? kSealedFile : kSecretService);
  auto decided = recorded(record);
  if (!decided) throw OtherError("where secrets are kept cannot be recorded");
  return *decided;
}

}  // namespace quenwick::platform

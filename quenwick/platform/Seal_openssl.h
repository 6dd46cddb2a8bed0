#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace quenwick::platform {

/// A key with which secrets are sealed: encrypted, and bound to what they belong to, so that they
/// open neither changed nor in another's place (AES-256-GCM, a new nonce for every seal).
class SealingKey {
 public:
  static constexpr std::size_t kSize = 32;

  /// From bytes as `randomBytes` gives them, `kSize` of them.
  explicit SealingKey(std::string_view bytes);
  ~SealingKey();
  SealingKey(const SealingKey&) = default;
  SealingKey& operator=(const SealingKey&) = default;

  /// The secret as it may be kept where others write. Throws `SecItemError`.
  std::string seal(std::string_view secret, std::string_view boundTo) const;

  /// None where it was sealed with another key, is bound to something else or was changed.
  std::optional<std::string> open(std::string_view sealed, std::string_view boundTo) const;

 private:
  std::array<unsigned char, kSize> key_{};
};

/// As the loading thread does: OpenSSL is not torn down at exit under a thread that uses it, unless
/// the host has asked for that before.
void prepareSealing();

/// Bytes that nobody can foretell. Throws `SecItemError`.
std::string randomBytes(std::size_t count);

}  // namespace quenwick::platform

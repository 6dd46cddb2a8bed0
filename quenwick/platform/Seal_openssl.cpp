#include "quenwick/platform/Seal_openssl.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <algorithm>
#include <memory>

#include "quenwick/platform/SecItemBackend.h"

namespace quenwick::platform {
namespace {

constexpr std::size_t kNonceSize = 12;
constexpr std::size_t kTagSize = 16;

struct Free {
  void operator()(EVP_CIPHER_CTX* context) const { EVP_CIPHER_CTX_free(context); }
};
using Context = std::unique_ptr<EVP_CIPHER_CTX, Free>;

const unsigned char* bytes(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}
unsigned char* bytes(std::string& text) { return reinterpret_cast<unsigned char*>(text.data()); }

[[noreturn]] void fail() {
  auto code = ERR_get_error();
  ERR_clear_error();
  const char* reason = ERR_reason_error_string(code);
  throw SecItemError(errSecIO, reason ? reason : "the secret cannot be sealed");
}

}  // namespace

SealingKey::SealingKey(std::string_view keyBytes) {
  std::copy_n(keyBytes.begin(), std::min(keyBytes.size(), kSize), key_.begin());
}

SealingKey::~SealingKey() { OPENSSL_cleanse(key_.data(), key_.size()); }

std::string SealingKey::seal(std::string_view secret, std::string_view boundTo) const {
  auto sealed = randomBytes(kNonceSize);
  sealed.resize(kNonceSize + secret.size() + kTagSize);
  auto* text = bytes(sealed) + kNonceSize;
  Context context(EVP_CIPHER_CTX_new());
  int size = 0;
  bool isSealed =
      EVP_EncryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key_.data(), bytes(sealed)) &&
      EVP_EncryptUpdate(context.get(), nullptr, &size, bytes(boundTo),
                        static_cast<int>(boundTo.size())) &&
      EVP_EncryptUpdate(context.get(), text, &size, bytes(secret),
                        static_cast<int>(secret.size())) &&
      EVP_EncryptFinal_ex(context.get(), text + secret.size(), &size) &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_GET_TAG, static_cast<int>(kTagSize),
                          text + secret.size());
  if (!isSealed) fail();
  return sealed;
}

std::optional<std::string> SealingKey::open(std::string_view sealed,
                                            std::string_view boundTo) const {
  if (sealed.size() < kNonceSize + kTagSize) return std::nullopt;
  auto nonce = sealed.substr(0, kNonceSize);
  auto tag = std::string(sealed.substr(sealed.size() - kTagSize));
  auto text = sealed.substr(kNonceSize, sealed.size() - kNonceSize - kTagSize);
  std::string secret(text.size() + 1, '\0');  // never without a first byte to write to
  Context context(EVP_CIPHER_CTX_new());
  int size = 0;
  bool isOpen =
      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key_.data(), bytes(nonce)) &&
      EVP_DecryptUpdate(context.get(), nullptr, &size, bytes(boundTo),
                        static_cast<int>(boundTo.size())) &&
      EVP_DecryptUpdate(context.get(), bytes(secret), &size, bytes(text),
                        static_cast<int>(text.size())) &&
      EVP_CIPHER_CTX_ctrl(context.get(), EVP_CTRL_AEAD_SET_TAG, static_cast<int>(kTagSize),
                          tag.data()) &&
      EVP_DecryptFinal_ex(context.get(), bytes(secret) + text.size(), &size);
  ERR_clear_error();
  if (!isOpen) return std::nullopt;
  secret.resize(text.size());
  return secret;
}

void prepareSealing() { OPENSSL_init_crypto(OPENSSL_INIT_NO_ATEXIT, nullptr); }

std::string randomBytes(std::size_t count) {
  prepareSealing();
  std::string random(count, '\0');
  if (RAND_bytes(bytes(random), static_cast<int>(count)) != 1) fail();
  return random;
}

}  // namespace quenwick::platform

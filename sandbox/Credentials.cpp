#include "sandbox/Credentials.h"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <array>

#include "sandbox/Certificate.h"
#include "sandbox/Text.h"

namespace quenwick::sandbox {
namespace {

constexpr std::size_t kIdentifierLength = 16;

std::string derive(std::string_view secret, const std::string& text) {
  std::array<unsigned char, 32> digest{};
  unsigned int length = digest.size();
  const auto* made = HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
                          reinterpret_cast<const unsigned char*>(text.data()), text.size(),
                          digest.data(), &length);
  requireOpenSSL(made != nullptr, "derive a credential");
  return hexadecimal(digest);
}

}  // namespace

Credentials::Credentials(std::string_view secret, const std::vector<std::string>& keys) {
  for (const std::string& key : keys) {
    const Credential issued{
        .identifier = derive(secret, "identifier:" + key).substr(0, kIdentifierLength),
        .token = derive(secret, "token:" + key)};
    headers_.insert("Basic " + base64(issued.identifier + ":" + issued.token));
    credentials_.emplace(key, issued);
  }
}

bool Credentials::accept(std::string_view authorization) const {
  return headers_.contains(std::string(authorization));
}

}  // namespace quenwick::sandbox

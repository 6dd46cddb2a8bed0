#pragma once

#include <map>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace quenwick::sandbox {

/// What the handshake issues for an API key.
struct Credential {
  std::string identifier;
  std::string token;
};

/// One credential for each API key. They are derived from a secret, so that a credential holds
/// across starts, as long as the secret is kept and the key is accepted.
class Credentials {
 public:
  Credentials(std::string_view secret, const std::vector<std::string>& keys);

  const Credential& of(const std::string& key) const { return credentials_.at(key); }

  /// Whether an Authorization header carries one of these credentials.
  bool accept(std::string_view authorization) const;

 private:
  std::map<std::string, Credential> credentials_;
  std::unordered_set<std::string> headers_;
};

}  // namespace quenwick::sandbox

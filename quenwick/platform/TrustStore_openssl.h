#pragma once

#include <openssl/ssl.h>

#include <memory>
#include <mutex>
#include <string>
#include <utility>

namespace quenwick::platform {

/// The system's issuers and some more, parsed once and shared by every connection.
class TrustStore {
 public:
  /// `additional` holds certificates as PEM text.
  explicit TrustStore(std::string additional) : additional_(std::move(additional)) {}

  /// Makes the context trust these issuers and no others. The first call parses them.
  void install(SSL_CTX* context);

  /// The file of the system's issuers.
  static const std::string& systemFile();

 private:
  /// Frees it on the loading thread, which ends before OpenSSL does.
  struct Free {
    void operator()(X509_STORE* store) const;
  };

  std::string additional_;
  std::once_flag once_;
  std::unique_ptr<X509_STORE, Free> store_;
};

}  // namespace quenwick::platform

#pragma once

#include <openssl/types.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace quenwick::sandbox {

struct OpenSSLDeleter {
  void operator()(X509* certificate) const;
  void operator()(EVP_PKEY* key) const;
};

/// A certificate and its private key.
struct Certificate {
  std::unique_ptr<X509, OpenSSLDeleter> certificate;
  std::unique_ptr<EVP_PKEY, OpenSSLDeleter> key;

  /// Whether the key belongs to the certificate, which is valid now and for a day to come.
  bool isUsable() const;
};

/// What a certificate says.
struct CertificateTerms {
  std::string name;
  /// Host names and addresses that a server shows it for.
  std::vector<std::string> hosts = {};
  /// Its validity, counted from now.
  std::chrono::seconds from{0};
  std::chrono::seconds to{0};
  bool isAuthority = false;
};

/// Makes a P-256 key and its certificate, signed by `issuer`, or by itself without one.
/// Throws `std::runtime_error`.
Certificate makeCertificate(const CertificateTerms& terms, const Certificate* issuer);

/// Throws a `std::runtime_error` that says what OpenSSL could not do, unless `succeeded`.
void requireOpenSSL(bool succeeded, const std::string& what);

}  // namespace quenwick::sandbox

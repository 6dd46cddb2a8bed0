#pragma once

#include <openssl/types.h>

#include <memory>
#include <string>
#include <unordered_map>

namespace quenwick::sandbox {

class CertificateAuthority;
class Scenario;
struct Certificate;

/// How the HTTPS server speaks TLS: with one certificate for every host of a scenario, but a wrong
/// one for the hosts that the scenario names for it, chosen by the name that the client asks for.
class TLSContext {
 public:
  /// Makes the certificates. Throws `std::runtime_error`.
  TLSContext(const CertificateAuthority& authority, const Scenario& scenario);
  ~TLSContext();
  TLSContext(const TLSContext&) = delete;
  TLSContext& operator=(const TLSContext&) = delete;

  SSL_CTX* handle() const { return default_.get(); }

 private:
  struct Deleter {
    void operator()(SSL_CTX* context) const;
  };
  using Handle = std::unique_ptr<SSL_CTX, Deleter>;

  static Handle makeContext(const Certificate& certificate);
  static int chooseCertificate(SSL* connection, int* alert, void* self);

  Handle default_;
  std::unordered_map<std::string, std::shared_ptr<SSL_CTX>> faulty_;
};

}  // namespace quenwick::sandbox

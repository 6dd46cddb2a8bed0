#include "sandbox/TLSContext.h"

#include <openssl/ssl.h>

#include <map>
#include <vector>

#include "sandbox/Address.h"
#include "sandbox/CertificateAuthority.h"
#include "sandbox/Scenario.h"

namespace quenwick::sandbox {

TLSContext::TLSContext(const CertificateAuthority& authority, const Scenario& scenario) {
  std::vector<std::string> hosts = {"localhost", "127.0.0.1"};
  hosts.insert(hosts.end(), scenario.hosts().begin(), scenario.hosts().end());
  default_ = makeContext(authority.certificate(hosts));

  std::map<CertificateFault, std::vector<std::string>> hostsOfFaults;
  for (const auto& [host, fault] : scenario.certificates()) hostsOfFaults[fault].push_back(host);
  for (const auto& [fault, faultyHosts] : hostsOfFaults) {
    const std::shared_ptr<SSL_CTX> context =
        makeContext(authority.faultyCertificate(fault, faultyHosts));
    for (const std::string& host : faultyHosts) faulty_[host] = context;
  }
  SSL_CTX_set_tlsext_servername_callback(default_.get(), &TLSContext::chooseCertificate);
  SSL_CTX_set_tlsext_servername_arg(default_.get(), this);
}

TLSContext::~TLSContext() = default;

void TLSContext::Deleter::operator()(SSL_CTX* context) const { SSL_CTX_free(context); }

TLSContext::Handle TLSContext::makeContext(const Certificate& certificate) {
  Handle context(SSL_CTX_new(TLS_server_method()));
  requireOpenSSL(context != nullptr, "make a TLS context");
  SSL_CTX_set_min_proto_version(context.get(), TLS1_2_VERSION);
  requireOpenSSL(SSL_CTX_use_certificate(context.get(), certificate.certificate.get()) == 1 &&
                     SSL_CTX_use_PrivateKey(context.get(), certificate.key.get()) == 1,
                 "use a certificate");
  return context;
}

int TLSContext::chooseCertificate(SSL* connection, int* /*alert*/, void* self) {
  const char* name = SSL_get_servername(connection, TLSEXT_NAMETYPE_host_name);
  if (name == nullptr) return SSL_TLSEXT_ERR_NOACK;
  const auto& faulty = static_cast<const TLSContext*>(self)->faulty_;
  const auto found = faulty.find(hostOfAuthority(name));
  if (found != faulty.end()) SSL_set_SSL_CTX(connection, found->second.get());
  return SSL_TLSEXT_ERR_OK;
}

}  // namespace quenwick::sandbox

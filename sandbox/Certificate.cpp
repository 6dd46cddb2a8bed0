#include "sandbox/Certificate.h"

#include <arpa/inet.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <array>
#include <ctime>
#include <stdexcept>

namespace quenwick::sandbox {
namespace {

constexpr std::time_t kDay = 86'400;

void setSerial(X509* certificate) {
  std::array<unsigned char, 8> serial{};
  requireOpenSSL(RAND_bytes(serial.data(), serial.size()) == 1, "draw a serial number");
  std::uint64_t number = 0;
  for (const unsigned char byte : serial) number = number << 8U | byte;
  ASN1_INTEGER_set_uint64(X509_get_serialNumber(certificate), number >> 1U | 1U);
}

void addExtension(X509* certificate, X509* issuer, int id, const std::string& value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, id, value.c_str());
  requireOpenSSL(extension != nullptr, "make the extension " + value);
  const int added = X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
  requireOpenSSL(added == 1, "add the extension " + value);
}

bool isNetworkAddress(const std::string& host) {
  std::array<unsigned char, sizeof(in6_addr)> bytes{};
  return inet_pton(AF_INET, host.c_str(), bytes.data()) == 1 ||
         inet_pton(AF_INET6, host.c_str(), bytes.data()) == 1;
}

std::string alternativeNames(const std::vector<std::string>& hosts) {
  std::string names;
  for (std::string host : hosts) {
    if (host.starts_with('[')) host = host.substr(1, host.size() - 2);
    if (!names.empty()) names += ",";
    names += (isNetworkAddress(host) ? "IP:" : "DNS:") + host;
  }
  return names;
}

void addExtensions(X509* certificate, X509* issuer, const CertificateTerms& terms) {
  if (terms.isAuthority) {
    addExtension(certificate, issuer, NID_basic_constraints, "critical,CA:TRUE");
    addExtension(certificate, issuer, NID_key_usage, "critical,keyCertSign,cRLSign");
  } else {
    addExtension(certificate, issuer, NID_basic_constraints, "critical,CA:FALSE");
    addExtension(certificate, issuer, NID_key_usage, "critical,digitalSignature");
    addExtension(certificate, issuer, NID_ext_key_usage, "serverAuth");
    addExtension(certificate, issuer, NID_subject_alt_name, alternativeNames(terms.hosts));
  }
  addExtension(certificate, issuer, NID_subject_key_identifier, "hash");
  addExtension(certificate, issuer, NID_authority_key_identifier, "keyid");
}

void setName(X509* certificate, const std::string& name) {
  const int added = X509_NAME_add_entry_by_NID(
      X509_get_subject_name(certificate), NID_commonName, MBSTRING_UTF8,
      reinterpret_cast<const unsigned char*>(name.data()), static_cast<int>(name.size()), -1, 0);
  requireOpenSSL(added == 1, "name a certificate");
}

}  // namespace

void OpenSSLDeleter::operator()(X509* certificate) const { X509_free(certificate); }

void OpenSSLDeleter::operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }

bool Certificate::isUsable() const {
  if (!certificate || !key || X509_check_private_key(certificate.get(), key.get()) != 1) {
    return false;
  }
  std::time_t tomorrow = std::time(nullptr) + kDay;
  return X509_cmp_current_time(X509_get0_notBefore(certificate.get())) < 0 &&
         X509_cmp_time(X509_get0_notAfter(certificate.get()), &tomorrow) > 0;
}

Certificate makeCertificate(const CertificateTerms& terms, const Certificate* issuer) {
  Certificate made{std::unique_ptr<X509, OpenSSLDeleter>(X509_new()),
                   std::unique_ptr<EVP_PKEY, OpenSSLDeleter>(EVP_EC_gen("P-256"))};
  requireOpenSSL(made.certificate && made.key, "make a key");
  X509* certificate = made.certificate.get();
  const Certificate& signer = issuer != nullptr ? *issuer : made;

  X509_set_version(certificate, X509_VERSION_3);
  setSerial(certificate);
  X509_gmtime_adj(X509_getm_notBefore(certificate), terms.from.count());
  X509_gmtime_adj(X509_getm_notAfter(certificate), terms.to.count());
  setName(certificate, terms.name);
  X509_set_issuer_name(certificate, X509_get_subject_name(signer.certificate.get()));
  X509_set_pubkey(certificate, made.key.get());
  addExtensions(certificate, signer.certificate.get(), terms);
  requireOpenSSL(X509_sign(certificate, signer.key.get(), EVP_sha256()) > 0, "sign a certificate");
  return made;
}

void requireOpenSSL(bool succeeded, const std::string& what) {
  if (succeeded) return;
  std::array<char, 256> reason{};
  ERR_error_string_n(ERR_get_error(), reason.data(), reason.size());
  ERR_clear_error();
  throw std::runtime_error("cannot " + what + ": " + reason.data());
}

}  // namespace quenwick::sandbox

#include "quenwick/platform/TrustStore_openssl.h"

#include <curl/curl.h>
#include <openssl/err.h>
#include <openssl/pem.h>

#include "quenwick/platform/URLLoader_curl.h"

namespace quenwick::platform {
namespace {

/// The system's certificates, read once in a process whatever the number of stores.
X509_STORE* systemStore() {
  static auto* store = [] {
    auto* made = X509_STORE_new();
    X509_STORE_load_file(made, TrustStore::systemFile().c_str());
    ERR_clear_error();  // without a readable file there are no system issuers
    return made;
  }();
  return store;
}

void addSystem(X509_STORE* store) {
  const auto* objects = X509_STORE_get0_objects(systemStore());
  for (int i = 0; i < sk_X509_OBJECT_num(objects); ++i) {
    if (auto* certificate = X509_OBJECT_get0_X509(sk_X509_OBJECT_value(objects, i))) {
      X509_STORE_add_cert(store, certificate);
    }
  }
}

void addPEM(X509_STORE* store, const std::string& text) {
  std::unique_ptr<BIO, decltype(&BIO_free)> bio(
      BIO_new_mem_buf(text.data(), static_cast<int>(text.size())), &BIO_free);
  while (auto* certificate = PEM_read_bio_X509(bio.get(), nullptr, nullptr, nullptr)) {
    X509_STORE_add_cert(store, certificate);
    X509_free(certificate);
  }
  ERR_clear_error();  // the end of the text is reported as an error
}

}  // namespace

const std::string& TrustStore::systemFile() {
  static const auto& file = *new std::string([] {
    const char* known = curl_version_info(CURLVERSION_NOW)->cainfo;
    return std::string(known ? known : "/etc/ssl/certs/ca-certificates.crt");
  }());
  return file;
}

void TrustStore::Free::operator()(X509_STORE* store) const {
  URLLoader::shared().post([store] { X509_STORE_free(store); });
}

void TrustStore::install(SSL_CTX* context) {
  std::call_once(once_, [this] {
    store_.reset(X509_STORE_new());
    addSystem(store_.get());
    addPEM(store_.get(), additional_);
  });
  SSL_CTX_set1_cert_store(context, store_.get());
}

}  // namespace quenwick::platform

#include "quenwick/platform/EasyHandle_curl.h"

#include <openssl/ssl.h>

#include <string_view>

namespace quenwick::platform {
namespace {

// Before it curl keeps a pointer to the last header of the transfer before, which has gone, and
// takes a first header that begins with a blank for more of it.
constexpr unsigned kForgetsHeaders = 0x080000;

/// Never freed: handles may live as long as the process.
CURLSH* tlsSessions() {
  static auto* share = [] {
    auto* made = curl_share_init();
    curl_share_setopt(made, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    return made;
  }();
  return share;
}

void copyCookies(CURL* from, CURL* to) {
  curl_slist* cookies = nullptr;
  curl_easy_getinfo(from, CURLINFO_COOKIELIST, &cookies);
  for (const auto* each = cookies; each; each = each->next) {
    curl_easy_setopt(to, CURLOPT_COOKIELIST, each->data);
  }
  curl_slist_free_all(cookies);
}

}  // namespace

// It is never reset: curl would lose a list of its own.
EasyHandle makeEasyHandle() {
  EasyHandle handle(curl_easy_init());
  auto* easy = handle.get();
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  // The least that curl allows: a copy of the handle has buffers of its own.
  curl_easy_setopt(easy, CURLOPT_UPLOAD_BUFFERSIZE, 16L << 10);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");
  curl_easy_setopt(easy, CURLOPT_TCP_NODELAY, 1L);
  curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT, 2'000'000L);  // the load's own deadlines hold
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  // A directory of issuers, or a certificate store of one's own, would have them parsed again at
  // every connection.
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(easy, CURLOPT_CA_CACHE_TIMEOUT, -1L);
  curl_easy_setopt(easy, CURLOPT_SHARE, tlsSessions());
  return handle;
}

bool mayBeUsedAgain() {
  static const bool isTrusted = curl_version_info(CURLVERSION_NOW)->version_num >= kForgetsHeaders;
  return isTrusted;
}

EasyHandle renewed(EasyHandle used) {
  EasyHandle fresh(curl_easy_duphandle(used.get()));
  if (!fresh) return used;
  curl_easy_setopt(fresh.get(), CURLOPT_SHARE, tlsSessions());
  copyCookies(used.get(), fresh.get());
  return fresh;
}

bool isOnHTTP2(CURL* easy) {
  curl_tlssessioninfo* session = nullptr;
  if (curl_easy_getinfo(easy, CURLINFO_TLS_SSL_PTR, &session) != CURLE_OK || !session ||
      session->backend != CURLSSLBACKEND_OPENSSL || !session->internals) {
    return false;
  }
  const unsigned char* name = nullptr;
  unsigned size = 0;
  SSL_get0_alpn_selected(static_cast<const SSL*>(session->internals), &name, &size);
  return std::string_view(reinterpret_cast<const char*>(name), size) == "h2";
}

}  // namespace quenwick::platform

#include "bench/support/CurlChain.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace quenwick::bench {
namespace {

std::size_t drop(char*, std::size_t one, std::size_t count, void*) { return one * count; }

CURLM* makeMulti() {
  auto* multi = curl_multi_init();
  curl_multi_setopt(multi, CURLMOPT_MAX_HOST_CONNECTIONS, 6L);
  curl_multi_setopt(multi, CURLMOPT_MAXCONNECTS, 64L);
  return multi;
}

}  // namespace

CurlChain::CurlChain(const platform::URLSessionConfiguration& configuration, std::string userAgent)
    : userAgent_(std::move(userAgent)),
      connectTo_(connectToList(configuration)),
      multi_(makeMulti()) {
  // The system's issuers and the sandbox's in one file, parsed once by curl's own cache.
  issuers_ = std::filesystem::temp_directory_path() /
             ("quenwick-bench-" + std::to_string(getpid()) + ".pem");
  std::ofstream(issuers_) << std::ifstream(curl_version_info(CURLVERSION_NOW)->cainfo).rdbuf()
                          << configuration.additionalTrustAnchors;
}

CurlChain::~CurlChain() {
  for (auto* easy : idle_) curl_easy_cleanup(easy);
  curl_multi_cleanup(multi_);
  std::filesystem::remove(issuers_);
}

CURL* CurlChain::prepared() {
  if (!idle_.empty()) {
    auto* easy = idle_.back();
    idle_.pop_back();
    return easy;
  }
  auto* easy = curl_easy_init();
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  curl_easy_setopt(easy, CURLOPT_COOKIEFILE, "");
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  curl_easy_setopt(easy, CURLOPT_CAINFO, issuers_.c_str());
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(easy, CURLOPT_CONNECT_TO, connectTo_.get());
  curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "");
  curl_easy_setopt(easy, CURLOPT_USERAGENT, userAgent_.c_str());
  curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(easy, CURLOPT_MAXREDIRS, 20L);
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &drop);
  return easy;
}

std::vector<std::string> CurlChain::load(const std::string& url, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    auto* easy = prepared();
    curl_easy_setopt(easy, CURLOPT_URL, url.c_str());
    curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, isFresh_ ? 1L : 0L);
    curl_multi_add_handle(multi_, easy);
  }
  isFresh_ = false;
  std::vector<std::string> ends;
  for (int running = 1; running > 0;) {
    curl_multi_perform(multi_, &running);
    int left = 0;
    while (auto* message = curl_multi_info_read(multi_, &left)) {
      auto* easy = message->easy_handle;
      char* end = nullptr;
      curl_easy_getinfo(easy, CURLINFO_EFFECTIVE_URL, &end);
      ends.emplace_back(message->data.result == CURLE_OK ? end : "failed");
      curl_multi_remove_handle(multi_, easy);
      idle_.push_back(easy);
    }
    if (running > 0) curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
  }
  return ends;
}

void CurlChain::forgetConnections() {
  for (auto* easy : idle_) curl_easy_cleanup(easy);  // and with them their TLS sessions
  idle_.clear();
  isFresh_ = true;
}

}  // namespace quenwick::bench

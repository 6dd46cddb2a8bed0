#pragma once

#include <curl/curl.h>

#include <string>
#include <vector>

#include "bench/support/CurlList.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick::bench {

/// Plain libcurl following a chain by itself, with the session's options: the fastest way known
/// to do the same loads. One multi handle and its easy handles are kept from run to run.
class CurlChain {
 public:
  CurlChain(const platform::URLSessionConfiguration& configuration, std::string userAgent);
  ~CurlChain();
  CurlChain(const CurlChain&) = delete;
  CurlChain& operator=(const CurlChain&) = delete;

  /// Loads the URL `count` times at once; the URLs that the chains ended at.
  std::vector<std::string> load(const std::string& url, std::size_t count = 1);

  /// The next call opens new connections. The handle's parsed issuers stay.
  void forgetConnections();

 private:
  CURL* prepared();

  std::string issuers_;
  std::string userAgent_;
  CurlList connectTo_;
  std::vector<CURL*> idle_;
  CURLM* multi_ = nullptr;
  bool isFresh_ = false;
};

}  // namespace quenwick::bench

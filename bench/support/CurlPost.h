#pragma once

#include <curl/curl.h>

#include <string>

#include "bench/support/CurlList.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick::bench {

/// Plain libcurl sending one request over and over on a handle that it keeps: with the session's
/// trust and connections, and the request's own method, headers and body.
class CurlPost {
 public:
  CurlPost(const platform::URLSessionConfiguration& configuration,
           const platform::URLRequest& request);
  ~CurlPost();
  CurlPost(const CurlPost&) = delete;
  CurlPost& operator=(const CurlPost&) = delete;

  /// The body of the answer; "failed" where there is none.
  const std::string& send();

 private:
  std::string issuers_;
  std::string body_;
  std::string answer_;
  CurlList connectTo_;
  CurlList headers_;
  CURL* easy_;
};

}  // namespace quenwick::bench

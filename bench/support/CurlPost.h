#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

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
  struct Free {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
  };
  void set(const platform::URLRequest& request);

  std::string issuers_;
  std::string body_;
  std::string answer_;
  std::unique_ptr<curl_slist, Free> connectTo_;
  std::unique_ptr<curl_slist, Free> headers_;
  CURL* easy_;
};

}  // namespace quenwick::bench

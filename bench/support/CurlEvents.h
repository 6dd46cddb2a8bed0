#pragma once

#include <curl/curl.h>

#include <string>
#include <vector>

#include "bench/support/CurlList.h"
#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick::bench {

/// Plain libcurl posting bodies, so many at a time, on one multi handle and easy handles that are
/// kept: the fastest way known to do the same.
class CurlEvents {
 public:
  /// `request` is what all posts share.
  CurlEvents(const platform::URLSessionConfiguration& configuration,
             const platform::URLRequest& request, std::size_t atOnce);
  ~CurlEvents();
  CurlEvents(const CurlEvents&) = delete;
  CurlEvents& operator=(const CurlEvents&) = delete;

  /// Posts all bodies; how many of them were answered with 200 and that text.
  std::size_t post(const std::vector<std::string>& bodies, const std::string& answer);

 private:
  struct Post {
    CURL* easy = nullptr;
    std::string answer = {};
  };

  CURL* made(const platform::URLRequest& request, Post& post);
  bool ended(const CURLMsg& message, const std::string& answer);
  void begin(Post& post, const std::string& body);

  std::string issuers_;
  CurlList connectTo_;
  CurlList headers_;
  CURLM* multi_;
  std::vector<Post> posts_;
};

}  // namespace quenwick::bench

#include "bench/support/CurlPost.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace quenwick::bench {

CurlPost::CurlPost(const platform::URLSessionConfiguration& configuration,
                   const platform::URLRequest& request)
    : body_(request.httpBody.value_or("")),
      connectTo_(connectToList(configuration)),
      headers_(headerList(request)),
      easy_(curl_easy_init()) {
  issuers_ = std::filesystem::temp_directory_path() /
             ("quenwick-bench-post-" + std::to_string(getpid()) + ".pem");
  std::ofstream(issuers_) << configuration.additionalTrustAnchors;
  prepare(easy_, request, connectTo_, headers_, answer_);
  curl_easy_setopt(easy_, CURLOPT_CAINFO, issuers_.c_str());
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body_.size()));
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, body_.data());
}

CurlPost::~CurlPost() {
  curl_easy_cleanup(easy_);
  std::filesystem::remove(issuers_);
}

const std::string& CurlPost::send() {
  answer_.clear();
  if (curl_easy_perform(easy_) != CURLE_OK) answer_ = "failed";
  return answer_;
}

}  // namespace quenwick::bench

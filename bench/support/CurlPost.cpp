#include "bench/support/CurlPost.h"

#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "quenwick/platform/Text.h"

namespace quenwick::bench {

CurlPost::CurlPost(const platform::URLSessionConfiguration& configuration,
                   const platform::URLRequest& request)
    : body_(request.httpBody.value_or("")),
      connectTo_(connectToList(configuration)),
      easy_(curl_easy_init()) {
  issuers_ = std::filesystem::temp_directory_path() /
             ("quenwick-bench-post-" + std::to_string(getpid()) + ".pem");
  std::ofstream(issuers_) << configuration.additionalTrustAnchors;
  curl_easy_setopt(easy_, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy_, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  curl_easy_setopt(easy_, CURLOPT_CAINFO, issuers_.c_str());
  curl_easy_setopt(easy_, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(easy_, CURLOPT_CONNECT_TO, connectTo_.get());
  curl_easy_setopt(easy_, CURLOPT_WRITEFUNCTION, &appendBody);
  curl_easy_setopt(easy_, CURLOPT_WRITEDATA, &answer_);
  set(request);
}

CurlPost::~CurlPost() {
  curl_easy_cleanup(easy_);
  std::filesystem::remove(issuers_);
}

void CurlPost::set(const platform::URLRequest& request) {
  curl_easy_setopt(easy_, CURLOPT_URL, request.url->absoluteString().c_str());
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body_.size()));
  curl_easy_setopt(easy_, CURLOPT_POSTFIELDS, body_.data());
  for (const auto& [name, value] : request.headerFields) {
    if (platform::equalsIgnoringCase(name, "Accept-Encoding")) {
      curl_easy_setopt(easy_, CURLOPT_ACCEPT_ENCODING, value.c_str());
      continue;
    }
    auto line = name + (value.empty() ? ";" : ": ") + value;
    headers_.add(line);
  }
  headers_.add("Expect:");
  curl_easy_setopt(easy_, CURLOPT_HTTPHEADER, headers_.get());
}

const std::string& CurlPost::send() {
  answer_.clear();
  if (curl_easy_perform(easy_) != CURLE_OK) answer_ = "failed";
  return answer_;
}

}  // namespace quenwick::bench

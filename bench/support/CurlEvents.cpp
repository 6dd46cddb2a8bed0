#include "bench/support/CurlEvents.h"

namespace quenwick::bench {

CurlEvents::CurlEvents(const platform::URLSessionConfiguration& configuration,
                       const platform::URLRequest& request, std::size_t atOnce)
    : issuers_(configuration.additionalTrustAnchors),
      connectTo_(connectToList(configuration)),
      headers_(headerList(request)),
      multi_(curl_multi_init()),
      posts_(atOnce) {
  curl_multi_setopt(multi_, CURLMOPT_MAX_HOST_CONNECTIONS, 6L);
  curl_multi_setopt(multi_, CURLMOPT_MAXCONNECTS, 64L);
  for (auto& post : posts_) post.easy = made(request, post);
}

CURL* CurlEvents::made(const platform::URLRequest& request, Post& post) {
  auto* easy = curl_easy_init();
  curl_blob issuers{issuers_.data(), issuers_.size(), CURL_BLOB_NOCOPY};
  prepare(easy, request, connectTo_, headers_, post.answer);
  curl_easy_setopt(easy, CURLOPT_CAINFO_BLOB, &issuers);
  curl_easy_setopt(easy, CURLOPT_PRIVATE, &post);
  return easy;
}

CurlEvents::~CurlEvents() {
  for (auto& post : posts_) curl_easy_cleanup(post.easy);
  curl_multi_cleanup(multi_);
}

void CurlEvents::begin(Post& post, const std::string& body) {
  post.answer.clear();
  curl_easy_setopt(post.easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
  curl_easy_setopt(post.easy, CURLOPT_POSTFIELDS, body.data());
  curl_multi_add_handle(multi_, post.easy);
}

bool CurlEvents::ended(const CURLMsg& message, const std::string& answer) {
  auto* easy = message.easy_handle;
  long status = 0;
  Post* post = nullptr;
  curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
  curl_easy_getinfo(easy, CURLINFO_PRIVATE, reinterpret_cast<char**>(&post));
  bool isRight = message.data.result == CURLE_OK && status == 200 && post->answer == answer;
  curl_multi_remove_handle(multi_, easy);
  return isRight;
}

std::size_t CurlEvents::post(const std::vector<std::string>& bodies, const std::string& answer) {
  std::size_t next = 0;
  std::size_t right = 0;
  for (auto& post : posts_) {
    if (next < bodies.size()) begin(post, bodies[next++]);
  }
  for (int running = 1; running > 0;) {
    curl_multi_perform(multi_, &running);
    int left = 0;
    while (auto* message = curl_multi_info_read(multi_, &left)) {
      Post* post = nullptr;
      curl_easy_getinfo(message->easy_handle, CURLINFO_PRIVATE, reinterpret_cast<char**>(&post));
      right += ended(*message, answer) ? 1U : 0U;
      if (next == bodies.size()) continue;
      begin(*post, bodies[next++]);
      running = 1;
    }
    if (running > 0) curl_multi_poll(multi_, nullptr, 0, 1000, nullptr);
  }
  return right;
}

}  // namespace quenwick::bench

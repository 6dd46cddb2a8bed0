#include "bench/support/CurlList.h"

#include "quenwick/platform/Text.h"

namespace quenwick::bench {
namespace {

constexpr auto kEncodings = "Accept-Encoding";

std::size_t append(char* bytes, std::size_t one, std::size_t count, void* text) {
  static_cast<std::string*>(text)->append(bytes, one * count);
  return one * count;
}

}  // namespace

CurlList connectToList(const platform::URLSessionConfiguration& configuration) {
  CurlList list;
  for (const auto& to : configuration.connectTo) {
    list.add(to.host + ":" + std::to_string(to.port) + ":" + to.toAddress + ":" +
             std::to_string(to.toPort));
  }
  return list;
}

CurlList headerList(const platform::URLRequest& request) {
  CurlList list;
  for (const auto& [name, value] : request.headerFields) {
    if (platform::equalsIgnoringCase(name, kEncodings)) continue;
    list.add(name + (value.empty() ? ";" : ": ") + value);
  }
  list.add("Expect:");
  return list;
}

void prepare(CURL* easy, const platform::URLRequest& request, const CurlList& connectTo,
             const CurlList& headers, std::string& answer) {
  curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
  curl_easy_setopt(easy, CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
  curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr);
  curl_easy_setopt(easy, CURLOPT_CONNECT_TO, connectTo.get());
  curl_easy_setopt(easy, CURLOPT_URL, request.url->absoluteString().c_str());
  for (const auto& [name, value] : request.headerFields) {
    if (!platform::equalsIgnoringCase(name, kEncodings)) continue;
    curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, value.c_str());
  }
  curl_easy_setopt(easy, CURLOPT_HTTPHEADER, headers.get());
  curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &append);
  curl_easy_setopt(easy, CURLOPT_WRITEDATA, &answer);
}

}  // namespace quenwick::bench

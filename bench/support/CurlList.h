#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <memory>
#include <string>

#include "quenwick/platform/URLRequest.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick::bench {

/// Texts in curl's form.
class CurlList {
 public:
  void add(const std::string& text) {
    texts_.reset(curl_slist_append(texts_.release(), text.c_str()));
  }
  curl_slist* get() const { return texts_.get(); }

 private:
  struct Free {
    void operator()(curl_slist* texts) const { curl_slist_free_all(texts); }
  };
  std::unique_ptr<curl_slist, Free> texts_;
};

/// Where the session's connections go instead.
CurlList connectToList(const platform::URLSessionConfiguration& configuration);

/// The request's own headers, but for Accept-Encoding, which curl is told by an option.
CurlList headerList(const platform::URLRequest& request);

/// Has the handle send what all of these requests share, over the session's TLS version and
/// connections but without its trust; the body of the answer comes into `answer`. The lists must
/// live as long as the handle.
void prepare(CURL* easy, const platform::URLRequest& request, const CurlList& connectTo,
             const CurlList& headers, std::string& answer);

}  // namespace quenwick::bench

#pragma once

#include <curl/curl.h>

#include <cstddef>
#include <memory>
#include <string>

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

/// Takes a body, into the `std::string` at `text`.
std::size_t appendBody(char* bytes, std::size_t one, std::size_t count, void* text);

}  // namespace quenwick::bench

#pragma once

#include <curl/curl.h>

#include <memory>

namespace quenwick::platform {

struct FreeEasy {
  void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
};
using EasyHandle = std::unique_ptr<CURL, FreeEasy>;

/// A handle with what holds for all loads. For the loading thread alone, as all of them have their
/// TLS sessions in common.
EasyHandle makeEasyHandle();

/// The handle for a transfer after its first: another with the same settings and cookies, where
/// this version of curl is not to be trusted with a handle twice, else itself.
EasyHandle renewed(EasyHandle used);

}  // namespace quenwick::platform

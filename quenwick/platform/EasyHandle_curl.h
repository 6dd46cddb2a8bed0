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

/// Whether this version of curl is to be trusted with a handle for a second transfer, whatever the
/// server answers. Where it is not, one on a connection of HTTP/2 is safe all the same: there the
/// status is kept as a header, which comes before all others.
bool mayBeUsedAgain();

/// Another handle with the same settings and cookies.
EasyHandle renewed(EasyHandle used);

/// Whether the transfer, about to be sent, goes over HTTP/2.
bool isOnHTTP2(CURL* easy);

}  // namespace quenwick::platform

#pragma once

#include "quenwick/platform/Text.h"
#include "quenwick/platform/URL.h"

namespace quenwick::platform {

/// Whether the URL's scheme is http or https.
inline bool hasWebScheme(const URL& url) {
  return equalsIgnoringCase(url.scheme(), "https") || equalsIgnoringCase(url.scheme(), "http");
}

}  // namespace quenwick::platform

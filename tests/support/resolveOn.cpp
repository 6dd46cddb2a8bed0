// Resolves one link after the other and says so: resolve_on HOME CA CONNECT-TO-PORT HOST FIRST LAST
// resolves https://HOST/p/go/<n in hexadecimal> for n from FIRST on, and prints "begin n" and
// "done n" around each. Tests kill it.

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>

#include "quenwick/deeplink/DeeplinkManager.h"
#include "quenwick/deeplink/URLSessionRedirectDelegate.h"
#include "quenwick/platform/HostConfiguration.h"

using namespace quenwick;

int main(int count, char** words) {
  if (count != 7) return 2;
  platform::configureHost({.bundleIdentifier = "com.example.killed", .home = words[1]});
  std::ifstream authority(words[2]);
  platform::URLSessionConfiguration configuration;
  configuration.additionalTrustAnchors = {std::istreambuf_iterator<char>(authority), {}};
  auto port = static_cast<std::uint16_t>(std::atoi(words[3]));
  configuration.connectTo = {{words[4], 443, "127.0.0.1", port}};
  auto session = platform::URLSession::make(configuration, URLSessionRedirectDelegate::shared());
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  for (int n = std::atoi(words[5]); n <= std::atoi(words[6]); ++n) {
    char link[200];
    std::snprintf(link, sizeof link, "https://%s/p/go/%x", words[4], static_cast<unsigned>(n));
    std::printf("begin %d\n", n);
    platform::wait(DeeplinkManager(*platform::URL::parse(link), session).resolve());
    std::printf("done %d\n", n);
  }
}

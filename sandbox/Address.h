#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace quenwick::sandbox {

/// An address, split as far as routing needs it: query and fragment play no part.
struct Address {
  /// In lower case; empty for a path of any host.
  std::string scheme;
  /// In lower case, without user and port; empty for a path of any host.
  std::string host;
  /// Begins with "/", as written but for dot segments, which are removed.
  std::string path;

  /// Whether the servers answer there, and not an app with a scheme of its own.
  bool isServed() const { return scheme.empty() || scheme == "http" || scheme == "https"; }
};

/// "https://host/path", "http://host/path", another scheme, or "/path" for any host. None when the
/// text is nothing of that, or names a host that cannot be one.
std::optional<Address> parseAddress(std::string_view text);

/// Where a redirect target leads from `base`; none if it names a host that cannot be one.
std::optional<Address> resolve(const Address& base, std::string_view target);

/// The host of "Host:Port" in lower case, without the port.
std::string hostOfAuthority(std::string_view authority);

}  // namespace quenwick::sandbox

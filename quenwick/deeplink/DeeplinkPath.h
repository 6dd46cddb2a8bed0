#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "quenwick/platform/URL.h"

namespace quenwick {

/// The shapes of the service's tracking links.
class DeeplinkPath {
 public:
  enum Case : std::uint8_t {
    /// .../p/rp/.../url or .../p/rpm/.../url
    rpLink,
    /// .../p/cp/.../c or .../p/cpm/.../c
    cpLink,
    /// .../p/go/... or .../p/gom/...
    goLinks,
  };

  constexpr DeeplinkPath(Case value) : value_(value) {}
  constexpr operator Case() const { return value_; }

  static const std::array<DeeplinkPath, 3> allCases;

  /// The shape's pattern.
  std::string_view rawValue() const;

  /// The first shape, in the order of `allCases`, that is found anywhere in the link's text, its
  /// query included; none for any other link. From any thread.
  static std::optional<DeeplinkPath> path(const platform::URL& url);

 private:
  Case value_;
};

inline constexpr std::array<DeeplinkPath, 3> DeeplinkPath::allCases = {rpLink, cpLink, goLinks};

}  // namespace quenwick

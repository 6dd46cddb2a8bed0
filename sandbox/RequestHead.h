#pragma once

#include <string_view>
#include <utility>
#include <vector>

namespace quenwick::sandbox {

/// The first line and the headers of a request, as views of the text as it was received: nothing
/// is decoded. Lives no longer than the text.
struct RequestHead {
  explicit RequestHead(std::string_view text);

  /// The first header of a name, in any case; empty if there is none.
  std::string_view header(std::string_view name) const;

  std::string_view method;
  /// The target's path, without the host that a client of a proxy writes before it.
  std::string_view path;
  /// What follows the first "?" of the target.
  std::string_view query;
  std::vector<std::pair<std::string_view, std::string_view>> headers;

 private:
  void readTarget(std::string_view target);
};

}  // namespace quenwick::sandbox

#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "sandbox/Address.h"
#include "sandbox/Answer.h"

namespace quenwick::sandbox {

/// Which answer stands at which host and path.
class Routes {
 public:
  /// Puts an answer at an address. False, and nothing changes, if one stands there already.
  bool add(const Address& address, const Answer& answer);

  /// The answer at a path of a host (in lower case), else the path's answer for any host.
  const Answer* find(std::string_view host, std::string_view path) const;

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };
  template <typename Value>
  using Map = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;

  const Answer* findAt(std::string_view host, std::string_view path) const;

  Map<Map<Answer>> answers_;
};

}  // namespace quenwick::sandbox

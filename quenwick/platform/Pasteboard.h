#pragma once

#include <memory>
#include <optional>
#include <string>

#include "quenwick/platform/Export.h"
#include "quenwick/platform/Task.h"
#include "quenwick/platform/URL.h"

namespace quenwick::platform {

/// What the person copied last. The `has` questions look at what kinds of content are offered and
/// do not read it. Any thread; the tasks end on the pool, and never fail: what cannot be read
/// within a second is none.
class QUENWICK_TOOLKIT_EXPORT Pasteboard {
 public:
  virtual ~Pasteboard() = default;

  virtual Task<bool> hasURLs() = 0;
  virtual Task<bool> hasStrings() = 0;
  /// The first URL offered as such.
  virtual Task<std::optional<URL>> url() = 0;
  virtual Task<std::optional<std::string>> string() = 0;

  /// The one that a window toolkit has set for the process; none without a toolkit.
  static std::shared_ptr<Pasteboard> general();
  static void setGeneral(std::shared_ptr<Pasteboard> pasteboard);
};

}  // namespace quenwick::platform

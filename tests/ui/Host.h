#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quenwick/platform/Value.h"
#include "tests/ui/ChildProcess.h"
#include "tests/ui/Desktop.h"

namespace quenwick::tests {

/// The host program with its window on a display, and what it says of itself.
class Host {
 public:
  /// Returns once its window, "plain" or of "adwaita", is there.
  explicit Host(const std::string& display, const std::string& kind = "plain");

  ChildProcess& program() { return *program_; }
  void tell(const std::string& command) { program_->tell(command + "\n"); }

  /// The first thing it says from now on that has this key, and maybe this value; null where it
  /// does not come. What came before it is kept for `said`.
  platform::Value next(const std::string& key, std::optional<platform::Value> value = std::nullopt);

  /// All that it said with the last thing that was waited for.
  platform::Value latest() const { return said_.empty() ? platform::Value() : said_.back(); }

  /// The values of that key among all that it has said so far, and forgets them.
  std::vector<platform::Value> said(const std::string& key);

  /// The URLs that were opened outside since the last call.
  std::vector<std::string> opened() { return desktop_.opened(); }

 private:
  Desktop desktop_;
  std::unique_ptr<ChildProcess> program_;
  std::vector<platform::Dictionary> said_;
};

}  // namespace quenwick::tests

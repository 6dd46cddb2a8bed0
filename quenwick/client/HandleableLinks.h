#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "quenwick/platform/RegularExpression.h"
#include "quenwick/platform/URL.h"

namespace quenwick {

/// Which links belong to the service: the registered domains, and further patterns by host. From
/// any thread.
class HandleableLinks {
 public:
  using Paths = std::map<std::string, std::vector<std::string>>;

  void insertDomains(const std::vector<std::string>& domains);
  std::set<std::string> domains() const;

  /// A host's list replaces the one that it had. A pattern that does not compile is kept but never
  /// found, with one error line.
  void addPaths(const Paths& paths);
  void removePaths(const std::string& host);
  void clearPaths();
  Paths paths() const;

  /// Whether the link lies with a registered domain and has a tracking shape or one of the host's
  /// patterns.
  bool contains(const platform::URL& url) const;

 private:
  struct Patterns {
    std::vector<std::string> texts;
    std::vector<platform::RegularExpression> compiled;
  };
  static Patterns compile(const std::vector<std::string>& texts);
  bool isFound(const platform::URL& url, std::string_view host) const;

  mutable std::mutex mutex_;
  std::set<std::string, std::less<>> domains_;
  std::map<std::string, std::shared_ptr<const Patterns>, std::less<>> patterns_;
};

}  // namespace quenwick

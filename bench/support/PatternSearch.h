#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace quenwick::bench {

/// PCRE2 alone, looking for patterns in turn: compiled and translated once, the fastest way that
/// it has.
class PatternSearch {
 public:
  explicit PatternSearch(const std::vector<std::string>& patterns);
  ~PatternSearch();

  bool isFound(std::string_view text) const;

 private:
  struct Compiled;
  std::unique_ptr<Compiled> compiled_;
};

}  // namespace quenwick::bench

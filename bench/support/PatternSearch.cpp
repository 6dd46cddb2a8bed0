#include "bench/support/PatternSearch.h"

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <algorithm>

namespace quenwick::bench {
namespace {

PCRE2_SPTR units(std::string_view text) { return reinterpret_cast<PCRE2_SPTR>(text.data()); }

}  // namespace

struct PatternSearch::Compiled {
  std::vector<pcre2_code*> codes;
  pcre2_match_data* data = pcre2_match_data_create(1, nullptr);
};

PatternSearch::PatternSearch(const std::vector<std::string>& patterns)
    : compiled_(std::make_unique<Compiled>()) {
  for (const auto& pattern : patterns) {
    int error = 0;
    std::size_t offset = 0;
    auto* code = pcre2_compile(units(pattern), pattern.size(), PCRE2_UTF | PCRE2_MATCH_INVALID_UTF,
                               &error, &offset, nullptr);
    pcre2_jit_compile(code, PCRE2_JIT_COMPLETE);
    compiled_->codes.push_back(code);
  }
}

PatternSearch::~PatternSearch() {
  for (auto* code : compiled_->codes) pcre2_code_free(code);
  pcre2_match_data_free(compiled_->data);
}

bool PatternSearch::isFound(std::string_view text) const {
  return std::ranges::any_of(compiled_->codes, [&](auto* code) {
    return pcre2_match(code, units(text), text.size(), 0, 0, compiled_->data, nullptr) >= 0;
  });
}

}  // namespace quenwick::bench

#define PCRE2_CODE_UNIT_WIDTH 8
#include <pcre2.h>

#include <array>
#include <map>
#include <mutex>

#include "quenwick/platform/RegularExpression.h"

namespace quenwick::platform {
namespace {

// Steps of backtracking after which a search gives up: some tens of milliseconds.
constexpr std::uint32_t kMatchLimit = 2'000'000;
constexpr std::size_t kCacheCapacity = 1024;

struct Free {
  void operator()(pcre2_code* code) const { pcre2_code_free(code); }
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
  void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};
using MatchData = std::unique_ptr<pcre2_match_data, Free>;

/// Room for one pair of offsets, which is enough to learn whether there is a match.
MatchData makeOffsets() { return MatchData(pcre2_match_data_create(1, nullptr)); }

/// Those that this thread keeps; none after its end, when the last code of a host may still search.
thread_local pcre2_match_data* keptOffsets = nullptr;

void keepOffsets() {
  struct Kept {
    Kept() { keptOffsets = offsets.get(); }
    ~Kept() { keptOffsets = nullptr; }
    MatchData offsets = makeOffsets();
  };
  [[maybe_unused]] static thread_local const Kept kept;
}

/// Of an empty text too, which may lie nowhere.
PCRE2_SPTR units(std::string_view text) {
  return reinterpret_cast<PCRE2_SPTR>(text.empty() ? "" : text.data());
}

pcre2_match_context* limits() {
  static auto* context = [] {
    auto* made = pcre2_match_context_create(nullptr);
    pcre2_set_match_limit(made, kMatchLimit);
    return made;
  }();
  return context;
}

std::string errorText(int code) {
  std::array<PCRE2_UCHAR, 256> text{};
  pcre2_get_error_message(code, text.data(), text.size());
  return reinterpret_cast<const char*>(text.data());
}

}  // namespace

struct RegularExpression::Compiled {
  std::unique_ptr<pcre2_code, Free> code;
  bool isNative = false;  // compiled to instructions of the processor

  int match(std::string_view text, std::size_t from, std::uint32_t options,
            pcre2_match_data* data) const {
    return pcre2_match(code.get(), units(text), text.size(), from, options, data, limits());
  }

  bool isFound(std::string_view text, pcre2_match_data* data) const {
    if (!isNative) return match(text, 0, 0, data) >= 0;
    // The same without the checks before it, which cost a good part of a short search.
    return pcre2_jit_match(code.get(), units(text), text.size(), 0, 0, data, limits()) >= 0;
  }
};

RegularExpression RegularExpression::compile(std::string_view pattern) {
  struct Cache {
    std::mutex mutex;
    std::map<std::string, std::shared_ptr<const Compiled>, std::less<>> compiled;
  };
  static auto& cache = *new Cache;
  std::lock_guard lock(cache.mutex);
  if (auto found = cache.compiled.find(pattern); found != cache.compiled.end()) {
    return RegularExpression(found->second);
  }
  int error = 0;
  std::size_t offset = 0;
  auto made = std::make_shared<Compiled>();
  made->code.reset(pcre2_compile(units(pattern), pattern.size(),
                                 PCRE2_UTF | PCRE2_MATCH_INVALID_UTF | PCRE2_NEVER_BACKSLASH_C,
                                 &error, &offset, nullptr));
  if (!made->code) throw PlatformError("regularExpression", error, errorText(error));
  made->isNative = pcre2_jit_compile(made->code.get(), PCRE2_JIT_COMPLETE) == 0;
  if (cache.compiled.size() >= kCacheCapacity) cache.compiled.clear();
  cache.compiled.emplace(std::string(pattern), made);
  return RegularExpression(std::move(made));
}

bool RegularExpression::isFound(std::string_view text) const {
  if (!keptOffsets) keepOffsets();
  return compiled_->isFound(text, keptOffsets ? keptOffsets : makeOffsets().get());
}

std::vector<std::string> RegularExpression::rangesOfMatches(std::string_view text) const {
  std::vector<std::string> ranges;
  MatchData data(pcre2_match_data_create_from_pattern(compiled_->code.get(), nullptr));
  const auto* offsets = pcre2_get_ovector_pointer(data.get());
  std::size_t from = 0;
  std::uint32_t options = 0;
  while (from <= text.size()) {
    int count = compiled_->match(text, from, options, data.get());
    if (count < 0 && options == 0) break;
    if (count < 0) {  // nothing but the empty match here: one character on
      ++from;
      while (from < text.size() && (static_cast<unsigned char>(text[from]) & 0xc0) == 0x80) ++from;
      options = 0;
      continue;
    }
    for (std::size_t group = 0; group < static_cast<std::size_t>(count); ++group) {
      auto begin = offsets[2 * group];
      if (begin != PCRE2_UNSET)
        ranges.emplace_back(text.substr(begin, offsets[2 * group + 1] - begin));
    }
    from = offsets[1];
    options = offsets[0] == offsets[1] ? PCRE2_NOTEMPTY_ATSTART | PCRE2_ANCHORED : 0;
  }
  return ranges;
}

}  // namespace quenwick::platform

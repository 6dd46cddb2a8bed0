#include "tools/Arguments.h"

#include <algorithm>

namespace quenwick::tools {

Arguments::Arguments(std::span<const std::string> line, const Accepted& accepted) {
  for (std::size_t i = 0; i < line.size(); ++i) {
    const auto& text = line[i];
    if (text == "--") {
      words_.insert(words_.end(), line.begin() + static_cast<std::ptrdiff_t>(i) + 1, line.end());
      return;
    }
    if (!text.starts_with('-')) {
      words_.push_back(text);
      continue;
    }
    auto equals = text.find('=');
    auto name = text.substr(0, equals);
    bool isFlag = std::ranges::find(accepted.flags, name) != accepted.flags.end();
    bool isValued = std::ranges::find(accepted.valued, name) != accepted.valued.end();
    if (isFlag && equals == text.npos) {
      options_.push_back({name, ""});
    } else if (isValued && equals != text.npos) {
      options_.push_back({name, text.substr(equals + 1)});
    } else if (isValued && i + 1 < line.size()) {
      options_.push_back({name, line[++i]});
    } else if (isValued) {
      throw UsageError(name + " needs a value");
    } else {
      throw UsageError("there is no option " + name + " here");  // its value may be a secret
    }
  }
}

const std::string& Arguments::onlyWord(std::string_view meaning) const {
  if (words_.size() == 1) return words_.front();
  throw UsageError(words_.empty() ? std::string(meaning) + " is missing"
                                  : "there is one word too many: " + words_[1]);
}

void Arguments::noWords() const {
  if (!words_.empty()) throw UsageError("there is one word too many: " + words_.front());
}

std::optional<std::string> Arguments::value(std::string_view name) const {
  auto all = values(name);
  return all.empty() ? std::nullopt : std::optional(all.back());
}

std::vector<std::string> Arguments::values(std::string_view name) const {
  std::vector<std::string> found;
  for (const auto& option : options_) {
    if (option.name == name) found.push_back(option.value);
  }
  return found;
}

bool Arguments::has(std::string_view flag) const {
  return std::ranges::find(options_, flag, &Option::name) != options_.end();
}

}  // namespace quenwick::tools

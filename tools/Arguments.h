#pragma once

#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace quenwick::tools {

/// The command line was not understood; the text says why.
struct UsageError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

/// What a command accepts: options with a value and options without.
struct Accepted {
  std::vector<std::string_view> valued;
  std::vector<std::string_view> flags;
};

/// A command line taken apart. Options are written `--name value`, `--name=value` or `--flag`;
/// what else begins with `-` is refused. After `--` everything is a word.
class Arguments {
 public:
  /// Throws `UsageError` for an option that is not accepted or lacks its value.
  Arguments(std::span<const std::string> line, const Accepted& accepted);

  const std::vector<std::string>& words() const { return words_; }

  /// The one word that the command takes; throws `UsageError` where there is not exactly one.
  const std::string& onlyWord(std::string_view meaning) const;

  /// Throws `UsageError` where there is a word.
  void noWords() const;

  /// The option's last value, or none.
  std::optional<std::string> value(std::string_view name) const;
  std::vector<std::string> values(std::string_view name) const;
  bool has(std::string_view flag) const;

 private:
  struct Option {
    std::string name;
    std::string value;
  };
  std::vector<std::string> words_;
  std::vector<Option> options_;
};

}  // namespace quenwick::tools

#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "quenwick/platform/Value.h"

namespace quenwick::tools {

/// Keeps standard output for what the program prints: what the library writes there goes to
/// standard error from now on. Called once, before anything is printed.
void keepStandardOutput();

/// Writes text to standard output.
void print(std::string_view text);

/// Flushes what was printed, the last to be called; false where not all of it could be written.
bool endOutput();

/// Writes the value as one line of JSON.
void printJSON(const platform::Value& value);

/// The text, emphasised or dimmed where standard output is a terminal. Control characters are
/// escaped: what a server sent cannot drive the terminal.
std::string bold(std::string_view text);
std::string dim(std::string_view text);
std::string plain(std::string_view text);

/// The moment in the user's own time.
std::string dateText(double secondsSince1970);

/// The text, or null where there is none.
platform::Value orNull(const std::optional<std::string>& text);

}  // namespace quenwick::tools

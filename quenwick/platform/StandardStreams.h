#pragma once

#include <string_view>

namespace quenwick::platform {

// The standard streams are the host's, and so may a pipe be whose reader has gone: what the library
// writes there raises no signal.

/// Writes the text to standard error in one piece. What cannot be written is lost.
void writeToStandardError(std::string_view text);

/// Prints the text and the end of its line to standard output, behind what the host has printed.
void printLine(std::string_view text);

}  // namespace quenwick::platform

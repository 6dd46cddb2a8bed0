#include "tools/Output.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <ctime>
#include <utility>

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"

namespace quenwick::tools {
namespace {

/// Where the program prints; null where it was started without a standard output.
struct Destination {
  std::FILE* stream = stdout;
  bool isIncomplete = false;
};

Destination& destination() {
  static Destination instance;
  return instance;
}

std::string styled(std::string_view text, std::string_view code) {
  auto* stream = destination().stream;
  static const bool isTerminal = stream && isatty(fileno(stream)) != 0;
  if (!isTerminal) return plain(text);
  return std::string("\033[").append(code).append("m") + plain(text) + "\033[0m";
}

/// The value with texts that JSON can hold: a link from the command line may be any bytes.
platform::Value printable(const platform::Value& value) {
  if (const auto* text = value.as<std::string>()) return platform::madeUTF8(*text);
  if (const auto* list = value.as<platform::List>()) {
    platform::List all;
    for (const auto& element : *list) all.push_back(printable(element));
    return all;
  }
  if (const auto* dictionary = value.as<platform::Dictionary>()) {
    platform::Dictionary all;
    for (const auto& [key, element] : *dictionary) all.set(key, printable(element));
    return all;
  }
  return value;
}

}  // namespace

void keepStandardOutput() {
  int own = ::fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
  destination().stream = own < 0 ? nullptr : ::fdopen(own, "w");
  if (::dup2(STDERR_FILENO, STDOUT_FILENO) >= 0) return;
  int nowhere = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  if (nowhere >= 0) ::dup2(nowhere, STDOUT_FILENO);
}

void print(std::string_view text) {
  auto& [stream, isIncomplete] = destination();
  if (!stream || std::fwrite(text.data(), 1, text.size(), stream) < text.size()) {
    isIncomplete = true;
  }
}

bool endOutput() {
  auto& [stream, isIncomplete] = destination();
  if (stream && std::fclose(std::exchange(stream, nullptr)) != 0) isIncomplete = true;
  return !isIncomplete;
}

void printJSON(const platform::Value& value) {
  print(platform::JSONSerialization::text(printable(value)) + "\n");
}

std::string bold(std::string_view text) { return styled(text, "1"); }
std::string dim(std::string_view text) { return styled(text, "2"); }
std::string plain(std::string_view text) { return platform::escapedControls(text); }

platform::Value orNull(const std::optional<std::string>& text) {
  if (!text) return nullptr;
  return *text;
}

std::string dateText(double secondsSince1970) {
  auto seconds = static_cast<std::time_t>(secondsSince1970);
  std::tm local{};
  std::array<char, 64> text{};
  localtime_r(&seconds, &local);
  return {text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%d %H:%M:%S", &local)};
}

}  // namespace quenwick::tools

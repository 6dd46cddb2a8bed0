#pragma once

#include <filesystem>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>

#include <quenwick/quenwick.h>

namespace shop {

struct UsageError : std::runtime_error {
  using runtime_error::runtime_error;
};

/// What the program is called with.
struct Options {
  bool asksForHelp = false;
  /// The link that opens the shop.
  std::string link;
  /// Where the service is; without ports the production one.
  std::optional<std::string> serviceURL;
  std::string authority;
  std::vector<quenwick::ConnectTo> connectTo;
  /// In place of the one in Info.plist.
  std::optional<std::string> apiKey;
  std::optional<std::filesystem::path> home;
  /// Where a record of what the shop reported is written.
  std::optional<std::filesystem::path> journal;
};

/// Throws a UsageError.
Options parse(std::span<char* const> words);

extern const char* const kUsage;

}  // namespace shop

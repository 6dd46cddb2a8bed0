#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <sstream>

namespace quenwick::tests {
namespace {

/// The headers that are installed, written from the sources' root.
std::set<std::string> installedHeaders() {
  std::istringstream stream(QUENWICK_HEADERS);
  std::set<std::string> headers;
  for (std::string file; std::getline(stream, file, ':');) {
    headers.insert(std::filesystem::relative(file, QUENWICK_SOURCES).string());
  }
  return headers;
}

struct Includes {
  std::set<std::string> own;
  std::set<std::string> others;
};

Includes includesOf(const std::string& header) {
  static const std::regex include(R"(#\s*include\s*(<|")([^>"]+))");
  std::ifstream file(std::filesystem::path(QUENWICK_SOURCES) / header);
  std::string text{std::istreambuf_iterator<char>(file), {}};
  Includes includes;
  for (std::sregex_iterator it(text.begin(), text.end(), include), end; it != end; ++it) {
    ((*it)[1] == "<" ? includes.others : includes.own).insert((*it)[2]);
  }
  return includes;
}

TEST(HeadersTest, InstalledHeadersIncludeEachOtherAndTheStandardLibrary) {
  const auto installed = installedHeaders();
  const std::regex standard("[a-z_]+|std(bool|def|int)\\.h");
  std::set<std::string> included{"quenwick/quenwick.h", "quenwick/runtime/quenwick_c.h"};
  for (const auto& header : installed) {
    auto [own, others] = includesOf(header);
    for (const auto& name : own) EXPECT_TRUE(installed.contains(name)) << header << ": " << name;
    for (const auto& name : others) {
      EXPECT_TRUE(std::regex_match(name, standard) && name != "coroutine")
          << header << ": " << name;
    }
    included.insert(own.begin(), own.end());
  }
  EXPECT_EQ(included, installed) << "a header that hosts cannot reach is not installed";
}

}  // namespace
}  // namespace quenwick::tests

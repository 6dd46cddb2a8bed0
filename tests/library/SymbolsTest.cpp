#include <gtest/gtest.h>

#include <regex>
#include <set>
#include <sstream>

#include "tests/support/Program.h"

namespace quenwick::tests {
namespace {

/// What a tool prints of the library, line by line.
std::vector<std::string> linesOf(std::vector<std::string> command) {
  command.emplace_back(QUENWICK_LIBRARY);
  auto finished = runProgram(command);
  EXPECT_EQ(finished.exitCode, 0) << finished.errors;
  std::istringstream stream(finished.output);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

const std::set<std::string> kFunctionsOfC = {
    "quenwick_configure", "quenwick_flush",    "quenwick_free",   "quenwick_perform",
    "quenwick_selectors", "quenwick_shutdown", "quenwick_version"};

/// Public C++ of an ABI that its names tell, and what is about its types.
const std::regex kPublic(
    R"(((vtable|typeinfo|typeinfo name) for )?quenwick::(platform::)?v0::.*@@QUENWICK_0)");
/// What the window toolkit calls: by name, so that none comes to it unnoticed.
const std::regex kForTheToolkit(
    R"(quenwick::platform::(Application::(shared|setShared)|Pasteboard::(general|setGeneral)|MainActor::(post|setExecutor|setToolkitExecutor)|logPlatformError|lowercased(\[abi:cxx11\])?|pool|postAfter|runWork)\(.*@@QUENWICK_TOOLKIT)");

TEST(SymbolsTest, TheLibraryShowsItsPublicNamesAndNoOthers) {
  std::set<std::string> functionsOfC;
  std::size_t ofCPlusPlus = 0;
  for (const auto& line : linesOf({"nm", "--dynamic", "--defined-only", "--demangle"})) {
    auto name = line.substr(line.find_first_not_of("0123456789abcdef") + 3);
    if (auto plain = name.substr(0, name.find('@')); kFunctionsOfC.contains(plain)) {
      functionsOfC.insert(plain);
    } else if (std::regex_match(name, kPublic)) {
      ++ofCPlusPlus;
    } else {
      EXPECT_TRUE(std::regex_match(name, kForTheToolkit) || name.starts_with("QUENWICK_")) << name;
    }
  }
  EXPECT_EQ(functionsOfC, kFunctionsOfC);
  EXPECT_GT(ofCPlusPlus, 80U);
}

TEST(SymbolsTest, TheLibraryTellsItsABIStaysOnceLoadedAndNeedsNoWindowToolkit) {
  std::string all;
  for (const auto& line : linesOf({"readelf", "--dynamic", "--wide"})) all += line + '\n';
  EXPECT_NE(all.find("[libquenwick.so.0]"), all.npos) << all;
  EXPECT_NE(all.find("NODELETE"), all.npos) << all;
  for (const auto* never : {"libgtk", "libwebkit", "libgdk", "RPATH", "RUNPATH", "TEXTREL"}) {
    EXPECT_EQ(all.find(never), all.npos) << all;
  }
}

}  // namespace
}  // namespace quenwick::tests

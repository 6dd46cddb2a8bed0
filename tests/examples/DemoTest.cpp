// What a newcomer runs first: the demo, as `make demo` runs it.

#include <gtest/gtest.h>

#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {
namespace {

Finished demo(std::vector<std::string> options) {
  options.insert(options.begin(), {"/usr/bin/python3", DEMO, BUILD_FOLDER});
  return runProgram(options);
}

std::size_t count(const std::string& text, const std::string& part) {
  std::size_t found = 0;
  for (auto at = text.find(part); at != text.npos; at = text.find(part, at + 1)) ++found;
  return found;
}

TEST(Demo, AllThatTheShopDoesArrives) {
  auto finished = demo({});
  EXPECT_EQ(finished.exitCode, 0) << finished.output << finished.errors;
  EXPECT_EQ(finished.errors, "");
  EXPECT_EQ(count(finished.output, " ✓\n"), 10U) << finished.output;
  EXPECT_NE(finished.output.find("typed l, la, lac, lace, laces         product_searched  laces"),
            std::string::npos);
  // Also into a file: the program's own lines stand between the script's.
  EXPECT_LT(finished.output.find("A shop, just installed"), finished.output.find("  closes "));
  EXPECT_LT(finished.output.find("  closes "), finished.output.find("What arrived"));
}

TEST(Demo, FailsWhereSomethingDidNotArriveOrWasRefused) {
  struct Case {
    std::vector<std::string> options;
    const char* row;
  };
  for (const auto& [options, row] : {
           Case{{"--lose"}, "  nothing                              ✗\n"},
           Case{{"--api-key", "wrong"}, "  refused: api_key is not known        ✗\n"},
       }) {
    auto finished = demo(options);
    EXPECT_EQ(finished.exitCode, 1) << finished.output << finished.errors;
    EXPECT_EQ(count(finished.output, row), 1U) << finished.output;
  }
}

TEST(Shop, SaysWhyALinkLeadsNowhere) {
  SandboxService service(R"({"answers": [{"at": "https://links.shop.example/p/go/1",
    "status": 410, "body": "This offer\nis over\u001b."}]})");
  auto certificate = service.sandbox().certificateAuthority().string();
  TemporaryDirectory home;
  auto finished =
      runProgram({SHOP, "--authority", certificate, "--home", home.path().string(), "--service",
                  "https://links.shop.example", "--port", std::to_string(service.sandbox().port()),
                  "https://links.shop.example/p/go/1"});
  EXPECT_EQ(finished.exitCode, 1);
  EXPECT_NE(finished.output.find("  nowhere      This offer is over .\n"), std::string::npos)
      << finished.output << finished.errors;

  auto help = runProgram({SHOP, "--help"});
  EXPECT_EQ(help.exitCode, 0);
  EXPECT_TRUE(help.output.starts_with("usage: shop ")) << help.errors;
}

TEST(CoreLibrary, NeedsNoWindowToolkit) {
  for (const auto* file : {SHOP, RUNTIME_LIBRARY}) {
    auto needed = runProgram({"/usr/bin/ldd", file});
    EXPECT_NE(needed.output.find("libcurl"), std::string::npos) << file << needed.errors;
    for (const auto* library : {"gtk", "gdk", "webkit", "libX", "wayland"}) {
      EXPECT_EQ(needed.output.find(library), std::string::npos) << file << '\n' << needed.output;
    }
  }
}

}  // namespace
}  // namespace quenwick::tests

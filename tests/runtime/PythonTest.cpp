#include <set>

#include "tests/runtime/Host.h"
#include "tests/support/Program.h"

namespace quenwick::tests {
namespace {

namespace json = boost::json;

using PythonTest = RuntimeTest;

/// What the script sends.
constexpr auto kSent = R"([
  ["category_viewed", {"id": "7", "title": "Shoes"}],
  ["product_viewed", {"id": "42", "title": "Boots", "price": "89.90", "meta": {}}],
  ["product_added", {"id": "42", "title": "Boots", "price": "89.9",
    "url": "https://shop.example/products/42", "categories": [{"id": "7", "title": "Shoes"}],
    "meta": {"colour": "brown"}}],
  ["product_removed", {"id": "42", "title": "Boots", "price": "89.9",
    "url": "https://shop.example/products/42", "categories": [{"id": "7", "title": "Shoes"}],
    "meta": {"colour": "brown"}}],
  ["order_completed", {"id": "o-1", "revenue": "89.90",
    "products": [{"id": "42", "price": "89.90", "quantity": 1}]}],
  ["newsletter", {"weekly": true}],
  ["identify", "alice"],
  ["product_searched", {"query": "boots"}]
])";

/// An event by its name and what it carries.
json::value outline(const json::value& event) {
  if (event.at("type") == "identify") return {"identify", event.at("user_id")};
  return {event.at("event"), event.at("properties")};
}

TEST_F(PythonTest, TheExampleDrivesAWholeSession) {
  auto finished = runProgram(
      {"/usr/bin/env", "LD_PRELOAD=" SANITIZER_RUNTIME, "ASAN_OPTIONS=detect_leaks=0",
       "/usr/bin/python3", PYTHON_EXAMPLE, "--library", RUNTIME_LIBRARY, "--authority",
       sandbox_.certificateAuthority().string(), "--port", std::to_string(sandbox_.port()),
       "--http-port", std::to_string(sandbox_.httpPort()), "--home", home_.path().string()});
  EXPECT_EQ(finished.errors, "");
  EXPECT_EQ(finished.exitCode, 0);
  EXPECT_EQ(finished.output, std::string("quenwick ") + Library::shared().version() + R"(
handled: True
opened: https://shop.example/products/42?utm_source=mail
stored: https://shop.example/products/42?utm_source=mail
link user: alice
flushed: True
shut down: True
still held: 0
)");
  // They go out on several connections, and arrive in any order.
  std::multiset<std::string> received;
  std::multiset<std::string> sent;
  for (const auto& event : events()) received.insert(json::serialize(outline(event)));
  const auto all = json::parse(kSent);
  for (const auto& each : all.as_array()) sent.insert(json::serialize(each));
  EXPECT_EQ(received, sent);
}

}  // namespace
}  // namespace quenwick::tests

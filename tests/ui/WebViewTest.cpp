#include <gtest/gtest.h>

#include "tests/support/SandboxService.h"
#include "tests/ui/Display.h"
#include "tests/ui/Host.h"

namespace quenwick::tests {
namespace {
TEST(WebView, Smoke) {
  Display display(800, 600);
  SandboxService service(
      R"({"answers":[{"at":"/m","body":"<body style='background:#f00'><script>new Image().src='/ready'</script>hi"}]})");
  Host host(display.name());
  host.tell("message http://127.0.0.1:" + std::to_string(service.sandbox().httpPort()) + "/m?a=b");
  EXPECT_FALSE(host.next("covered").isNull());
  EXPECT_TRUE(
      eventually([&] { return display.colorAt(400, 300) == 0xff0000; }, std::chrono::seconds(20)));
  for (auto& l : service.received()) printf("%s\n", l.c_str());
  printf("%s\n", service.sandbox().requests().c_str());
  display.save("/tmp/w/E.scratch/smoke.png");
  host.tell("close-button");
  auto v = host.next("closeButton");
  display.focusWindow();
  display.pressEscape();
  EXPECT_FALSE(host.next("covered", platform::Value(false)).isNull());
  for (auto& e : host.said("error")) printf("ERR %s\n", e.as<std::string>()->c_str());
}
}  // namespace
}  // namespace quenwick::tests

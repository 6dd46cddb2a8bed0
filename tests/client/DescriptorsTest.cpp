#include <gtest/gtest.h>

#include "tests/support/Keyring.h"
#include "tests/support/Program.h"
#include "tests/support/SandboxService.h"

namespace quenwick::tests {
namespace {

constexpr auto kScenario = R"({
  "links": [{"link": "https://l.example/p/go/1f", "chain": [{"to": "shopapp://product/42"}]}],
  "behavior": {"keys": [{"key": "key"}, {"key": "another"}],
    "service": "https://api.example", "endpoint": "https://events.example/v1/events"}})";

class DescriptorsTest : public testing::TestWithParam<const char*> {};

TEST_P(DescriptorsTest, AHostThatHasNoneLeftForAWhileIsNeitherEndedNorHeldUp) {
  Keyring keyring;
  SessionBus bus(keyring.address());
  SandboxService service(kScenario);
  TemporaryDirectory home;
  auto finished = runProgram({CROWDED_HOST, home.path(), service.sandbox().certificateAuthority(),
                              std::to_string(service.sandbox().port()), service.sandbox().service(),
                              GetParam()});
  EXPECT_EQ(finished.exitCode, 0) << finished.output << finished.errors;
}

INSTANTIATE_TEST_SUITE_P(Both, DescriptorsTest, testing::Values("sealed", "keyring"),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
}  // namespace quenwick::tests

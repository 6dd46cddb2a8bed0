#include <gtest/gtest.h>

#include "tests/tools/BehaviorProgram.h"

namespace quenwick::tests {
namespace {

using platform::Dictionary;
using platform::List;
using platform::Value;

class SendTest : public BehaviorProgram {
 protected:
  Finished send(std::vector<std::string> command, const std::vector<std::string>& more = {}) {
    auto options = more;
    options.emplace_back("--json");
    return run("first-key", std::move(command), options);
  }
  /// The events that the sandbox has acknowledged.
  List events() const {
    auto all = platform::JSONSerialization::parse(service_.sandbox().events());
    return *all.as<Dictionary>()->find("events")->as<List>();
  }
  static std::string lines(const Finished& finished) {
    if (finished.output.empty()) return finished.errors;
    std::string out;
    auto report = json(finished);
    const auto* error = report.find("error");
    if (!error || !error->as<List>()) return "no error: " + finished.output + finished.errors;
    for (const auto& line : *error->as<List>()) out += *line.as<std::string>() + "|";
    return out;
  }
};

TEST_F(SendTest, EveryEventIsAcknowledgedUnderTheNameThatItWasGiven) {
  struct {
    const char* event;
    const char* properties;
  } cases[] = {
      {"product_viewed", R"({"id": 42, "price": 3.5, "meta": {"size": 9007199254740993}})"},
      {"product_added", R"({"id": "a", "title": "Boots"})"},
      {"product_removed", R"({"id": "a"})"},
      {"product_searched", R"({"query": "boots"})"},
      {"category_viewed", R"({"id": "shoes"})"},
      {"order_completed",
       R"({"id": "o1", "revenue": 5, "products": [{"id": "a", "quantity": 2}]})"},
      {"wished for", R"({"anything": [1, null]})"},
  };
  std::size_t count = 0;
  for (const auto& [event, properties] : cases) {
    auto finished = send({"send", event}, {"--properties", properties});
    ASSERT_EQ(finished.exitCode, 0) << event << ": " << lines(finished);
    auto report = json(finished);
    EXPECT_EQ(*report.find("event"), event);
    EXPECT_EQ(*report.find("acknowledged"), true);
    auto arrived = events();
    ASSERT_EQ(arrived.size(), ++count) << event;
    const auto& last = *arrived.back().as<Dictionary>();
    EXPECT_EQ(*last.find("request_id"), *report.find("requestID"));
    EXPECT_EQ(*last.find("body")->as<Dictionary>()->find("event"), event);
  }
  auto identified = send({"identify", "user-7"});
  ASSERT_EQ(identified.exitCode, 0) << lines(identified);
  EXPECT_EQ(*events().back().as<Dictionary>()->find("body")->as<Dictionary>()->find("user_id"),
            "user-7");
}

TEST_F(SendTest, WhatIsNotAcknowledgedEndsInTheLinesThatTheClientLogs) {
  struct {
    std::vector<std::string> command;
    const char* properties;
    const char* fault;
    std::string part;
  } cases[] = {
      {{"send", "product_viewed"},
       "{}",
       "[]",
       "Could not log event - id is missing. Must be either a String or Int."},
      {{"send", "order_completed"},
       R"({"products": []})",
       "[]",
       "Could not log event - at least 1 product must exist."},
      {{"send", "mine"}, "{}", R"(["server-error"])", R"(Could not log event {"type":"custom")"},
      {{"send", "mine"}, "{}", R"(["server-error"])", "|500\n"},
      {{"send", "mine"}, "{}", R"(["malformed"])", "Could not log event {"},
      {{"send", "mine"}, "{}", R"(["unauthorized"])", "Could not log event {"},
  };
  for (const auto& [command, properties, fault, part] : cases) {
    service_.sandbox().setFaults(sandbox::BehaviorPart::events, fault);
    auto finished = send(command, {"--properties", properties});
    EXPECT_EQ(finished.exitCode, 1) << part;
    EXPECT_EQ(*json(finished).find("acknowledged"), false);
    EXPECT_NE(lines(finished).find(part), std::string::npos) << lines(finished);
  }
  service_.sandbox().setFaults(sandbox::BehaviorPart::events, R"(["server-error"])");
  EXPECT_NE(lines(send({"identify", "u"})).find("Could not identify user:"), std::string::npos);
  service_.sandbox().setFaults(sandbox::BehaviorPart::events,
                               R"([{"kind": "slow", "delay": 60000}])");
  EXPECT_EQ(lines(send({"send", "mine"}, {"--timeout", "0.5"})), "no answer within 0.5 s|");
}

TEST_F(SendTest, AFailedHandshakeEndsInAllLinesThatTheClientLogs) {
  const std::string failed = "Behavioral Verification failed: ";
  struct {
    const char* fault;
    std::vector<std::string> starts;  // of each line
  } cases[] = {
      {R"("forbidden")", {failed + "403\n"}},
      {R"("malformed")", {failed}},
      {R"("bad-endpoint")", {failed + "Could not coerce the endpoint into a URL"}},
      {R"({"kind": "cut", "times": 5})",
       {"URLSessionTask failed with error: ", failed + "URLSessionTask failed with error: "}},
  };
  for (const auto& [fault, starts] : cases) {
    service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                                 std::string("[") + fault + "]");
    auto finished = send({"send", "mine"});
    EXPECT_EQ(finished.exitCode, 1) << fault;
    auto report = json(finished);
    EXPECT_EQ(*report.find("event"), "mine");
    EXPECT_EQ(*report.find("acknowledged"), false);
    EXPECT_EQ(report.find("requestID"), nullptr);
    const auto& lines = *report.find("error")->as<List>();
    ASSERT_EQ(lines.size(), starts.size()) << finished.output;
    for (std::size_t i = 0; i < starts.size(); ++i) {
      EXPECT_TRUE(lines[i].as<std::string>()->starts_with(starts[i])) << finished.output;
    }
    home_.clear();
  }
  EXPECT_TRUE(events().empty());
}

TEST_F(SendTest, AHandshakeThatTakesTooLongIsOneLine) {
  service_.sandbox().setFaults(sandbox::BehaviorPart::verification,
                               R"([{"kind": "slow", "delay": 60000}])");
  EXPECT_EQ(lines(send({"identify", "user-7"}, {"--timeout", "0.2"})), "no answer within 0.2 s|");
}

TEST_F(SendTest, APersonIsToldTheOutcomeInWords) {
  auto sent = run("first-key", {"send", "mine"}, {});
  EXPECT_EQ(sent.exitCode, 0);
  auto id = *events().at(0).as<Dictionary>()->find("request_id")->as<std::string>();
  EXPECT_EQ(sent.output, "acknowledged  mine as " + id + "\n");
  auto identified = run("first-key", {"identify", "user-7"}, {});
  EXPECT_TRUE(identified.output.starts_with("acknowledged  identify as ")) << identified.output;

  auto lessened = run("first-key", {"send", "product_viewed"},
                      {"--properties", R"({"id": 1, "categories": [{"title": "Shoes"}]})"});
  EXPECT_TRUE(lessened.output.starts_with("acknowledged  product_viewed as ")) << lessened.output;
  EXPECT_NE(lessened.errors.find("id is missing"), std::string::npos) << lessened.errors;

  auto refused = run("first-key", {"send", "product_viewed"}, {});
  EXPECT_EQ(refused.exitCode, 1);
  EXPECT_EQ(refused.output,
            "not sent  product_viewed\n"
            "  Could not log event - id is missing. Must be either a String or Int.\n");
  service_.sandbox().setFaults(sandbox::BehaviorPart::events, R"(["server-error"])");
  auto failed = run("first-key", {"send", "mine"}, {});
  EXPECT_EQ(failed.exitCode, 1);
  EXPECT_TRUE(failed.output.starts_with("not sent  mine\n  Could not log event {\"type\":"))
      << failed.output;
}

TEST_F(SendTest, BadUsageExitsWithTwoBeforeAnythingIsSent) {
  for (const auto& command : {std::vector<std::string>{"send"},
                              {"send", "mine", "--properties", "[1]"},
                              {"send", "mine", "--properties", "{"},
                              {"identify"},
                              {"identify", "a", "b"}}) {
    EXPECT_EQ(run("first-key", command, {}).exitCode, 2) << testing::PrintToString(command);
  }
  EXPECT_EQ(requests(), 0U);
}

}  // namespace
}  // namespace quenwick::tests

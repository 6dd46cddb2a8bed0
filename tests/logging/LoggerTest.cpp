#include "quenwick/logging/Logger.h"

#include <gtest/gtest.h>

#include "quenwick/platform/System.h"
#include "tests/support/RecordingLog.h"

namespace quenwick {
namespace {

using Lines = std::vector<std::string>;

void logEachCategory() {
  Logger::error(QWLogType::deeplink, "link");
  Logger::log(QWLogType::behaviorEvent, "event");
  Logger::debug(QWLogType::all, "both");
  Logger::log(QWLogType::none, "always");
}

TEST(Logger, WritesWhereTheWholeCategoryIsEnabled) {
  const std::pair<QWLogType, Lines> table[] = {
      {QWLogType::all, {"error: link", "default: event", "debug: both", "default: always"}},
      {QWLogType::deeplink, {"error: link", "default: always"}},
      {QWLogType::behaviorEvent, {"default: event", "default: always"}},
      {QWLogType::none, {"default: always"}},
  };
  EXPECT_EQ(SharedLogger::enabledLogTypes(), QWLogType::all);
  for (const auto& [enabled, lines] : table) {
    auto log = tests::RecordingLog::install();
    SharedLogger::setEnabledLogTypes(enabled);
    logEachCategory();
    EXPECT_EQ(log->lines(), lines) << enabled.rawValue();
  }
}

TEST(Logger, OlderSystemsPrintTheQuotedMessageWhateverItsLevel) {
  auto log = tests::RecordingLog::install();
  platform::setSystemVersion(13);
  testing::internal::CaptureStdout();
  Logger::error(QWLogType::deeplink, "say \"hi\"\nagain");
  Logger::debug(QWLogType::behaviorEvent, "d");
  SharedLogger::setEnabledLogTypes(QWLogType::deeplink);
  Logger::error(QWLogType::behaviorEvent, "not this");
  fflush(stdout);
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "\"Quenwick SDK - say \\\"hi\\\"\\nagain\"\n\"Quenwick SDK - d\"\n");
  EXPECT_TRUE(log->lines().empty());
}

TEST(QWLogType, IsASet) {
  QWLogType set{QWLogType::deeplink, QWLogType::behaviorEvent};
  EXPECT_EQ(set, QWLogType::all);
  EXPECT_EQ(set.rawValue(), 3);
  set.remove(QWLogType::deeplink);
  EXPECT_EQ(set, QWLogType(2));
  EXPECT_TRUE(QWLogType::none.isSubsetOf(set));
  EXPECT_FALSE(set.contains(QWLogType::all));
}

}  // namespace
}  // namespace quenwick

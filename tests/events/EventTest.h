#pragma once

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "quenwick/events/BehaviorEventManager.h"
#include "tests/events/PassingRequester.h"
#include "tests/support/ManualScheduler.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/VerifiedService.h"

namespace quenwick::tests {

/// A manager that is not started yet, a service to start it with, and its log.
class EventTest : public testing::Test {
 protected:
  static constexpr std::chrono::seconds kPatience{300};
  static constexpr auto kNotEnabled = "default: Could not log event - Events are not enabled";

  void start() { manager_->start(service_.endpoint()); }
  /// The same, with a step on the way of every event.
  void startWith(PassingRequester::Step step) {
    auto real = BehavioralEventRepository(service_.endpoint()).api();
    manager_->start(std::make_shared<const BehavioralEventRepository>(
        std::make_shared<PassingRequester>(std::move(real), std::move(step))));
  }
  bool flush() { return manager_->flush(kPatience); }
  std::uint64_t count(EventState state) const { return manager_->counts()[state]; }

  /// What the log holds without what the keychain says of itself.
  std::vector<std::string> lines() const {
    auto lines = log_->lines();
    std::erase_if(lines,
                  [](const auto& line) { return line.find("Secrets are kept") != line.npos; });
    return lines;
  }

  /// Has the manager be held up once it has taken up what it was given before.
  void holdUp() {
    log_->holdAt("is not a finite number");
    manager_->logCustomEvent("late", {{"n", std::nan("")}});
  }

  /// Waits until the manager has taken up all that it was given before.
  void settle() {
    manager_->logCustomEvent("\xff", {});
    ASSERT_TRUE(log_->waitFor("is not UTF-8", ++markers_));
  }

  std::shared_ptr<RecordingLog> log_ = RecordingLog::install();
  VerifiedService service_;
  std::shared_ptr<ManualScheduler> scheduler_ = std::make_shared<ManualScheduler>();
  std::unique_ptr<BehaviorEventManager> manager_ =
      std::make_unique<BehaviorEventManager>(platform::URLSession::make(), scheduler_);

 private:
  std::ptrdiff_t markers_ = 0;
};

}  // namespace quenwick::tests

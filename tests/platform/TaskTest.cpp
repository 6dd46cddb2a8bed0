#include "quenwick/platform/Task.h"

#include <gtest/gtest.h>

#include <semaphore>
#include <thread>

#include "quenwick/platform/Error.h"
#include "quenwick/platform/Publisher.h"
#include "tests/support/RecordingLog.h"

namespace quenwick::platform {
namespace {

Task<int> number(int value) { co_return value; }

Task<int> onPool(int value) {
  co_return co_await suspend<int>([value](Continuation<int> continuation) {
    pool().post([continuation, value] { continuation.resume(value); });
  });
}

Task<int> failing() {
  throw OtherError("broken");
  co_return 0;
}

Task<long> sum(int count) {
  long total = 0;
  for (int i = 0; i < count; ++i) total += co_await number(i) + co_await onPool(0);
  co_return total;
}

Task<long> manyWithoutSuspending(int count) {
  long total = 0;
  for (int i = 0; i < count; ++i) total += co_await number(1);
  co_return total;
}

TEST(Task, YieldsValuesAndExceptionsAcrossThreads) {
  EXPECT_EQ(wait(sum(1000)), 499'500);
  EXPECT_THROW(wait(failing()), OtherError);
}

TEST(Task, AwaitingInALoopDoesNotGrowTheStack) {
  EXPECT_EQ(wait(manyWithoutSuspending(300'000)), 300'000);
}

Task<void> throwing() { co_await failing(); }

TEST(Task, AnExceptionThatLeavesAStartedTaskIsLogged) {
  auto log = tests::RecordingLog::install();
  startTask(throwing()).wait();
  EXPECT_EQ(log->count("error: a task failed: broken"), 1);
}

Task<void> untilStopped(std::stop_token stop, std::shared_ptr<std::binary_semaphore> isWaiting,
                        std::shared_ptr<std::atomic<bool>> isStopped) {
  co_await suspend<void>([stop, isWaiting](Continuation<void> continuation) {
    auto* callback = new std::optional<std::stop_callback<std::function<void()>>>;
    callback->emplace(stop, [continuation, callback] {
      pool().post([callback] { delete callback; });
      continuation.resume();
    });
    isWaiting->release();
  });
  *isStopped = true;
}

TEST(Task, AHandleCancelsWhatHoldsItsToken) {
  auto isWaiting = std::make_shared<std::binary_semaphore>(0);
  auto isStopped = std::make_shared<std::atomic<bool>>(false);
  std::stop_source stop;
  auto handle = startTask(untilStopped(stop.get_token(), isWaiting, isStopped), stop);
  isWaiting->acquire();
  EXPECT_FALSE(handle.waitFor(std::chrono::milliseconds(20)));
  handle.cancel();
  handle.wait();
  EXPECT_TRUE(*isStopped);
}

TEST(CurrentValueSubject, SendsTheCurrentValueAndThenEachNewOne) {
  CurrentValueSubject<int> subject(1);
  std::vector<int> seen;
  Cancellable subscription;
  subscription = subject.publisher().subscribe([&](int value) {
    seen.push_back(value);
    if (value == 3) subscription.cancel();  // from within its own call
  });
  for (int value : {2, 3, 4}) subject.send(value);
  EXPECT_EQ(seen, (std::vector{1, 2, 3}));
  EXPECT_EQ(subject.value(), 4);
}

TEST(CurrentValueSubject, ASubscriberEndsOnTheLastValueWhoeverSendsIt) {
  for (int round = 0; round < 2000; ++round) {
    CurrentValueSubject<int> subject(0);
    std::atomic<int> last = -1;
    std::thread sender([&] { subject.send(1); });
    auto subscription = subject.publisher().subscribe([&](int value) { last = value; });
    sender.join();
    ASSERT_EQ(last, 1);
  }
}

TEST(CurrentValueSubject, OutlivesNothingItsSubscriptionsNeed) {
  auto subject = std::make_unique<CurrentValueSubject<int>>(1);
  auto subscription = subject->publisher().subscribe([](int) {});
  subject.reset();
  subscription.cancel();
}

}  // namespace
}  // namespace quenwick::platform

#include "quenwick/platform/Executor.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <thread>
#include <vector>

#include "quenwick/platform/MainActor.h"
#include "quenwick/platform/SerialThread.h"
#include "tests/support/RecordingLog.h"

namespace quenwick::platform {
namespace {

void waitForAll(Executor& executor) {
  std::promise<void> reached;
  executor.post([&] { reached.set_value(); });
  reached.get_future().wait();
}

TEST(Executor, AStrandRunsItsWorkInOrderAndOneByOne) {
  auto strand = makeStrand();
  std::vector<int> order;  // unguarded on purpose: two at once would be a race
  for (int i = 0; i < 10'000; ++i) strand->post([&order, i] { order.push_back(i); });
  waitForAll(*strand);
  ASSERT_EQ(order.size(), 10'000U);
  EXPECT_TRUE(std::ranges::is_sorted(order));
}

TEST(Executor, WorkThatThrowsTakesNothingWithIt) {
  auto log = tests::RecordingLog::install();
  static auto& thread = *new SerialThread("test-serial");
  for (Executor* executor : {&pool(), static_cast<Executor*>(&thread)}) {
    executor->post([] { throw std::runtime_error("host fault"); });
    waitForAll(*executor);
  }
  waitForAll(*makeStrand());
  EXPECT_GE(log->count("error: an exception escaped posted work: host fault"), 1);
}

TEST(Executor, ADelayedPostComesUnlessCancelled) {
  constexpr std::chrono::milliseconds kDelay(20);
  std::chrono::steady_clock::duration took = kDelay;
  // Where this thread was held up for so long, the post came rightly.
  while (took >= kDelay) {
    auto cancelled = std::make_shared<std::atomic<int>>(0);
    auto begin = std::chrono::steady_clock::now();
    auto never = postAfter(kDelay, pool(), [cancelled] { ++*cancelled; });
    never.cancel();
    took = std::chrono::steady_clock::now() - begin;
    std::promise<void> came;
    auto soon = postAfter(2 * kDelay, pool(), [&] { came.set_value(); });
    came.get_future().wait();
    if (took < kDelay) EXPECT_EQ(*cancelled, 0);
  }
}

TEST(SerialThread, DrainWaitsForWhatWasPostedBeforeAndNoLongerThanAsked) {
  static auto& thread = *new SerialThread("test-serial");
  std::promise<void> release;
  auto released = release.get_future().share();
  std::atomic<bool> isDone = false;
  thread.post([released, &isDone] {
    released.wait();
    isDone = true;
  });
  EXPECT_FALSE(thread.drain(std::chrono::milliseconds(10)));
  release.set_value();
  EXPECT_TRUE(thread.drain(std::chrono::minutes(1)));
  EXPECT_TRUE(isDone);
}

TEST(SerialThread, WhatComesTooLateToRunIsKept) {
  auto& thread = *new SerialThread("test-serial", std::chrono::minutes(1));
  std::promise<void> begin, release;
  auto first = std::make_shared<int>();
  auto late = std::make_shared<int>();
  std::weak_ptr<int> running = first;
  thread.post([first = std::move(first), &begin, released = release.get_future().share()] {
    begin.set_value();
    released.wait();
  });
  thread.post([late] {});
  thread.hurry();
  begin.get_future().wait();
  EXPECT_FALSE(thread.end({}));
  release.set_value();
  while (!running.expired()) std::this_thread::yield();
  for (int i = 0; i < 1000 && late.use_count() == 2; ++i) std::this_thread::yield();
  EXPECT_EQ(late.use_count(), 2) << "a task may wait for it";
}

TEST(MainActor, RunsOnTheExecutorThatTheHostSet) {
  auto strand = makeStrand();
  std::promise<std::thread::id> own;
  MainActor::post([&] { own.set_value(std::this_thread::get_id()); });
  EXPECT_NE(own.get_future().get(), std::this_thread::get_id());

  struct Inline : Executor {
    void post(Work work) override { work(); }
  };
  MainActor::setExecutor(std::make_shared<Inline>());
  std::thread::id hosts;
  MainActor::post([&] { hosts = std::this_thread::get_id(); });
  EXPECT_EQ(hosts, std::this_thread::get_id());
}

}  // namespace
}  // namespace quenwick::platform

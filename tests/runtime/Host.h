#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "sandbox/Sandbox.h"
#include "tests/runtime/Library.h"
#include "tests/support/FileContents.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

/// A main loop as a host has one; it turns on the thread that calls `runUntil`.
class Loop {
 public:
  quenwick_executor executor() { return {.post = post, .context = this, .destroy = destroy}; }

  /// Runs what is posted until it is so; false where that takes a minute.
  bool runUntil(const std::function<bool()>& isSo) {
    auto end = std::chrono::steady_clock::now() + std::chrono::minutes(1);
    while (!isSo()) {
      std::pair<void (*)(void*), void*> next;
      {
        std::unique_lock lock(mutex_);
        if (!changed_.wait_until(lock, end, [this] { return !waiting_.empty(); })) return false;
        next = waiting_.front();
        waiting_.pop_front();
      }
      next.first(next.second);
    }
    return true;
  }

  /// Runs what is left.
  void drain() {
    runUntil([this] {
      std::lock_guard lock(mutex_);
      return waiting_.empty();
    });
  }

  int destroyed() const { return destroyed_; }

 private:
  static void post(void* context, void (*work)(void*), void* argument) {
    auto& self = *static_cast<Loop*>(context);
    std::lock_guard lock(self.mutex_);
    self.waiting_.emplace_back(work, argument);
    self.changed_.notify_all();
  }
  static void destroy(void* context) { ++static_cast<Loop*>(context)->destroyed_; }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::pair<void (*)(void*), void*>> waiting_;
  std::atomic<int> destroyed_ = 0;
};

/// A callback that keeps what it was called with.
class Recorder {
 public:
  /// Called within each call, after it was noted.
  std::function<void()> then = {};

  quenwick_callback callback() { return {.call = call, .context = this, .destroy = destroy}; }

  std::vector<std::string> calls() const {
    std::lock_guard lock(mutex_);
    return calls_;
  }
  std::thread::id thread() const {
    std::lock_guard lock(mutex_);
    return thread_;
  }
  int destroyed() const { return destroyed_; }

 private:
  static void call(void* context, const char* arguments) {
    auto& self = *static_cast<Recorder*>(context);
    EXPECT_EQ(self.destroyed_, 0) << "called after it was let go of: " << arguments;
    {
      std::lock_guard lock(self.mutex_);
      self.calls_.emplace_back(arguments);
      self.thread_ = std::this_thread::get_id();
    }
    if (self.then) self.then();
  }
  static void destroy(void* context) { ++static_cast<Recorder*>(context)->destroyed_; }

  mutable std::mutex mutex_;
  std::vector<std::string> calls_;
  std::thread::id thread_;
  std::atomic<int> destroyed_ = 0;
};

/// A log that keeps what it is given.
class Lines {
 public:
  quenwick_log log() { return {.write = write, .context = this, .destroy = destroy}; }

  bool has(const std::string& part) const {
    std::lock_guard lock(mutex_);
    return all_.find(part) != all_.npos;
  }
  int destroyed() const { return destroyed_; }

 private:
  static void write(void* context, int level, const char* message) {
    auto& self = *static_cast<Lines*>(context);
    std::lock_guard lock(self.mutex_);
    self.all_ += std::to_string(level) + " " + message + "\n";
  }
  static void destroy(void* context) { ++static_cast<Lines*>(context)->destroyed_; }

  mutable std::mutex mutex_;
  std::string all_;
  std::atomic<int> destroyed_ = 0;
};

/// A host beside a running sandbox, configured against it, whose state goes with it.
class RuntimeTest : public testing::Test {
 protected:
  static constexpr auto kStart = "startWithApiKey:deeplinkDomains:launchOptions:result:";

  /// Nothing of the library's may call a host that has gone.
  void TearDown() override {
    EXPECT_TRUE(Library::shared().shutdown(30'000));
    loop_.drain();
    if (!areRefusalsExpected_) {
      EXPECT_EQ(sandbox_.refusals(), R"({"refusals":[]})");
    }
  }

  /// The test hands in what the service refuses.
  void expectRefusals() { areRefusalsExpected_ = true; }

  std::string configuration() {
    auto authority = contents(sandbox_.certificateAuthority());
    boost::json::object json{{"serviceURL", sandbox_.service()},       {"trustAnchors", authority},
                             {"bundleIdentifier", "com.example.shop"}, {"bundleVersion", "2.5.0"},
                             {"home", home_.path().string()},          {"keychain", "sealedFile"}};
    json["connectTo"] = {
        {{"toAddress", "127.0.0.1"}, {"toPort", sandbox_.port()}},
        {{"port", 80}, {"toAddress", "127.0.0.1"}, {"toPort", sandbox_.httpPort()}}};
    return boost::json::serialize(json);
  }

  void configureAgainstSandbox() {
    auto executor = loop_.executor();
    auto log = lines_.log();
    ASSERT_EQ(configure(configuration().c_str(), &executor, &log), "");
  }

  /// Starts, and lets the loop turn until events are enabled.
  void startAndEnableEvents() {
    auto enabled = enabled_.callback();
    ASSERT_EQ(perform("setEventsEnabledHandler:", "[]", &enabled), (Performed{true, "null"}));
    auto opened = opened_.callback();
    ASSERT_EQ(perform(kStart, R"(["demo-key", ["links.shop.example"], null])", &opened),
              (Performed{true, "null"}));
    ASSERT_TRUE(loop_.runUntil([&] { return !enabled_.calls().empty(); }));
  }

  /// The bodies of the events that the sandbox acknowledged.
  boost::json::array events() {
    boost::json::array bodies;
    auto received = boost::json::parse(sandbox_.events());
    for (const auto& event : received.at("events").as_array()) {
      bodies.push_back(event.at("body"));
    }
    return bodies;
  }

  TemporaryDirectory folder_;
  TemporaryDirectory home_;
  sandbox::Sandbox sandbox_{{.state = folder_.path()}};
  Loop loop_;
  Lines lines_;
  Recorder enabled_;
  Recorder opened_;
  bool areRefusalsExpected_ = false;
};

}  // namespace quenwick::tests

#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "quenwick/platform/LogSink.h"

namespace quenwick::tests {

/// A log sink that keeps every entry, as "error: text". It can hold up who writes one.
class RecordingLog : public platform::LogSink {
 public:
  /// Installs a new one for the process.
  static std::shared_ptr<RecordingLog> install() {
    auto log = std::make_shared<RecordingLog>();
    platform::setLogSink(log);
    return log;
  }

  bool isEnabled(platform::LogLevel) const override { return true; }
  void write(const platform::LogEntry& entry) override {
    static constexpr const char* kNames[] = {"debug: ", "default: ", "error: "};
    std::unique_lock lock(mutex_);
    lines_.push_back(kNames[static_cast<int>(entry.level)] + entry.message);
    changed_.notify_all();
    if (heldPart_.empty() || entry.message.find(heldPart_) == entry.message.npos) return;
    isHolding_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return !isHolding_; });
  }

  /// From now on who writes a line that holds the part is held up, once it is kept, until let go.
  void holdAt(std::string part) {
    std::lock_guard lock(mutex_);
    heldPart_ = std::move(part);
  }
  /// Waits until somebody is held up, for half a minute at most; whether that is so.
  bool waitUntilHolding() const {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(30), [this] { return isHolding_; });
  }
  void letGo() {
    std::lock_guard lock(mutex_);
    isHolding_ = false;
    changed_.notify_all();
  }

  std::vector<std::string> lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  std::ptrdiff_t count(const std::string& part) const {
    return std::ranges::count_if(lines(),
                                 [&](const auto& line) { return line.find(part) != line.npos; });
  }

  /// Waits until so many lines hold the part, for half a minute at most; whether they do.
  bool waitFor(const std::string& part, std::ptrdiff_t times = 1) const {
    std::unique_lock lock(mutex_);
    std::size_t seen = 0;
    return changed_.wait_for(lock, std::chrono::seconds(30), [&] {
      for (; seen < lines_.size(); ++seen) times -= lines_[seen].find(part) != std::string::npos;
      return times <= 0;
    });
  }

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<std::string> lines_;
  std::string heldPart_;
  bool isHolding_ = false;
};

}  // namespace quenwick::tests

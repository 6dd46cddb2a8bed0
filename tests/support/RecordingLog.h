#pragma once

#include <algorithm>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "quenwick/platform/LogSink.h"

namespace quenwick::tests {

/// A log sink that keeps every entry, as "error: text".
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
    std::lock_guard lock(mutex_);
    lines_.push_back(kNames[static_cast<int>(entry.level)] + entry.message);
  }

  std::vector<std::string> lines() const {
    std::lock_guard lock(mutex_);
    return lines_;
  }
  std::ptrdiff_t count(const std::string& part) const {
    return std::ranges::count_if(lines(),
                                 [&](const auto& line) { return line.find(part) != line.npos; });
  }

 private:
  mutable std::mutex mutex_;
  std::vector<std::string> lines_;
};

}  // namespace quenwick::tests

#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "quenwick/platform/LogSink.h"

namespace quenwick::tools {

/// Keeps the lines that the library logs, for the program to report, and hands all on to the sink
/// before it where that one is verbose.
class LineRecorder : public platform::LogSink {
 public:
  /// Installs one for the rest of the process.
  static std::shared_ptr<LineRecorder> install();

  std::vector<std::string> lines() const;

  /// Those of them that are errors.
  std::vector<std::string> errors() const;

  /// Writes the errors kept so far where they were not: the program has succeeded in spite of them.
  void passOnErrors();

  bool isEnabled(platform::LogLevel level) const override;
  void write(const platform::LogEntry& entry) override;

 private:
  bool isVerbose() const { return next_->isEnabled(platform::LogLevel::debug); }
  explicit LineRecorder(std::shared_ptr<platform::LogSink> next) : next_(std::move(next)) {}

  const std::shared_ptr<platform::LogSink> next_;
  mutable std::mutex mutex_;
  std::vector<platform::LogEntry> entries_;
};

}  // namespace quenwick::tools

#include "tools/LineRecorder.h"

#include <utility>

#include "quenwick/logging/Logger.h"

namespace quenwick::tools {

std::shared_ptr<LineRecorder> LineRecorder::install() {
  std::shared_ptr<LineRecorder> recorder(new LineRecorder(platform::logSink()));
  platform::setLogSink(recorder);
  SharedLogger::setEnabledLogTypes(QWLogType::all);
  return recorder;
}

std::vector<std::string> LineRecorder::lines() const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> lines;
  lines.reserve(entries_.size());
  for (const auto& entry : entries_) lines.push_back(entry.message);
  return lines;
}

std::vector<std::string> LineRecorder::errors() const {
  std::lock_guard lock(mutex_);
  std::vector<std::string> errors;
  for (const auto& entry : entries_) {
    if (entry.level == platform::LogLevel::error) errors.push_back(entry.message);
  }
  return errors;
}

void LineRecorder::passOnErrors() {
  if (isVerbose()) return;
  std::lock_guard lock(mutex_);
  for (const auto& entry : std::exchange(entries_, {})) {
    if (entry.level == platform::LogLevel::error) next_->write(entry);
  }
}

bool LineRecorder::isEnabled(platform::LogLevel level) const {
  return level >= platform::LogLevel::standard || next_->isEnabled(level);
}

void LineRecorder::write(const platform::LogEntry& entry) {
  if (entry.level >= platform::LogLevel::standard) {
    std::lock_guard lock(mutex_);
    entries_.push_back(entry);
  }
  // A program that is not verbose reports the lines itself.
  if (isVerbose()) next_->write(entry);
}

}  // namespace quenwick::tools

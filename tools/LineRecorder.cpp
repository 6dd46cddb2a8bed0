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
  return lines_;
}

bool LineRecorder::isEnabled(platform::LogLevel level) const {
  return level >= platform::LogLevel::standard || next_->isEnabled(level);
}

void LineRecorder::write(const platform::LogEntry& entry) {
  if (entry.level >= platform::LogLevel::standard) {
    std::lock_guard lock(mutex_);
    lines_.push_back(entry.message);
  }
  // A program that is not verbose reports the lines itself.
  if (next_->isEnabled(platform::LogLevel::debug)) next_->write(entry);
}

}  // namespace quenwick::tools

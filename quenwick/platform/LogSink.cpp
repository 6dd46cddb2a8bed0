#include "quenwick/platform/LogSink.h"

#include <array>
#include <string_view>
#include <utility>

#include "quenwick/platform/Replaceable.h"
#include "quenwick/platform/StandardStreams.h"
#include "quenwick/platform/Text.h"

namespace quenwick::platform {
namespace {

Replaceable<LogSink>& current() {
  static auto& instance = *new Replaceable<LogSink>(std::make_shared<StandardErrorLog>());
  return instance;
}

std::string_view name(LogLevel level) {
  static constexpr std::array<std::string_view, 3> kNames = {"debug", "default", "error"};
  return kNames.at(static_cast<std::size_t>(level));
}

thread_local HeldLog* outermost = nullptr;

}  // namespace

void StandardErrorLog::write(const LogEntry& entry) {
  if (!isEnabled(entry.level)) return;
  std::string line = entry.subsystem + " [" + entry.category + "] ";
  line.append(name(entry.level)).append(": ").append(escapedControls(entry.message)).append("\n");
  writeToStandardError(line);
}

std::shared_ptr<LogSink> logSink() { return current().get(); }

void setLogSink(std::shared_ptr<LogSink> sink) {
  if (!sink) sink = std::make_shared<StandardErrorLog>();
  current().replace(std::move(sink));
}

void writeLog(LogEntry entry) {
  if (outermost) return outermost->entries_.push_back(std::move(entry));
  auto sink = logSink();
  if (sink->isEnabled(entry.level)) sink->write(entry);
}

void logPlatformError(std::string message) { writeLog({LogLevel::error, std::move(message)}); }

HeldLog::HeldLog() {
  if (!outermost) outermost = this;
}

HeldLog::~HeldLog() {
  if (outermost != this) return;
  outermost = nullptr;
  for (auto& entry : entries_) writeLog(std::move(entry));
}

}  // namespace quenwick::platform

#include "quenwick/logging/Logger.h"

#include <atomic>
#include <string>

#include "quenwick/platform/LogSink.h"
#include "quenwick/platform/StandardStreams.h"
#include "quenwick/platform/System.h"
#include "quenwick/platform/Text.h"

namespace quenwick {
namespace {

using platform::LogLevel;

// Systems before this one have no unified log.
constexpr int kUnifiedLogVersion = 14;

std::atomic<int> enabledRawValue = QWLogType::all.rawValue();

void write(LogLevel level, QWLogType category, std::string_view message) {
  if (!SharedLogger::enabledLogTypes().contains(category)) return;
  if (platform::logSink()->isEnabled(level)) platform::writeLog({level, std::string(message)});
}

void print(QWLogType category, std::string_view message) {
  if (!SharedLogger::enabledLogTypes().contains(category)) return;
  platform::printLine(platform::debugQuoted(std::string("Quenwick SDK - ").append(message)));
}

bool hasUnifiedLog() { return platform::systemAtLeast(kUnifiedLogVersion); }

}  // namespace

QWLogType SharedLogger::enabledLogTypes() { return QWLogType(enabledRawValue.load()); }

void SharedLogger::setEnabledLogTypes(QWLogType types) { enabledRawValue = types.rawValue(); }

void Logger::log(QWLogType category, std::string_view message) {
  hasUnifiedLog() ? write(LogLevel::standard, category, message) : print(category, message);
}

void Logger::debug(QWLogType category, std::string_view message) {
  hasUnifiedLog() ? write(LogLevel::debug, category, message) : log(category, message);
}

void Logger::error(QWLogType category, std::string_view message) {
  hasUnifiedLog() ? write(LogLevel::error, category, message) : log(category, message);
}

}  // namespace quenwick

#pragma once

#include <string_view>

#include "quenwick/logging/QWLogType.h"

namespace quenwick {

/// The process-wide settings of the logger.
struct SharedLogger {
  /// The categories that are written; `all` until changed. Any thread, at any time.
  static QWLogType enabledLogTypes();
  static void setEnabledLogTypes(QWLogType types);
};

/// Writes messages to the log whose whole category is enabled. From any thread; never fails.
struct Logger {
  Logger() = delete;

  static void log(QWLogType category, std::string_view message);
  static void debug(QWLogType category, std::string_view message);
  static void error(QWLogType category, std::string_view message);
};

}  // namespace quenwick

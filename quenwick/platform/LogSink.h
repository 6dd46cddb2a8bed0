#pragma once

#include <memory>
#include <string>
#include <vector>

#include "quenwick/platform/Export.h"
#include "quenwick/platform/LogLevel.h"

namespace quenwick::platform {

/// One line of the log.
struct LogEntry {
  LogLevel level = LogLevel::standard;
  std::string message;
  std::string subsystem = "com.quenwick.sdk";
  std::string category = "QW SDK";
};

/// Where log entries go. Called from any thread, several at once; must not throw.
class LogSink {
 public:
  virtual ~LogSink() = default;
  /// Whether entries of that level are written; asked before their text is made.
  virtual bool isEnabled(LogLevel level) const = 0;
  /// Writes the entry, or posts it: who logs waits for this.
  virtual void write(const LogEntry& entry) = 0;
};

/// Writes each entry to standard error as one line, "com.quenwick.sdk [QW SDK] error: text", in
/// one piece. Control characters of the text are written escaped, so that what a server answered
/// can neither forge a line nor drive a terminal.
class StandardErrorLog : public LogSink {
 public:
  /// Entries below `lowest` are not written.
  explicit StandardErrorLog(LogLevel lowest = LogLevel::standard) : lowest_(lowest) {}
  bool isEnabled(LogLevel level) const override { return level >= lowest_; }
  void write(const LogEntry& entry) override;

 private:
  LogLevel lowest_;
};

/// The sink in use: standard error without debug entries until another is set.
std::shared_ptr<LogSink> logSink();

/// Sets the sink for the whole process; none restores the default.
void setLogSink(std::shared_ptr<LogSink> sink);

/// Writes the entry to the sink in use, unless that leaves out its level.
void writeLog(LogEntry entry);

/// Writes one error line about the platform itself (a damaged file, a full disk).
QUENWICK_TOOLKIT_EXPORT void logPlatformError(std::string message);

/// While one lives, what this thread logs is held back; it is written when the outermost one ends.
/// Stands before a static that logs while it is made: whom a sink calls may well use that static.
class HeldLog {
 public:
  HeldLog();
  ~HeldLog();
  HeldLog(const HeldLog&) = delete;
  HeldLog& operator=(const HeldLog&) = delete;

 private:
  friend void writeLog(LogEntry entry);

  std::vector<LogEntry> entries_;
};

}  // namespace quenwick::platform

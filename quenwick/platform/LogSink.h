#pragma once

#include <memory>
#include <string>

namespace quenwick::platform {

/// How much a line matters. Lines of `debug` are written nowhere unless a log hook takes them.
enum class LogLevel { debug, standard, error };

/// One line of the log.
struct LogEntry {
  /// How much it matters.
  LogLevel level = LogLevel::standard;
  /// Its text, UTF-8.
  std::string message;
  /// Who writes it: the library.
  std::string subsystem = "com.quenwick.sdk";
  /// What part of the library that is.
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
  /// Whether the level is at least `lowest`.
  bool isEnabled(LogLevel level) const override { return level >= lowest_; }
  /// One line, in one piece.
  void write(const LogEntry& entry) override;

 private:
  LogLevel lowest_;
};

/// The sink in use: standard error without debug entries until another is set.
std::shared_ptr<LogSink> logSink();

/// Sets the sink for the whole process; none restores the default.
void setLogSink(std::shared_ptr<LogSink> sink);

/// Writes one error line about the platform itself (a damaged file, a full disk).
void logPlatformError(std::string message);

}  // namespace quenwick::platform

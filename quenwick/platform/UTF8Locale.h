#pragma once

namespace quenwick::platform {

/// While it lives, what asks the C library on this thread reads texts as UTF-8, whatever locale the
/// host has set; where the system has no such locale nothing changes. No call of the host's may be
/// made meanwhile.
class UTF8Locale {
 public:
  UTF8Locale();
  ~UTF8Locale();
  UTF8Locale(const UTF8Locale&) = delete;
  UTF8Locale& operator=(const UTF8Locale&) = delete;

 private:
  void* before_;
};

}  // namespace quenwick::platform

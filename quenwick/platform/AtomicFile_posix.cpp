#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "quenwick/platform/AtomicFile.h"
#include "quenwick/platform/Error.h"

namespace quenwick::platform {
namespace {

[[noreturn]] void fail(int code) {
  throw PlatformError(std::string(kPOSIXErrorDomain), code,
                      "The file could not be written: " + std::generic_category().message(code));
}

/// A file beside the one that it is to become; it goes unless it has become that.
class Draft {
 public:
  explicit Draft(const std::filesystem::path& file)
      : name_(file.string() + ".XXXXXX"), descriptor_(::mkostemp(name_.data(), O_CLOEXEC)) {
    if (descriptor_ < 0) fail(errno);
  }
  ~Draft() {
    ::close(descriptor_);
    if (!name_.empty()) ::unlink(name_.c_str());
  }
  Draft(const Draft&) = delete;
  Draft& operator=(const Draft&) = delete;

  void write(std::string_view bytes) {
    while (!bytes.empty()) {
      auto count = ::write(descriptor_, bytes.data(), bytes.size());
      if (count < 0 && errno != EINTR) fail(errno);
      if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
    }
  }

  void become(const std::filesystem::path& file) {
    if (::fsync(descriptor_) != 0 || std::rename(name_.c_str(), file.c_str()) != 0) fail(errno);
    name_.clear();
  }

 private:
  std::string name_;
  int descriptor_;
};

}  // namespace

void writeAtomically(const std::filesystem::path& file, std::string_view bytes) {
  Draft draft(file);
  draft.write(bytes);
  draft.become(file);
}

}  // namespace quenwick::platform

#include "quenwick/platform/Draft_posix.h"

#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include "quenwick/platform/Error.h"

namespace quenwick::platform {

void throwErrorOf(const std::filesystem::path& file) {
  int code = errno;
  throw PlatformError(std::string(kPOSIXErrorDomain), code,
                      file.filename().string() + ": " + std::generic_category().message(code));
}

Draft::Draft(std::filesystem::path file)
    : file_(std::move(file)),
      name_(file_.string() + ".new-XXXXXX"),
      descriptor_(::mkostemp(name_.data(), O_CLOEXEC)) {
  if (descriptor_ < 0) throwErrorOf(file_);
}

Draft::~Draft() {
  ::close(descriptor_);
  if (!name_.empty()) ::unlink(name_.c_str());
}

void Draft::write(std::string_view bytes) {
  while (!bytes.empty()) {
    auto count = ::write(descriptor_, bytes.data(), bytes.size());
    if (count < 0 && errno != EINTR) throwErrorOf(file_);
    if (count > 0) bytes.remove_prefix(static_cast<std::size_t>(count));
  }
}

void Draft::sync() const {
  if (::fsync(descriptor_) != 0) throwErrorOf(file_);
}

void Draft::become() {
  sync();
  if (std::rename(name_.c_str(), file_.c_str()) != 0) throwErrorOf(file_);
  name_.clear();
}

void Draft::becomeUnlessThere() {
  sync();
  if (::renameat2(AT_FDCWD, name_.c_str(), AT_FDCWD, file_.c_str(), RENAME_NOREPLACE) == 0) {
    return name_.clear();
  }
  // Where a file system knows no rename of that kind, by a second link: the first one goes.
  if ((errno == EINVAL || errno == ENOSYS) && ::link(name_.c_str(), file_.c_str()) == 0) return;
  if (errno != EEXIST) throwErrorOf(file_);
}

}  // namespace quenwick::platform

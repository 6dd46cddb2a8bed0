#include <sys/eventfd.h>
#include <unistd.h>

#include "quenwick/platform/WakeUp.h"

namespace quenwick::platform {

WakeUp::WakeUp() : descriptor_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

WakeUp::~WakeUp() {
  if (descriptor_ >= 0) close(descriptor_);
}

// It can fail only where it has been woken so often that it need not be.
void WakeUp::wake() const {
  if (descriptor_ >= 0) eventfd_write(descriptor_, 1);
}

void WakeUp::clear() const {
  eventfd_t times = 0;
  if (descriptor_ >= 0) eventfd_read(descriptor_, &times);
}

}  // namespace quenwick::platform

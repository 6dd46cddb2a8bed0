#include "quenwick/platform/Clock.h"

namespace quenwick::platform {
namespace {

class SystemClock : public Clock {
 public:
  Date now() const override {
    return std::chrono::time_point_cast<Date::duration>(std::chrono::system_clock::now());
  }
};

}  // namespace

std::shared_ptr<const Clock> Clock::system() {
  static const auto& instance = *new std::shared_ptr<const Clock>(new SystemClock);
  return instance;
}

}  // namespace quenwick::platform

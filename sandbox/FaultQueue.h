#pragma once

#include <boost/json/object.hpp>
#include <deque>
#include <mutex>
#include <optional>
#include <vector>

#include "sandbox/Fault.h"

namespace quenwick::sandbox {

/// The faults that wait to be answered, one after another.
class FaultQueue {
 public:
  void replace(std::vector<Fault> faults);

  /// The fault that the next right request gets, if any, counted off.
  std::optional<Fault> next();

  /// {"answered": how many requests got a fault, "waiting": [faults, "times" as they are left]}
  boost::json::object json() const;

 private:
  mutable std::mutex mutex_;
  std::deque<Fault> waiting_;
  std::uint64_t answered_ = 0;
};

}  // namespace quenwick::sandbox

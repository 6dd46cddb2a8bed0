#include "sandbox/FaultQueue.h"

#include <boost/json.hpp>

namespace quenwick::sandbox {

void FaultQueue::replace(std::vector<Fault> faults) {
  const std::lock_guard lock(mutex_);
  waiting_.assign(std::make_move_iterator(faults.begin()), std::make_move_iterator(faults.end()));
}

std::optional<Fault> FaultQueue::next() {
  const std::lock_guard lock(mutex_);
  if (waiting_.empty()) return std::nullopt;
  ++answered_;
  Fault fault = waiting_.front();
  if (fault.times == 1) {
    waiting_.pop_front();
  } else if (fault.times > 1) {
    waiting_.front().times -= 1;
  }
  return fault;
}

boost::json::object FaultQueue::json() const {
  const std::lock_guard lock(mutex_);
  boost::json::array waiting;
  for (const Fault& fault : waiting_) {
    boost::json::object text = fault.text;
    if (fault.times > 0) text["times"] = fault.times;
    waiting.emplace_back(std::move(text));
  }
  return {{"answered", answered_}, {"waiting", std::move(waiting)}};
}

}  // namespace quenwick::sandbox

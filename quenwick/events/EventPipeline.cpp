#include "quenwick/events/EventPipeline.h"

#include <exception>

#include "quenwick/API/Models/RecordCoding.h"
#include "quenwick/events/EventOutcome.h"
#include "quenwick/platform/Executor.h"
#include "quenwick/platform/Task.h"
#include "quenwick/platform/URLSession.h"

namespace quenwick {
namespace {

/// How many steps are taken before ended sends are looked at again.
constexpr std::size_t kStepsPerTurn = 64;
/// Some beyond those on the wire, which the loading thread goes on with when answers come, while
/// the next ones are still being made.
constexpr std::size_t kMostInFlight = platform::URLSession::kMostAtOnce + 16;
/// Once all places are taken: how many are free before the next sends begin.
constexpr std::size_t kFreeBeforeNext = 4;

}  // namespace

EventPipeline::Repository EventPipeline::repository() const {
  std::lock_guard lock(mutex_);
  return repository_;
}

void EventPipeline::setRepository(Repository repository) {
  {
    std::lock_guard lock(mutex_);
    std::swap(repository_, repository);
  }
  isEnabled_ = true;
}

void EventPipeline::settle(std::size_t bytes, EventState state) {
  waitingBytes_ -= bytes;
  ledger_.move(EventState::waiting, state);
}

void EventPipeline::tellUnsound(const std::exception_ptr& exception) {
  refuseEvent(platform::errorFrom(exception)->localizedDescription());
}

/// Whether there is room for an event; where there is none it is dropped, which a line will say.
/// One that all the room there is would not do for is refused, in its turn.
bool EventPipeline::admit(std::size_t bytes) {
  auto waiting = waitingBytes_.load();
  while (bytes <= kMostWaiting - waiting) {
    if (!waitingBytes_.compare_exchange_weak(waiting, waiting + bytes)) continue;
    ledger_.offer(EventState::waiting);
    return true;
  }
  bytes > kMostWaiting ? refuseTooLarge() : drop();
  return false;
}

void EventPipeline::refuseTooLarge() {
  ledger_.offer(EventState::waiting);
  post([](EventPipeline& self) {
    refuseEvent(kTooLarge);
    self.settle(0, EventState::refusedUnsound);
  });
}

void EventPipeline::drop() {
  ledger_.offer(EventState::droppedOverflow);
  noteDrop();
}

/// Has a line written, in its turn. Drops in a row share a step: they take no memory.
void EventPipeline::noteDrop() {
  bool isFirst = false;
  {
    std::lock_guard lock(mutex_);
    if (lastDrops_) {
      ++lastDrops_->count;
      return;
    }
    auto drops = std::make_unique<TellDrops>();
    lastDrops_ = drops.get();
    steps_.push_back(std::move(drops));
    isFirst = !std::exchange(isRunning_, true);
  }
  if (isFirst) runSoon();
}

void EventPipeline::TellDrops::run(EventPipeline&) {
  for (; count > 0; --count) refuseEvent("too many events are waiting");
}

void EventPipeline::push(std::unique_ptr<Step> step) {
  bool isFirst = false;
  {
    std::lock_guard lock(mutex_);
    steps_.push_back(std::move(step));
    lastDrops_ = nullptr;
    isFirst = !std::exchange(isRunning_, true);
  }
  if (isFirst) runSoon();
}

void EventPipeline::end(Ended ended) {
  {
    std::lock_guard lock(mutex_);
    ended_.push_back(std::move(ended));
    if (std::exchange(isRunning_, true)) return;
  }
  run();  // this is the pool
}

void EventPipeline::runSoon() {
  platform::pool().post([self = shared_from_this()] { self->run(); });
}

void EventPipeline::run() {
  finishEnded();
  startSends();
  takeSteps();
  startSends();
  if (hasMore()) runSoon();
}

bool EventPipeline::hasMore() {
  std::lock_guard lock(mutex_);
  return isRunning_ = position_ < taken_.size() || !steps_.empty() || !ended_.empty();
}

void EventPipeline::finishEnded() {
  {
    std::lock_guard lock(mutex_);
    finishing_.swap(ended_);
  }
  for (const auto& [payload, error, credential] : finishing_) {
    --inFlight_;
    bool isIdentification = payload.kind == Kind::identification;
    isIdentification ? tellIdentification(error.get(), credential)
                     : tellEvent(payload.content, error.get(), credential);
    // Last, so that who waits for the end of all events finds their lines written.
    ledger_.move(EventState::inFlight, stateAfter(error.get()));
  }
  finishing_.clear();
}

void EventPipeline::takeSteps() {
  if (position_ == taken_.size()) {
    taken_.clear();
    position_ = 0;
    std::lock_guard lock(mutex_);
    taken_.swap(steps_);
    lastDrops_ = nullptr;
  }
  for (std::size_t i = 0; i < kStepsPerTurn && position_ < taken_.size(); ++i) {
    auto step = std::move(taken_[position_++]);
    step->run(*this);
  }
}

/// Once all places are taken, some of them must be free again before sends begin: they leave
/// in company, which costs the loading thread less.
void EventPipeline::startSends() {
  if (end_.stop_requested()) return dropWaiting();
  if (isFull_ && inFlight_ > kMostInFlight - kFreeBeforeNext) return;
  auto repository = this->repository();
  if (!repository) return;
  platform::LoadsTogether together;
  for (; inFlight_ < kMostInFlight && !waiting_.empty(); waiting_.pop_front()) {
    auto payload = std::move(waiting_.front());
    waitingBytes_ -= payload.bytes;
    ++inFlight_;
    ledger_.move(EventState::waiting, EventState::inFlight);
    platform::spawn(send(shared_from_this(), repository, std::move(payload)));
  }
  isFull_ = inFlight_ == kMostInFlight;
}

void EventPipeline::dropWaiting() {
  for (const auto& payload : waiting_) settle(payload.bytes, EventState::droppedAtEnd);
  waiting_.clear();
}

platform::Task<void> EventPipeline::send(std::shared_ptr<EventPipeline> self, Repository repository,
                                         Payload payload) {
  auto credential = currentCredential();
  platform::ErrorPointer error;
  try {
    if (payload.kind == Kind::identification) {
      co_await repository->identifyUser(payload.content);
    } else {
      co_await repository->sendEvent(payload.content);
    }
  } catch (...) {
    error = platform::errorFrom(std::current_exception());
  }
  self->end({std::move(payload), std::move(error), std::move(credential)});
}

}  // namespace quenwick

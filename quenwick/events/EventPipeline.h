#pragma once

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "quenwick/API/Repository/BehavioralEventRepository.h"
#include "quenwick/events/EventLedger.h"
#include "quenwick/platform/Error.h"

namespace quenwick {

/// The way of events from the host's call to the service. What is handed in is taken up on the
/// pool in the order in which it came, one at a time: payloads are built there, sends begin there,
/// and lines are written there. Work that was taken keeps the pipeline alive until it has ended.
/// Once it is asked to stop no send begins any more: what waits is dropped.
class EventPipeline : public std::enable_shared_from_this<EventPipeline> {
 public:
  /// How much memory what waits may take, about.
  static constexpr std::size_t kMostWaiting = 128UL << 20;

  using Repository = std::shared_ptr<const BehavioralEventRepository>;
  enum class Kind { event, identification };

  /// A payload that waits for its turn.
  struct Payload {
    Kind kind = Kind::event;
    platform::Dictionary content = {};
    std::size_t bytes = 0;
  };

  explicit EventPipeline(std::stop_token end) : end_(std::move(end)) {}

  bool isEnabled() const { return isEnabled_; }
  Repository repository() const;
  /// From now on sends go there.
  void setRepository(Repository repository);

  EventLedger& ledger() { return ledger_; }

  /// Offers an event that takes about as many bytes. Where there is room for it, `make` is called
  /// later for its payload; none stands for an event that was refused, with its line.
  template <class Make>
  void offer(Kind kind, std::size_t bytes, Make make) {
    offerStep(bytes, [kind, make = std::move(make)](EventPipeline& self, std::size_t all) mutable {
      auto payload = made(make);
      if (!payload) return self.settle(all, EventState::refusedUnsound);
      self.enqueue({kind, *std::move(payload), all});
    });
  }

  /// The same for an event that needs more than its payload: `run` is called later, with this and
  /// the bytes that are held for the event, and settles or enqueues it.
  template <class Run>
  void offerStep(std::size_t bytes, Run run) {
    auto all = bytes + sizeof(Run) + kOverhead;
    if (!admit(all)) return;
    post([all, run = std::move(run)](EventPipeline& self) mutable {
      if (self.end_.stop_requested()) return self.settle(all, EventState::droppedAtEnd);
      run(self, all);
    });
  }

  /// Runs `run` with this, after what was handed in before.
  template <class Run>
  void post(Run run) {
    push(std::make_unique<StepOf<Run>>(std::move(run)));
  }

  // Within steps alone.

  void enqueue(Payload payload) { waiting_.push_back(std::move(payload)); }
  /// Ends an event that was waiting.
  void settle(std::size_t bytes, EventState state);

  /// What `make` gives; where it throws, none, with a line that says so.
  template <class Make>
  static auto made(Make& make) -> decltype(make()) {
    try {
      return make();
    } catch (...) {
      tellUnsound(std::current_exception());
      return std::nullopt;
    }
  }

 private:
  static constexpr std::size_t kOverhead = 512;

  struct Step {
    virtual ~Step() = default;
    virtual void run(EventPipeline& self) = 0;
  };
  template <class Run>
  struct StepOf : Step {
    explicit StepOf(Run toRun) : action(std::move(toRun)) {}
    void run(EventPipeline& self) override { action(self); }
    Run action;
  };
  struct TellDrops : Step {
    void run(EventPipeline& self) override;
    std::size_t count = 1;
  };
  struct Ended {
    Payload payload;
    platform::ErrorPointer error;
    std::string credential;
  };

  static void tellUnsound(const std::exception_ptr& exception);
  static platform::Task<void> send(std::shared_ptr<EventPipeline> self, Repository repository,
                                   Payload payload);

  bool admit(std::size_t bytes);
  void refuseTooLarge();
  void drop();
  void push(std::unique_ptr<Step> step);
  void noteDrop();
  void end(Ended ended);
  void runSoon();
  void run();
  bool hasMore();
  void finishEnded();
  void takeSteps();
  void startSends();
  void dropWaiting();

  const std::stop_token end_;
  EventLedger ledger_;
  std::atomic<bool> isEnabled_ = false;
  std::atomic<std::size_t> waitingBytes_ = 0;

  mutable std::mutex mutex_;
  Repository repository_;
  std::vector<std::unique_ptr<Step>> steps_;
  TellDrops* lastDrops_ = nullptr;  // the last of the steps, if it is of that kind
  std::vector<Ended> ended_;
  bool isRunning_ = false;

  // Touched by `run` alone, which runs once at a time.
  std::vector<Ended> finishing_;
  std::vector<std::unique_ptr<Step>> taken_;
  std::size_t position_ = 0;
  std::deque<Payload> waiting_;
  std::size_t inFlight_ = 0;
  bool isFull_ = false;
};

}  // namespace quenwick

#pragma once

#include <atomic>
#include <optional>
#include <string>
#include <string_view>

#include "sandbox/BehaviorTerms.h"
#include "sandbox/Credentials.h"
#include "sandbox/FaultQueue.h"
#include "sandbox/Journal.h"

namespace quenwick::sandbox {

struct Refusal;
struct Request;
struct RequestHead;
class JSONNode;

/// The verification handshake and the endpoint of events: judges what they are sent, answers, and
/// keeps events and refusals. Used by all connections at once.
class Behavior {
 public:
  /// `secret` is what credentials are derived from.
  Behavior(BehaviorTerms terms, std::string_view secret);

  /// The answer to a request; none if it is for neither of the two.
  std::optional<Answer> answer(const Request& request, const RequestHead& head);

  /// Replaces the faults of a part by those of a JSON text. Throws a `JSONError`.
  void setFaults(BehaviorPart part, std::string_view text);

  /// The faults of both parts as JSON, with those left and how many were answered.
  std::string faults() const;

  Journal& journal() { return journal_; }
  const Journal& journal() const { return journal_; }

 private:
  std::optional<BehaviorPart> partOf(const RequestHead& head) const;
  Answer refuse(BehaviorPart part, const Refusal& refusal, const Request& request);
  Answer verify(const Request& request, const RequestHead& head);
  void judgeKey(const JSONNode& body) const;
  Answer acknowledge(const Request& request, const RequestHead& head);

  const BehaviorTerms terms_;
  const Credentials credentials_;
  std::map<BehaviorPart, FaultQueue> faults_;
  Journal journal_;
  const std::string requestIDPrefix_;
  std::atomic<std::uint64_t> requestCount_ = 0;
};

}  // namespace quenwick::sandbox

#include "sandbox/Journal.h"

#include <boost/json.hpp>

#include "sandbox/Refusal.h"
#include "sandbox/Text.h"

namespace json = boost::json;

namespace quenwick::sandbox {
namespace {

double secondsOf(Journal::Time time) {
  return std::chrono::duration<double>(time.time_since_epoch()).count();
}

void add(BoundedLog<std::string>& log, std::string entry) {
  const std::size_t bytes = sizeof(std::string) + entry.size();
  log.add(std::make_shared<const std::string>(std::move(entry)), bytes);
}

}  // namespace

void Journal::addEvent(const std::string& body, const std::string& requestID, Time receivedAt) {
  const json::object entry{{"request_id", requestID}, {"receivedAt", secondsOf(receivedAt)}};
  std::string text = json::serialize(entry);
  text.pop_back();
  add(events_, text + R"(,"body":)" + body + "}");
}

void Journal::addRefusal(BehaviorPart part, const Refusal& refusal, const std::string& body,
                         Time receivedAt) {
  const json::object entry{{"of", nameOf(part)},
                           {"status", refusal.status},
                           {"field", utf8Text(refusal.field)},
                           {"reason", utf8Text(refusal.reason)},
                           {"receivedAt", secondsOf(receivedAt)},
                           {"body", utf8Text(body)}};
  add(refusals_, json::serialize(entry));
}

void Journal::forget() {
  events_.forget();
  refusals_.forget();
}

std::string Journal::events() const { return listOf("events", events_); }

std::string Journal::refusals() const { return listOf("refusals", refusals_); }

std::string Journal::listOf(const char* name, const BoundedLog<std::string>& log) {
  const auto entries = log.entries();
  std::string text = R"({")" + std::string(name) + R"(":[)";
  for (const auto& entry : entries) {
    if (entry != entries.front()) text += ',';
    text += *entry;
  }
  return text + "]}";
}

}  // namespace quenwick::sandbox

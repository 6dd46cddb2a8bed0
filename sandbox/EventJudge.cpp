#include "sandbox/EventJudge.h"

#include "sandbox/JSONNode.h"
#include "sandbox/PropertyJudge.h"
#include "sandbox/TimeZoneName.h"

namespace quenwick::sandbox {
namespace {

void judgeTimestamp(const JSONNode& node, const TimestampWindow& window) {
  using std::chrono::milliseconds;
  const std::int64_t timestamp = node.integer();
  if (timestamp % 1000 != 0) node.refuse("must be a whole second, in milliseconds");
  const auto now = std::chrono::floor<milliseconds>(window.now.time_since_epoch());
  const milliseconds tolerance = window.tolerance;
  if (timestamp < (now - tolerance).count() || timestamp > (now + tolerance).count()) {
    node.refuse("is too far from now");
  }
}

/// Judges what events and identify records share.
void judgeSender(const JSONNode& body, const TimestampWindow& window) {
  body.requiredMember("user_id").text();
  const JSONNode anonymousID = body.requiredMember("anonymous_id");
  if (anonymousID.text().empty()) anonymousID.refuse("must not be empty");
  const JSONNode timezone = body.requiredMember("timezone");
  if (!isTimeZoneName(timezone.text())) timezone.refuse("is no name of a time zone");
  judgeTimestamp(body.requiredMember("timestamp"), window);
}

void judgeChannel(const JSONNode& channel) {
  channel.require({"app"});
  const JSONNode app = channel.requiredMember("app");
  app.require({"name"});
  const JSONNode name = app.requiredMember("name");
  if (name.text() != "sdk") name.refuse("must be \"sdk\"");
}

/// The install may have no rules key; what would hold it is there all the same.
void judgeContext(const JSONNode& context) {
  context.require({"campaign"});
  const JSONNode campaign = context.requiredMember("campaign");
  campaign.allowOnly({"rules_pic_key"});
  if (const auto key = campaign.member("rules_pic_key")) key->text();
}

void judgeTrackEvent(const JSONNode& body) {
  const std::string event = body.requiredMember("event").text();
  if (event == "order_completed") {
    body.require({"type", "event", "context", "properties", "user_id", "anonymous_id", "timezone",
                  "timestamp", "channel"});
    judgeContext(body.requiredMember("context"));
  } else {
    body.require({"type", "event", "properties", "user_id", "anonymous_id", "timezone", "timestamp",
                  "channel"});
  }
  if (!judgeProperties(event, body.requiredMember("properties"))) {
    body.requiredMember("event").refuse("is no event of the type \"track\"");
  }
}

void judgeCustomEvent(const JSONNode& body) {
  body.require({"type", "event", "properties", "user_id", "anonymous_id", "timezone", "timestamp",
                "channel"});
  body.requiredMember("event").text();
  const JSONNode properties = body.requiredMember("properties");
  if (!properties.isObject()) properties.refuse("must be an object");
}

}  // namespace

void judgeEvent(const JSONNode& body, const TimestampWindow& window) {
  const JSONNode type = body.requiredMember("type");
  if (type.text() == "identify") {
    body.require({"type", "user_id", "anonymous_id", "timezone", "timestamp"});
    return judgeSender(body, window);
  }
  if (type.text() == "track")
    judgeTrackEvent(body);
  else if (type.text() == "custom")
    judgeCustomEvent(body);
  else
    type.refuse("must be \"track\", \"custom\" or \"identify\"");
  judgeSender(body, window);
  judgeChannel(body.requiredMember("channel"));
}

}  // namespace quenwick::sandbox

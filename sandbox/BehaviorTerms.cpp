#include "sandbox/BehaviorTerms.h"

#include "sandbox/JSONNode.h"

namespace quenwick::sandbox {
namespace {

constexpr std::uint64_t kLongestTolerance = 1'000'000'000'000;

void readKey(const JSONNode& node, BehaviorTerms& terms) {
  node.allowOnly({"key", "bundleIdentifiers"});
  const JSONNode key = node.requiredMember("key");
  if (key.text().empty()) key.refuse("must not be empty");
  const auto [entry, isNew] = terms.keys.try_emplace(key.text());
  if (!isNew) key.refuse("is there already");
  if (const auto bundles = node.member("bundleIdentifiers")) {
    for (const JSONNode& bundle : bundles->elements()) entry->second.insert(bundle.text());
  }
}

/// Takes over the URL of a member, if it is there, and splits it.
Address readURL(const JSONNode& node, std::string_view key, std::string& url) {
  const auto member = node.member(key);
  if (member) url = member->text();
  const auto address = parseAddress(url);
  if (!address || address->host.empty() || url.find_first_of("?# ") != std::string::npos) {
    member->refuse("must be \"https://host/path\" or \"http://host/path\"");
  }
  return *address;
}

}  // namespace

std::vector<std::string> BehaviorTerms::keyTexts() const {
  std::vector<std::string> texts;
  texts.reserve(keys.size());
  for (const auto& [key, bundles] : keys) texts.push_back(key);
  return texts;
}

BehaviorTerms readBehaviorTerms(const JSONNode& node) {
  node.allowOnly({"keys", "service", "endpoint", "timestampTolerance", "faults"});
  BehaviorTerms terms;
  for (const JSONNode& key : node.requiredMember("keys").elements()) readKey(key, terms);
  terms.handshake = readURL(node, "service", terms.service);
  if (terms.handshake.path.ends_with('/')) terms.handshake.path.pop_back();
  terms.handshake.path += "/behavioral_verification";
  terms.events = readURL(node, "endpoint", terms.endpoint);
  if (const auto tolerance = node.member("timestampTolerance")) {
    terms.timestampTolerance = std::chrono::seconds(tolerance->number(0, kLongestTolerance));
  }
  if (const auto faults = node.member("faults")) {
    for (const auto& [name, list] : faults->members()) {
      const auto part = behaviorPart(name);
      if (!part) list.refuse("unknown key");
      terms.faults[*part] = readFaults(list, *part);
    }
  }
  return terms;
}

}  // namespace quenwick::sandbox

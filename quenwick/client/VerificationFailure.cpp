#include "quenwick/client/VerificationFailure.h"

#include <algorithm>
#include <vector>

#include "quenwick/API/Repository/BehavioralVerificationRepository.h"
#include "quenwick/API/Stack/APIKeyError.h"
#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/platform/Error.h"
#include "quenwick/platform/Redaction.h"
#include "quenwick/platform/SecItem.h"

namespace quenwick {
namespace {

/// An answer may have megabytes.
constexpr std::size_t kLookedThrough = 64UL << 10;

/// Where the JSON text that begins there ends: before its closing quote, or with the whole.
std::size_t endOfText(std::string_view json, std::size_t at) {
  while (at < json.size() && json[at] != '"') at += json[at] == '\\' ? 2 : 1;
  return std::min(at, json.size());
}

/// Hides what stands under the key of a credential, in an answer that was refused for its status.
void hideCredential(std::string& json, std::string_view key) {
  for (auto at = json.find(key); at != json.npos; at = json.find(key, at + 1)) {
    auto begin = json.find_first_not_of(" \t\r\n:", at + key.size());
    if (begin == json.npos || json[begin] != '"') continue;
    json.replace(begin + 1, endOfText(json, begin + 1) - begin - 1, "…");
  }
}

/// The key that is kept is the one that was sent where another registration came in between.
std::vector<std::string> keysToHide(std::string_view apiKey) {
  std::vector<std::string> keys{std::string(apiKey)};
  if (!platform::SecItemsAreInMemory()) return keys;
  if (auto kept = AuthenticationKeychain::behaviorVerificationAPIToken()) keys.push_back(*kept);
  return keys;
}

/// What a service answered may hold them; a text of the library's own does not, and stays as it is.
std::string withoutSecrets(std::string text, std::string_view apiKey) {
  text.resize(std::min(text.size(), kLookedThrough));
  for (const auto* key :
       {R"("behavioral_endpoint_api_token")", R"("behavioral_endpoint_api_token_identifier")"}) {
    hideCredential(text, key);
  }
  return platform::redacted(text, keysToHide(apiKey), platform::kLongestReason);
}

std::string reasonOf(const std::exception_ptr& failure, std::string_view apiKey) {
  using Errors = BehavioralVerificationRepository::Errors;
  try {
    std::rethrow_exception(failure);
  } catch (const APIKeyError&) {
    return "API Key Not Found";
  } catch (const Errors& error) {
    bool isEndpoint = error.code() == Errors::Code::coercingEndpointURLFailed;
    return isEndpoint ? "Could not coerce the endpoint into a URL" : error.localizedDescription();
  } catch (...) {
    return withoutSecrets(platform::errorFrom(failure)->localizedDescription(), apiKey);
  }
}

}  // namespace

std::string verificationFailureLine(const std::exception_ptr& failure, std::string_view apiKey) {
  return "Behavioral Verification failed: " + reasonOf(failure, apiKey);
}

}  // namespace quenwick

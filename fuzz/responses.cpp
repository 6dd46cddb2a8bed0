// A status, and the body of the answer behind it.

#include <charconv>
#include <map>
#include <vector>

#include "fuzz/Target.h"
#include "quenwick/API/Models/BehavioralVerificationContainer.h"
#include "quenwick/API/Stack/DataContainer.h"
#include "quenwick/API/Stack/DecodableDefault.h"
#include "quenwick/API/Stack/GeneralAPIError.h"
#include "quenwick/API/Stack/Nothing.h"
#include "quenwick/API/Stack/ResponseSteps.h"
#include "quenwick/auth/AuthenticationTokenManager.h"
#include "quenwick/platform/Text.h"
#include "tests/support/SilentLog.h"

namespace quenwick::fuzz {
namespace {

namespace Default = DecodableDefault;
using Credential = DataContainer<BehavioralVerificationContainer>;
using platform::Value;

/// A record of every lenient kind.
struct Lenient {
  Default::True isOn;
  Default::False isOff;
  Default::EmptyString name;
  Default::EmptyList<std::vector<Default::EmptyString>> list;
  Default::EmptyMap<std::map<std::string, std::int64_t>> map;
  Default::ZeroNumeric<int> count;
  Default::ZeroNumeric<float> price;
  std::optional<std::uint8_t> small;

  static constexpr auto fields() {
    return std::tuple{Field{"true", &Lenient::isOn},   Field{"false", &Lenient::isOff},
                      Field{"text", &Lenient::name},   Field{"list", &Lenient::list},
                      Field{"map", &Lenient::map},     Field{"count", &Lenient::count},
                      Field{"price", &Lenient::price}, Field{"small", &Lenient::small}};
  }
  friend bool operator==(const Lenient&, const Lenient&) = default;
};

std::optional<Value> parsed(const std::string& body) {
  try {
    return platform::JSONSerialization::parse(body);
  } catch (const platform::JSONError&) {
    return std::nullopt;
  }
}

/// The texts that stand as values, and the keys, which an error may name.
struct Texts {
  std::vector<std::string> values;
  std::string keys;

  void collect(const Value& value) {
    const auto* text = value.as<std::string>();
    if (text && text->find("s3cret") != text->npos) values.push_back(*text);
    if (const auto* list = value.as<platform::List>()) {
      for (const auto& each : *list) collect(each);
    }
    if (const auto* object = value.as<platform::Dictionary>()) {
      for (const auto& [key, each] : *object) {
        keys.append(key).append("\n");
        collect(each);
      }
    }
  }
};

/// What decodes is written and decodes again to the same; what does not says why without a secret.
template <class T>
std::optional<T> checkDecoding(const std::string& body, const Texts& texts) {
  std::optional<T> decoded;
  try {
    decoded = decodedBody<T>(body);
  } catch (const APIError& error) {
    const auto& line = error.errorDescription();
    holds(std::holds_alternative<APIError::DecodeFailed>(error.kind()) && error.underlyingError(),
          "a body that does not decode is a failure to decode", line);
    holds(platform::isUTF8(line), "its description is a text");
    for (const auto& value : texts.values) {
      bool isKey = texts.keys.find(value) != texts.keys.npos;
      holds(isKey || line.find(value) == line.npos, "an error names no value", line);
    }
    return std::nullopt;
  }
  auto again = JSONEncoder::encode(*decoded);
  holds(decodedBody<T>(again) == *decoded, "what was decoded is written the same", again);
  return decoded;
}

/// Whether all that is known of the lenient record is there in its kind, or forgiven.
void checkDefaults(const std::optional<Lenient>& decoded, const std::optional<Value>& body) {
  const auto* object = body ? body->as<platform::Dictionary>() : nullptr;
  holds(object || !decoded, "only an object is a record");
  if (!object || !decoded) return;
  auto isAbsent = [object](std::string_view key) {
    const auto* value = object->find(key);
    return !value || value->isNull();
  };
  const Lenient defaults;
  holds(!isAbsent("true") || decoded->isOn == defaults.isOn, "absent is true");
  holds(!isAbsent("false") || decoded->isOff == defaults.isOff, "absent is false");
  holds(!isAbsent("text") || decoded->name == defaults.name, "absent is the empty text");
  holds(!isAbsent("list") || decoded->list == defaults.list, "absent is the empty list");
  holds(!isAbsent("map") || decoded->map == defaults.map, "absent is the empty map");
  holds(!isAbsent("count") || decoded->count == defaults.count, "absent is zero");
  holds(isAbsent("text") || object->find("text")->as<std::string>(), "a text is none but a text");
  holds(isAbsent("true") || object->find("true")->as<bool>(), "a flag is none but a flag");
}

platform::DataResponse answer(int status, const std::string& body) {
  auto response = std::make_shared<platform::HTTPURLResponse>();
  response->statusCode = status;
  return {body, std::move(response)};
}

void checkStatus(int status, const std::string& body, const std::optional<Value>& value) {
  const std::map<int, ConvertToError> handlers{{422, ConvertToError::decoding<GeneralAPIError>()},
                                               {503, ConvertToError::networkError()}};
  bool isSuccess = status >= 200 && status <= 299;
  try {
    holds(validatedBody(answer(status, body), handlers) == body && isSuccess,
          "the body of a success is passed on, and of nothing else");
  } catch (const AuthenticationTokenManager::TokenError&) {
    holds(status == 401, "only 401 asks for another token");
  } catch (const APIError& error) {
    using Reason = APIError::GeneralFailureReason;
    const auto& kind = std::get<APIError::GeneralFailure>(error.kind()).reason.kind;
    const auto* uncaptured = std::get_if<Reason::Uncaptured>(&kind);
    holds(!isSuccess && status != 401, "a failure has a status of failure");
    holds(!uncaptured || (uncaptured->body == body && uncaptured->statusCode == status),
          "a body that nobody decodes is kept");
    holds(std::holds_alternative<Reason::Network>(kind) == (status == 503), "503 is the network's");
    bool isObject = value && value->as<platform::Dictionary>();
    holds(!std::holds_alternative<Reason::Captured>(kind) || (status == 422 && isObject),
          "an error body is an object");
  }
}

}  // namespace
}  // namespace quenwick::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace quenwick;
  [[maybe_unused]] static const bool isSilent = tests::SilentLog::install();
  fuzz::Input input(data, size);
  const auto line = input.line();
  int status = 0;
  std::from_chars(line.data(), line.data() + line.size(), status);
  const std::string body(input.rest());

  const auto value = fuzz::parsed(body);
  fuzz::Texts texts;
  if (value) texts.collect(*value);
  fuzz::checkDecoding<fuzz::Credential>(body, texts);
  fuzz::checkDefaults(fuzz::checkDecoding<fuzz::Lenient>(body, texts), value);
  fuzz::holds(fuzz::checkDecoding<Nothing>(body, texts).has_value(), "any body is nothing");
  fuzz::checkStatus(status, body, value);
  return 0;
}

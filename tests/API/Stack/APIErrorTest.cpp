#include "quenwick/API/Stack/APIError.h"

#include <gtest/gtest.h>

#include "quenwick/API/Stack/ConvertToError.h"
#include "quenwick/API/Stack/DecodingError.h"
#include "quenwick/API/Stack/GeneralAPIError.h"
#include "quenwick/platform/JSONSerialization.h"
#include "tests/support/FatalMessage.h"

namespace quenwick {
namespace {

using General = APIError::GeneralFailureReason;
using Encoding = APIError::ParameterEncodingFailureReason;
using Validation = APIError::URLRequestValidationFailureReason;

const platform::ErrorPointer kInner = std::make_shared<platform::OtherError>("it broke");

struct Described {
  APIError::Kind kind;
  const char* text;
  bool carriesInner = false;
};

std::vector<Described> everyKind() {
  return {
      {APIError::GeneralFailure{{General::Captured{kInner, 422}}}, "422 - it broke", true},
      {APIError::GeneralFailure{{General::Uncaptured{"{\"a\": \xC3\xBC}", 401}}},
       "401\n{\"a\": \xC3\xBC}"},
      {APIError::GeneralFailure{{General::Uncaptured{"\xFF\xFE twelve by", 502}}}, "502\n12 bytes"},
      {APIError::GeneralFailure{{General::Uncaptured{"", 204}}}, "204\n"},
      {APIError::GeneralFailure{{General::Network{}}},
       "There was a network connection error. Please try again later."},
      {APIError::ParameterEncodingFailed{{Encoding::JSONEncodingFailed{kInner}}},
       "JSON could not be encoded because of error:\nit broke", true},
      {APIError::ParameterEncodingFailed{{Encoding::CustomEncodingFailed{kInner}}},
       "Custom parameter encoder failed with error: it broke", true},
      {APIError::ParameterEncodingFailed{{Encoding::MissingURL{}}},
       "URL request to encode was missing a URL"},
      {APIError::ParameterEncodingFailed{{Encoding::Unknown{}}}, "Some unknown error occurred"},
      {APIError::InvalidURL{"not a url"}, "URL is not valid: not a url"},
      {APIError::InvalidURL{""}, "URL is not valid: "},
      {APIError::URLRequestValidationFailed{{Validation::BodyDataInGETRequest{"a=b"}}},
       "URLRequest validation failed due to reason: Invalid URLRequest: Requests with GET method "
       "cannot have body data:\na=b"},
      {APIError::URLRequestValidationFailed{{Validation::BodyDataInGETRequest{"\x80"}}},
       "URLRequest validation failed due to reason: Invalid URLRequest: Requests with GET method "
       "cannot have body data:\n1 bytes"},
      {APIError::CreateURLRequestFailed{kInner}, "URLRequest creation failed with error: it broke",
       true},
      {APIError::SessionTaskFailed{kInner}, "URLSessionTask failed with error: it broke", true},
      {APIError::SessionTaskFailed{nullptr},
       "URLSessionTask failed with error: Unknown error occurred"},
      {APIError::DecodeFailed{kInner}, "it broke", true},
      {APIError::Unknown{}, "Unknown error occurred"},
  };
}

TEST(APIErrorTest, DescribesEveryKindToTheLetterAndKeepsTheErrorItWraps) {
  for (const auto& [kind, text, carriesInner] : everyKind()) {
    const APIError error(kind);
    EXPECT_EQ(error.errorDescription(), text);
    EXPECT_STREQ(error.what(), text);
    EXPECT_EQ(error.underlyingError(), carriesInner ? kInner : nullptr) << text;
  }
}

TEST(APIErrorTest, IsFoundBehindAnyErrorReference) {
  const APIError own(APIError::Unknown{});
  const APIError fallback(APIError::SessionTaskFailed{kInner});
  EXPECT_EQ(asAPIError(own), &own);
  EXPECT_EQ(asAPIError(*kInner), nullptr);
  EXPECT_EQ(asAPIError(own, fallback).errorDescription(), own.errorDescription());
  EXPECT_EQ(asAPIError(*kInner, fallback).errorDescription(), fallback.errorDescription());
  EXPECT_EQ(&asAPIErrorOrFail(own, "never said"), &own);
}

TEST(APIErrorTest, StopsOverAnErrorOfAnotherTypeWithMessageAndPlace) {
  const auto line = std::to_string(__LINE__ + 1);
  auto message = tests::fatalMessage([] { asAPIErrorOrFail(*kInner, "No API error"); });
  EXPECT_TRUE(message.starts_with("No API error, ")) << message;
  EXPECT_TRUE(message.ends_with("APIErrorTest.cpp:" + line)) << message;
}

GeneralAPIError decoded(const char* json) {
  return GeneralAPIError::decode(platform::JSONSerialization::parse(json));
}

TEST(GeneralAPIErrorTest, TakesErrorThenMessageThenTheFixedText) {
  const std::pair<const char*, const char*> kBodies[] = {
      {R"({"message": "Bad key"})", "Bad key"},
      {R"({"message": "Bad key", "error": "Worse"})", "Worse"},
      {R"({"error": ""})", ""},
      {R"({"error": null, "message": "Bad key"})", "Bad key"},
      {R"({"status": 5})", "Unknown error occurred"},
      {"{}", "Unknown error occurred"},
  };
  for (const auto& [json, text] : kBodies) {
    auto error = decoded(json);
    EXPECT_EQ(error.error, text) << json;
    EXPECT_EQ(error.localizedDescription(), text) << json;
  }
}

TEST(GeneralAPIErrorTest, RefusesOtherShapes) {
  for (auto json : {R"({"error": 5})", R"({"message": ["a"]})", R"({"error": "a", "message": 1})",
                    "[]", "\"error\"", "null"}) {
    EXPECT_THROW(decoded(json), DecodingError) << json;
  }
}

TEST(ConvertToErrorTest, KeepsTheTypeOfTheDecodedError) {
  auto error = ConvertToError::decoding<GeneralAPIError>()(R"({"message": "Bad key"})", 422);
  const auto* own = dynamic_cast<const GeneralAPIError*>(error.underlyingError().get());
  ASSERT_TRUE(own);
  EXPECT_EQ(own->error, "Bad key");
}

}  // namespace
}  // namespace quenwick

#include "quenwick/auth/Keychain.h"

#include <gtest/gtest.h>

#include "quenwick/auth/AuthenticationKeychain.h"
#include "quenwick/auth/SecureSessionData.h"
#include "quenwick/platform/KeyedArchive.h"
#include "tests/support/NestedValue.h"
#include "tests/support/SecretPlace.h"

namespace quenwick {
namespace {

using platform::Bytes;
using platform::SecItemBackendKind;

class KeychainTest : public testing::TestWithParam<SecItemBackendKind> {
 protected:
  void SetUp() override { platform::SecItemStore::setStandard(place_.open()); }

  tests::SecretPlace place_{GetParam()};
  Keychain keychain_{"com.example.keychain"};
};

INSTANTIATE_TEST_SUITE_P(Both, KeychainTest, tests::kBothPlaces, tests::nameOf);

TEST_P(KeychainTest, EachKindOfValueIsReadAsItWasSet) {
  auto uuid = *platform::UUID::parse("0f8fad5b-d9cb-469f-a165-70867728950e");
  EXPECT_TRUE(keychain_.set(Bytes("\xff\x00", 2), "bytes"));
  EXPECT_TRUE(keychain_.set("text ü", "text"));
  EXPECT_TRUE(keychain_.set(uuid, "uuid"));
  EXPECT_TRUE(keychain_.set(std::int64_t{-9'007'199'254'740'993}, "integer"));
  EXPECT_TRUE(keychain_.set(0.1F, "float"));
  EXPECT_TRUE(keychain_.set(1763726400.123456, "double"));
  EXPECT_TRUE(keychain_.set(true, "true"));
  EXPECT_TRUE(keychain_.set(false, "false"));
  platform::Dictionary object{{"list", platform::List{1, "two"}}};
  EXPECT_TRUE(keychain_.set(object, "object"));
  platform::SecItemStore::setStandard(place_.open());  // as after a restart
  EXPECT_EQ(keychain_.data("bytes"), Bytes("\xff\x00", 2));
  EXPECT_EQ(keychain_.string("text"), "text ü");
  EXPECT_EQ(keychain_.data("uuid"), "0F8FAD5B-D9CB-469F-A165-70867728950E");
  EXPECT_EQ(keychain_.uuid("uuid"), uuid);
  EXPECT_EQ(keychain_.integer("integer"), -9'007'199'254'740'993);
  EXPECT_EQ(keychain_.floatValue("float"), 0.1F);
  EXPECT_EQ(keychain_.doubleValue("double"), 1763726400.123456);
  EXPECT_EQ(keychain_.boolValue("true"), true);
  EXPECT_EQ(keychain_.boolValue("false"), false);
  auto archive = keychain_.data("object");
  ASSERT_TRUE(archive);
  EXPECT_EQ(platform::KeyedArchive::unarchivedObject(*archive), platform::Value(object));
}

TEST_P(KeychainTest, NumbersAreReadAcrossKindsAndOtherItemsAreNone) {
  keychain_.set(42, "number");
  keychain_.set(2.75, "real");
  EXPECT_EQ(keychain_.doubleValue("number"), 42.0);
  EXPECT_EQ(keychain_.floatValue("number"), 42.0F);
  EXPECT_EQ(keychain_.boolValue("number"), true);
  EXPECT_EQ(keychain_.integer("real"), 2);
  EXPECT_EQ(keychain_.string("number"), std::nullopt) << "an archive is no text";
  keychain_.set("42", "text");
  keychain_.set(platform::List{42}, "list");
  for (auto key : {"text", "list", "absent"}) {
    EXPECT_EQ(keychain_.integer(key), std::nullopt) << key;
    EXPECT_EQ(keychain_.floatValue(key), std::nullopt) << key;
    EXPECT_EQ(keychain_.doubleValue(key), std::nullopt) << key;
    EXPECT_EQ(keychain_.boolValue(key), std::nullopt) << key;
    EXPECT_EQ(keychain_.uuid(key), std::nullopt) << key;
  }
}

TEST_P(KeychainTest, SettingTwiceReplacesAndDeletingTellsWhetherThereWasOne) {
  EXPECT_TRUE(keychain_.set("first", "key"));
  auto reference = keychain_.dataRef("key");
  EXPECT_TRUE(keychain_.set("second", "key"));
  EXPECT_EQ(keychain_.string("key"), "second");
  EXPECT_TRUE(reference);
  EXPECT_EQ(keychain_.dataRef("key"), reference);
  EXPECT_TRUE(keychain_.removeObject("key"));
  EXPECT_FALSE(keychain_.removeObject("key"));
  EXPECT_EQ(keychain_.dataRef("key"), std::nullopt);
}

TEST_P(KeychainTest, ServicesKeepTheirOwnValuesUnderTheSameKey) {
  Keychain other("com.example.another");
  keychain_.set("ours", "key");
  other.set("theirs", "key");
  EXPECT_EQ(keychain_.string("key"), "ours");
  EXPECT_TRUE(other.removeObject("key"));
  EXPECT_EQ(keychain_.string("key"), "ours");
}

TEST_P(KeychainTest, AnItemsKeyIsItsAccountAndItsGenericAttribute) {
  keychain_.set("value", "key");
  auto query = tests::item("key", "com.example.keychain");
  for (auto [generic, status] :
       {std::pair("key", platform::errSecSuccess), {"other", platform::errSecItemNotFound}}) {
    query.kSecAttrGeneric = generic;
    std::optional<Bytes> result;
    EXPECT_EQ(platform::SecItemCopyMatching(query, result), status) << generic;
  }
}

TEST_P(KeychainTest, WhatIsNoTextIsNeitherStoredNorReadAsOne) {
  EXPECT_FALSE(keychain_.set(std::string_view("\xff"), "key"));
  EXPECT_FALSE(keychain_.set("value", "\xff"));
  EXPECT_EQ(keychain_.data("key"), std::nullopt);
  keychain_.set("before", "key");
  EXPECT_FALSE(keychain_.set(platform::List{tests::nested(600)}, "key"));
  EXPECT_EQ(keychain_.string("key"), "before");
}

TEST_P(KeychainTest, TheAPIKeyIsOneOfTheLibrarysItems) {
  using Auth = AuthenticationKeychain;
  EXPECT_EQ(Auth::behaviorVerificationAPIToken(), std::nullopt);
  Auth::setBehaviorVerificationAPIToken("an API key");
  EXPECT_EQ(Auth::behaviorVerificationAPIToken(), "an API key");
  EXPECT_EQ(Keychain("com.quenwick.sdk.authentication_keychain")
                .string("com.quenwick.sdk.behavior.verification.apiToken"),
            "an API key");
  EXPECT_EQ(Keychain::standard().serviceName(), "com.quenwick.sdk.keychain");
  Auth::setBehaviorVerificationAPIToken(std::nullopt);
  EXPECT_EQ(Auth::behaviorVerificationAPIToken(), std::nullopt);
}

TEST(SecureSessionData, ConvertsToTheKeyThatEveryInstallHasItUnderAndBack) {
  using enum SecureSessionData;
  for (const auto& [data, key] :
       {std::pair(accessToken, "com.quenwick.sdk.token.accessToken"),
        {refreshToken, "com.quenwick.sdk.token.refreshToken"},
        {expiresIn, "com.quenwick.sdk.token.expiresIn"},
        {expiresAt, "com.quenwick.sdk.token.expiresAt"},
        {behaviorVerificationAPIToken, "com.quenwick.sdk.behavior.verification.apiToken"},
        {behaviorAPIEndpoint, "com.quenwick.sdk.behavior.endpoint"},
        {behaviorAPIToken, "com.quenwick.sdk.behavior.apiToken"},
        {behaviorAPITokenExpiresAt, "com.quenwick.sdk.behavior.apiTokenExpiresAt"}}) {
    EXPECT_EQ(rawValue(data), key);
    EXPECT_EQ(secureSessionData(key), data);
  }
  EXPECT_EQ(secureSessionData("com.quenwick.sdk.token"), std::nullopt);
}

}  // namespace
}  // namespace quenwick

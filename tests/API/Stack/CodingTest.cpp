#include <gtest/gtest.h>

#include <set>
#include <unordered_map>
#include <unordered_set>

#include "quenwick/API/Stack/DataContainer.h"
#include "quenwick/API/Stack/DecodableDefault.h"
#include "quenwick/API/Stack/DecodingError.h"
#include "quenwick/API/Stack/JSONCoder.h"
#include "quenwick/API/Stack/Nothing.h"

namespace quenwick {
namespace {

struct Offer {
  std::string name;
  std::int32_t count = 0;
  std::optional<double> price;
  std::vector<bool> flags;
  std::map<std::string, std::uint8_t> sizes;

  static constexpr auto fields() {
    return std::tuple{Field{"name", &Offer::name}, Field{"count", &Offer::count},
                      Field{"price", &Offer::price}, Field{"flags", &Offer::flags},
                      Field{"sizes", &Offer::sizes}};
  }
  friend bool operator==(const Offer&, const Offer&) = default;
};

constexpr auto kOffer =
    R"({"name":"shoe","count":3,"price":1.5,"flags":[true,false],"sizes":{"m":1,"s":255}})";

template <class T>
std::string failureOf(std::string_view text) {
  try {
    JSONDecoder::decode<T>(text);
  } catch (const DecodingError& error) {
    return error.localizedDescription();
  }
  return "decoded";
}

TEST(CodingTest, ARecordReadsAndWritesTheFieldsItDeclares) {
  auto offer = JSONDecoder::decode<Offer>(kOffer);
  EXPECT_EQ(offer, (Offer{"shoe", 3, 1.5, {true, false}, {{"m", 1}, {"s", 255}}}));
  EXPECT_EQ(JSONEncoder::encode(offer), kOffer);

  auto bare = JSONDecoder::decode<Offer>(
      R"({"sizes":{},"price":null,"flags":[],"unknown":[{}],"count":1,"name":"a","name":"last"})");
  EXPECT_EQ(bare, (Offer{"last", 1, std::nullopt, {}, {}}));
  EXPECT_EQ(JSONEncoder::encode(bare), R"({"name":"last","count":1,"flags":[],"sizes":{}})");
}

TEST(CodingTest, AFailureNamesThePlaceAndTheExpectedType) {
  using Offers = DataContainer<std::vector<Offer>>;
  const std::pair<const char*, const char*> kRows[] = {
      {"[]", "The JSON value is a list where an object is expected."},
      {"{}", R"(The value of "data" is missing where a list is expected.)"},
      {R"({"data":null})", R"(The value of "data" is null where a list is expected.)"},
      {R"({"data":[{}]})", R"(The value of "data[0].name" is missing where a text is expected.)"},
      {R"({"data":[{"name":"a","count":"secret"}]})",
       R"(The value of "data[0].count" is a text where a whole number is expected.)"},
      {R"({"data":[{"name":null}]})",
       R"(The value of "data[0].name" is null where a text is expected.)"},
      {R"({"data":[{"name":"a","count":true}]})",
       R"(The value of "data[0].count" is a boolean where a whole number is expected.)"},
      {R"({"data":[{"name":"a","count":1,"price":{}}]})",
       R"(The value of "data[0].price" is an object where a number is expected.)"},
      {R"({"data":[{"name":"a","count":1,"flags":[true,0]}]})",
       R"(The value of "data[0].flags[1]" is a number where a boolean is expected.)"},
      {R"({"data":[{"name":"a","count":1,"flags":[],"sizes":{"s":256}}]})",
       R"(The value of "data[0].sizes.s" is a number that does not fit where a whole number is expected.)"},
  };
  for (const auto& [text, failure] : kRows) EXPECT_EQ(failureOf<Offers>(text), failure);
  EXPECT_THROW(JSONDecoder::decode<Offers>("{"), platform::JSONError);
}

/// The number that the text decodes to, as it is written.
template <class Number>
std::string written(const std::string& text) {
  try {
    return JSONEncoder::encode(JSONDecoder::decode<Number>(text));
  } catch (const DecodingError&) {
    return "fails";
  }
}

template <class Number>
void expectWritten(const std::map<std::string, std::string>& outcomes) {
  for (const auto& [text, outcome] : outcomes) EXPECT_EQ(written<Number>(text), outcome) << text;
}

TEST(CodingTest, NumbersAreExactOrFail) {
  expectWritten<int>({{"1.0", "1"},
                      {"1e2", "100"},
                      {"-0.0", "0"},
                      {"1.5", "fails"},
                      {"2147483647", "2147483647"},
                      {"2147483648", "fails"},
                      {"1e300", "fails"}});
  expectWritten<unsigned>({{"-1", "fails"}, {"-1.0", "fails"}});
  expectWritten<std::int64_t>({{"-9223372036854775808", "-9223372036854775808"},
                               {"9223372036854775808", "fails"},
                               {"9223372036854775808.0", "fails"},
                               {"-9.223372036854775808e18", "-9223372036854775808"}});
  expectWritten<std::uint64_t>({{"18446744073709551615", "18446744073709551615"},
                                {"18446744073709551616", "fails"},
                                {"9223372036854775808.0", "9223372036854775808"}});
  expectWritten<double>({{"7", "7.0"}, {"0.1", "0.1"}, {"true", "fails"}});
  expectWritten<float>({{"0.5", "0.5"}, {"1e39", "fails"}});
  expectWritten<bool>({{"1", "fails"}});
  expectWritten<std::string>({{"1", "fails"}});
}

TEST(CodingTest, NothingDecodesFromAnything) {
  for (auto body : {"{}", "[1]", "7", "", "\xff not JSON"}) {
    EXPECT_EQ(JSONDecoder::decode<Nothing>(body), Nothing());
  }
  EXPECT_EQ(JSONDecoder::decode<DataContainer<Nothing>>(R"({"data":7})"), DataContainer<Nothing>());
  EXPECT_EQ(failureOf<DataContainer<Nothing>>("{}"),
            R"(The value of "data" is missing where a value is expected.)");
  EXPECT_EQ(failureOf<DataContainer<std::optional<std::string>>>("{}"),
            R"(The value of "data" is missing where a text is expected.)");
  EXPECT_EQ(failureOf<DataContainer<DecodableDefault::True>>("{}"),
            R"(The value of "data" is missing where a boolean is expected.)");
  EXPECT_EQ(JSONDecoder::decode<DataContainer<std::optional<std::string>>>(R"({"data":null})"),
            DataContainer<std::optional<std::string>>());
  EXPECT_EQ(JSONEncoder::encode(Nothing()), "{}");
}

struct Lenient {
  DecodableDefault::True yes;
  DecodableDefault::False no;
  DecodableDefault::EmptyString text;
  DecodableDefault::EmptyList<std::vector<int>> list;
  DecodableDefault::EmptyMap<std::map<std::string, int>> map;
  DecodableDefault::ZeroNumeric<double> number;

  static constexpr auto fields() {
    return std::tuple{Field{"yes", &Lenient::yes},   Field{"no", &Lenient::no},
                      Field{"text", &Lenient::text}, Field{"list", &Lenient::list},
                      Field{"map", &Lenient::map},   Field{"number", &Lenient::number}};
  }
  friend bool operator==(const Lenient&, const Lenient&) = default;
};

TEST(DecodableDefaultTest, AMissingKeyAndNullGiveTheDefault) {
  auto missing = JSONDecoder::decode<Lenient>("{}");
  auto null = JSONDecoder::decode<Lenient>(
      R"({"yes":null,"no":null,"text":null,"list":null,"map":null,"number":null})");
  EXPECT_EQ(missing, null);
  EXPECT_EQ(JSONEncoder::encode(missing),
            R"({"yes":true,"no":false,"text":"","list":[],"map":{},"number":0.0})");

  constexpr auto kGiven =
      R"({"yes":false,"no":true,"text":"a","list":[1],"map":{"k":2},"number":1.5})";
  EXPECT_EQ(JSONEncoder::encode(JSONDecoder::decode<Lenient>(kGiven)), kGiven);
}

TEST(DecodableDefaultTest, AValueOfAnotherTypeStillFails) {
  for (auto [text, place] :
       std::vector<std::pair<const char*, const char*>>{{R"({"yes":"no"})", "yes"},
                                                        {R"({"no":0})", "no"},
                                                        {R"({"text":[]})", "text"},
                                                        {R"({"list":[null]})", "list[0]"},
                                                        {R"({"map":[]})", "map"},
                                                        {R"({"number":"1"})", "number"}}) {
    EXPECT_NE(failureOf<Lenient>(text).find('"' + std::string(place) + '"'), std::string::npos)
        << text;
  }
  EXPECT_EQ(failureOf<std::vector<DecodableDefault::True>>("[null]"),
            R"(The value of "[0]" is null where a boolean is expected.)");
}

TEST(DecodableDefaultTest, WrappersAreEqualAndHashAlikeWhenTheirValuesAre) {
  std::unordered_set<DecodableDefault::EmptyString> texts{
      {}, std::string("a"), std::string(), std::string("a")};
  EXPECT_EQ(texts.size(), 2U);
  using Lists = DecodableDefault::EmptyList<std::vector<std::vector<int>>>;
  std::unordered_set<Lists> lists{{}, {{{1, 2}}}, {{{2, 1}}}, {{{1}, {2}}}, {{{1, 2}}}};
  EXPECT_EQ(lists.size(), 4U);
  std::set<std::size_t> hashes;
  for (const auto& list : lists) hashes.insert(std::hash<Lists>()(list));
  EXPECT_EQ(hashes.size(), 4U);
  using Maps = DecodableDefault::EmptyMap<std::map<std::string, int>>;
  std::unordered_set<Maps> maps{{}, {{{"a", 1}}}, {{{"a", 2}}}, {{{"b", 1}}}, {{{"a", 1}}}};
  EXPECT_EQ(maps.size(), 4U);
  std::unordered_map<int, int> forward;
  std::unordered_map<int, int> backward(1000);  // buckets, and so another order
  for (int i = 0; i < 100; ++i) forward[i] = 7;
  for (int i = 99; i >= 0; --i) backward[i] = 7;
  ASSERT_EQ(forward, backward);
  EXPECT_EQ(hashOf(forward), hashOf(backward));
  EXPECT_EQ(DecodableDefault::ZeroNumeric<int>(), DecodableDefault::ZeroNumeric<int>(0));
  EXPECT_NE(DecodableDefault::True(), DecodableDefault::True(false));
}

}  // namespace
}  // namespace quenwick

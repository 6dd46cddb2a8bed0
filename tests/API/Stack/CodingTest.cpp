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
  struct {
    const char* text;
    const char* failure;
  } const kRows[] = {
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
  for (const auto& row : kRows) EXPECT_EQ(failureOf<Offers>(row.text), row.failure);
  EXPECT_THROW(JSONDecoder::decode<Offers>("{"), platform::JSONError);
}

/// Whether the text decodes, and to a number that is written like `written`.
template <class Number>
std::string written(std::string_view text) {
  try {
    return JSONEncoder::encode(JSONDecoder::decode<Number>(text));
  } catch (const DecodingError&) {
    return "fails";
  }
}

TEST(CodingTest, NumbersAreExactOrFail) {
  struct {
    std::string (*decode)(std::string_view);
    const char* text;
    const char* outcome;
  } const kRows[] = {
      {&written<int>, "1.0", "1"},
      {&written<int>, "1e2", "100"},
      {&written<int>, "-0.0", "0"},
      {&written<int>, "1.5", "fails"},
      {&written<int>, "2147483647", "2147483647"},
      {&written<int>, "2147483648", "fails"},
      {&written<int>, "1e300", "fails"},
      {&written<unsigned>, "-1", "fails"},
      {&written<unsigned>, "-1.0", "fails"},
      {&written<std::int64_t>, "-9223372036854775808", "-9223372036854775808"},
      {&written<std::int64_t>, "9223372036854775808", "fails"},
      {&written<std::int64_t>, "9223372036854775808.0", "fails"},
      {&written<std::int64_t>, "-9.223372036854775808e18", "-9223372036854775808"},
      {&written<std::uint64_t>, "18446744073709551615", "18446744073709551615"},
      {&written<std::uint64_t>, "18446744073709551616", "fails"},
      {&written<std::uint64_t>, "9223372036854775808.0", "9223372036854775808"},
      {&written<double>, "7", "7.0"},
      {&written<double>, "0.1", "0.1"},
      {&written<double>, "true", "fails"},
      {&written<float>, "0.5", "0.5"},
      {&written<float>, "1e39", "fails"},
      {&written<bool>, "1", "fails"},
      {&written<std::string>, "1", "fails"},
  };
  for (const auto& row : kRows) EXPECT_EQ(row.decode(row.text), row.outcome) << row.text;
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

#include "quenwick/platform/KeyedArchive.h"

#include <gtest/gtest.h>

#include <cmath>
#include <iostream>
#include <limits>
#include <random>

#include "tests/support/FileContents.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::platform {
namespace {

/// Writes the archive whose objects are the given ones, in Python's words.
constexpr auto kWrite = R"(
import plistlib, sys
from plistlib import UID
objects = ["$null"] + eval(sys.argv[2])
archive = {"$archiver": "NSKeyedArchiver", "$version": 100000,
           "$objects": objects, "$top": {"root": UID(1)}}
archive.update(eval(sys.argv[3]))
plistlib.dump(archive, open(sys.argv[1], "wb"), fmt=plistlib.FMT_BINARY)
)";

class KeyedArchiveTest : public testing::Test {
 protected:
  Bytes fromPython(const std::string& objects, const std::string& changes = "{}") {
    auto made = tests::runProgram({"python3", "-c", kWrite, file_, objects, changes});
    EXPECT_EQ(made.exitCode, 0) << made.errors;
    return tests::contents(file_);
  }

  tests::TemporaryDirectory folder_;
  const std::string file_ = folder_.path() / "archive";
};

// What JSON cannot say; all else is compared with another reader.
TEST_F(KeyedArchiveTest, BytesAndNumbersThatAreNotInJSONComeBackAsTheyWere) {
  for (const auto& [value, object] :
       std::vector<std::pair<Value, Bytes>>{{"\xff\x01", "\x42\xff\x01"},
                                            {0.1F, "\x22\x3d\xcc\xcc\xcd"},
                                            {HUGE_VAL, Bytes("\x22\x7f\x80\0\0", 5)}}) {
    auto archive = KeyedArchive::archivedData(value);
    ASSERT_TRUE(archive);
    EXPECT_NE(archive->find(object), archive->npos) << testing::PrintToString(*archive);
    EXPECT_EQ(KeyedArchive::unarchivedObject(*archive), value);
  }
}

TEST_F(KeyedArchiveTest, NumbersOfOthersAreReadAcrossKinds) {
  struct Case {
    const char* made;
    std::int64_t integer;
    double real;
    bool flag;
  };
  const std::vector<Case> cases = {
      {"[42]", 42, 42, true},
      {"[-1]", -1, -1, true},
      {"[-2**63]", std::numeric_limits<std::int64_t>::min(), -0x1p63, true},
      {"[2**64 - 1]", std::numeric_limits<std::int64_t>::max(), 0x1p64, true},
      {"[True]", 1, 1, true},
      {"[False]", 0, 0, false},
      {"[-2.75]", -2, -2.75, true},
      {"[0.0]", 0, 0, false},
      {"[1e300]", std::numeric_limits<std::int64_t>::max(), 1e300, true},
      {"[-1e300]", std::numeric_limits<std::int64_t>::min(), -1e300, true}};
  for (const auto& [made, integer, real, flag] : cases) {
    auto number = KeyedArchive::unarchivedNumber(fromPython(made));
    ASSERT_TRUE(number) << made;
    EXPECT_EQ(number->integerValue(), integer) << made;
    EXPECT_EQ(number->doubleValue(), real) << made;
    EXPECT_EQ(number->floatValue(), static_cast<float>(real)) << made;
    EXPECT_EQ(number->boolValue(), flag) << made;
  }
}

TEST_F(KeyedArchiveTest, OnlyANumberIsReadAsOne) {
  for (auto made : {"['42']", "[b'42']", "[{'$class': UID(2)}, {'$classname': 'NSNull'}]",
                    "[UID(2), 42]", "[[42]]"}) {
    EXPECT_FALSE(KeyedArchive::unarchivedNumber(fromPython(made))) << made;
  }
}

TEST_F(KeyedArchiveTest, ArchivesThatAreNoneOrRunInCirclesGiveNothing) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"[42]", "{'$archiver': 'another'}"},
      {"[42]", "{'$version': 1}"},
      {"[42]", "{'$top': {}}"},
      {"[42]", "{'$top': {'root': 1}}"},
      {"[42]", "{'$top': {'root': UID(2)}}"},
      {"[42]", "{'$top': {'root': UID(4294967297)}}"},
      {"[42]", "{'$top': {'root': UID(0)}}"},
      {"[42]", "{'$objects': 42}"},
      {"[{'$class': UID(1)}]", "{}"},
      {"[{'$class': UID(2)}, {'$classname': 'NSUnknown'}]", "{}"},
      {"[{'$class': UID(2), 'NS.objects': [UID(1)]}, {'$classname': 'NSArray'}]", "{}"},
      {"[{'$class': UID(2), 'NS.objects': [UID(1), UID(1)]}, {'$classname': 'NSArray'}]", "{}"},
      {"[{'$class': UID(2), 'NS.keys': [UID(3)], 'NS.objects': []}, "
       "{'$classname': 'NSDictionary'}, 'a']",
       "{}"},
      {"[{'$class': UID(2), 'NS.keys': [UID(3), UID(3)], 'NS.objects': [UID(3), UID(3)]}, "
       "{'$classname': 'NSDictionary'}, 'a']",
       "{}"},
      // Thirty lists, each of which holds the next one twice: a thousand million in all.
      {"[{'$class': UID(99), 'NS.objects': [UID(i + 2)] * 2} for i in range(98)] + "
       "[{'$classname': 'NSArray'}]",
       "{}"}};
  for (const auto& [objects, changes] : cases) {
    auto archive = fromPython(objects, changes);
    EXPECT_FALSE(KeyedArchive::unarchivedObject(archive)) << objects << changes;
    EXPECT_FALSE(KeyedArchive::unarchivedNumber(archive)) << objects << changes;
  }
}

/// A binary property list of the objects given as their bytes, the first one on top.
Bytes propertyList(const std::vector<Bytes>& objects) {
  Bytes list = "bplist00";
  Bytes table;
  auto append = [](Bytes& to, std::uint64_t number, int size) {
    for (int shift = 8 * (size - 1); shift >= 0; shift -= 8) {
      to += static_cast<char>(number >> static_cast<unsigned>(shift) & 0xFFU);
    }
  };
  for (const auto& object : objects) {
    append(table, list.size(), 4);
    list += object;
  }
  auto start = list.size();
  list += table + Bytes(6, '\0') + "\x04\x04";
  append(list, objects.size(), 8);
  append(list, 0, 8);
  append(list, start, 8);
  return list;
}

Bytes reference(std::uint32_t to) {
  return {static_cast<char>(to >> 24U), static_cast<char>(to >> 16U), static_cast<char>(to >> 8U),
          static_cast<char>(to)};
}

TEST_F(KeyedArchiveTest, NestingThatWouldExhaustAReaderGivesNothing) {
  std::vector<Bytes> deep;
  std::vector<Bytes> wide;
  for (std::uint32_t i = 1; i <= 300'000; ++i) deep.push_back("\xA1" + reference(i));
  deep.emplace_back("\x08");
  for (std::uint32_t i = 1; i <= 40; ++i) wide.push_back("\xA2" + reference(i) + reference(i));
  wide.emplace_back("\x08");
  for (const auto& list :
       {propertyList(deep), propertyList(wide), propertyList({"\xA1" + reference(0)})}) {
    EXPECT_FALSE(KeyedArchive::unarchivedObject(list));
  }
  Value nested;
  for (int i = 0; i < 2000; ++i) {
    List list;
    list.push_back(std::move(nested));
    nested = std::move(list);
  }
  EXPECT_FALSE(KeyedArchive::archivedData(nested));
}

TEST_F(KeyedArchiveTest, DamagedBytesGiveSomethingOrNothingButNoCrash) {
  auto sound = *KeyedArchive::archivedData(
      Dictionary{{"list", List{1, 2.5, "text", true}}, {"data", "\xff"}, {"null", nullptr}});
  auto seed = std::random_device()();
  std::cout << "seed " << seed << std::endl;  // seen even where the next line is the last one
  std::mt19937 random(seed);
  for (int round = 0; round < 20'000; ++round) {
    auto damaged = sound;
    for (auto changes = random() % 4 + 1; changes > 0; --changes) {
      damaged[random() % damaged.size()] = static_cast<char>(random());
    }
    if (round % 4 == 0) damaged.resize(random() % damaged.size());
    KeyedArchive::unarchivedObject(damaged);
    KeyedArchive::unarchivedNumber(damaged);
  }
  for (const auto& bytes : {Bytes(), Bytes("bplist00"), Bytes(1000, '\0'), Bytes("plain text")}) {
    EXPECT_FALSE(KeyedArchive::unarchivedObject(bytes));
  }
}

}  // namespace
}  // namespace quenwick::platform

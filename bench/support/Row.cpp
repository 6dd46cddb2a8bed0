#include "bench/support/Row.h"

#include <boost/json.hpp>
#include <iostream>

#include "bench/support/Run.h"

namespace quenwick::bench {
namespace {

const char* name(Unit unit) {
  switch (unit) {
    case Unit::seconds:
      return "s";
    case Unit::bytes:
      return "B";
    case Unit::perSecond:
      break;
  }
  return "/s";
}

boost::json::object written(const Target& target, const Row& row) {
  bool isOfRatio = target.of == Target::Of::ratio;
  auto figure = isOfRatio ? row.ratio.value() : row.ours;
  return {{"value", target.value},
          {"of", isOfRatio ? "ratio" : "ours"},
          {"isLeast", target.isLeast},
          {"isMet", target.isLeast ? figure >= target.value : figure <= target.value}};
}

}  // namespace

void print(Row row) {
  if (isOnOneCore()) {
    row.what += ", all threads on one core";
    row.target.reset();
  }
  boost::json::object line{
      {"table", row.table}, {"what", row.what}, {"unit", name(row.unit)}, {"ours", row.ours}};
  if (row.theirs) {
    line["other"] = row.other;
    line["theirs"] = *row.theirs;
  }
  if (row.ratio) line["ratio"] = *row.ratio;
  if (row.target) line["target"] = written(*row.target, row);
  if (row.size) line["size"] = *row.size;
  std::cout << line << std::endl;
}

}  // namespace quenwick::bench

#include "tools/LoadingOptions.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <string>

#include "quenwick/platform/Text.h"

namespace quenwick::tools {
namespace {

std::string fileContents(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  stream.peek();  // a folder is opened, but not read
  if (!stream.is_open() || stream.bad()) throw UsageError("the file " + path + " cannot be read");
  return {std::istreambuf_iterator<char>(stream), {}};
}

template <class Number>
std::optional<Number> number(std::string_view text) {
  Number value{};
  auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  bool isWhole = error == std::errc() && end == text.data() + text.size() && !text.empty();
  return isWhole ? std::optional(value) : std::nullopt;
}

/// HOST:PORT:ADDRESS:PORT
platform::ConnectTo connectTo(const std::string& text) {
  auto first = text.find(':');
  auto second = text.find(':', first == text.npos ? first : first + 1);
  auto last = text.rfind(':');
  if (second != text.npos && last > second + 1) {
    auto port = number<std::uint16_t>(std::string_view(text).substr(first + 1, second - first - 1));
    auto toPort = number<std::uint16_t>(std::string_view(text).substr(last + 1));
    if (port && toPort) {
      return {text.substr(0, first), *port, text.substr(second + 1, last - second - 1), *toPort};
    }
  }
  throw UsageError("--connect-to takes HOST:PORT:ADDRESS:PORT, not " + text);
}

std::optional<Deadline::Seconds> timeout(const Arguments& arguments) {
  auto text = arguments.value("--timeout");
  if (!text) return std::nullopt;
  auto seconds = number<double>(*text);
  constexpr double kLongest = 1e9;
  if (!seconds || !(*seconds >= 0 && *seconds < kLongest)) {
    throw UsageError("--timeout takes seconds, not " + *text);
  }
  return Deadline::Seconds(*seconds);
}

}  // namespace

std::vector<std::string_view> loadingOptions(std::vector<std::string_view> own) {
  own.insert(own.end(), {"--cacert", "--connect-to", "--timeout"});
  return own;
}

platform::URLSessionConfiguration sessionConfiguration(const Arguments& arguments) {
  platform::URLSessionConfiguration configuration;
  if (auto file = arguments.value("--cacert")) {
    configuration.additionalTrustAnchors = fileContents(*file);
    if (!platform::holdsCertificate(configuration.additionalTrustAnchors)) {
      throw UsageError("the file " + *file + " holds no certificate");
    }
  }
  for (const auto& text : arguments.values("--connect-to")) {
    configuration.connectTo.push_back(connectTo(text));
  }
  return configuration;
}

Deadline::Deadline(const Arguments& arguments, std::optional<Seconds> otherwise)
    : patience_(timeout(arguments)) {
  if (!patience_) patience_ = otherwise;
  if (!patience_) return;
  timer_ = platform::postAfter(left(), platform::pool(),
                               [stop = stop_]() mutable { stop.request_stop(); });
}

std::chrono::nanoseconds Deadline::left() const {
  using std::chrono::nanoseconds;
  if (!patience_) return nanoseconds::max();
  auto end = begin_ + std::chrono::duration_cast<nanoseconds>(*patience_);
  return std::max(nanoseconds(end - std::chrono::steady_clock::now()), nanoseconds(0));
}

std::string Deadline::line() const {
  std::array<char, 400> digits{};  // the least of them has as many
  auto written = std::to_chars(digits.begin(), digits.end(), patience_.value_or(Seconds()).count(),
                               std::chars_format::fixed);
  return "no answer within " + std::string(digits.begin(), written.ptr) + " s";
}

}  // namespace quenwick::tools

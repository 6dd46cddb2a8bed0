// Answers each line of standard input with one of standard output, for comparison with programs
// that have nothing of ours: answer_lines KIND [WORD...]

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <string>
#include <vector>

#include "quenwick/API/Stack/URLEncoding.h"
#include "quenwick/deeplink/DeeplinkPath.h"
#include "quenwick/deeplink/LinkOperations.h"
#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/KeyedArchive.h"
#include "quenwick/platform/URLComponents.h"
#include "quenwick/platform/URLSession.h"

namespace {

using namespace quenwick;
using platform::JSONSerialization;
using Words = std::vector<std::string>;

/// Bytes of any kind stand in a line as hexadecimal digits.
std::string bytesOf(const std::string& digits) {
  std::string bytes;
  for (std::size_t i = 0; i + 1 < digits.size(); i += 2) {
    bytes += static_cast<char>(std::stoi(digits.substr(i, 2), nullptr, 16));
  }
  return bytes;
}

std::string digitsOf(std::string_view bytes) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string digits;
  for (char c : bytes) {
    digits += kDigits[static_cast<unsigned char>(c) >> 4];
    digits += kDigits[static_cast<unsigned char>(c) & 15];
  }
  return digits;
}

/// Letters ("n" no brackets, "l" literal booleans), a blank, an object: its query.
std::string query(const std::string& line) {
  auto blank = line.find(' ');
  auto letters = line.substr(0, blank);
  URLEncoding encoding;
  if (letters.find('n') != letters.npos) {
    encoding.arrayEncoding = URLEncoding::ArrayEncoding::noBrackets;
  }
  if (letters.find('l') != letters.npos) encoding.boolEncoding = URLEncoding::BoolEncoding::literal;
  auto value = JSONSerialization::parse(line.substr(blank + 1));
  return encoding.query(*value.as<platform::Dictionary>());
}

/// The bytes of a document: the document as it is read, or "refused".
std::string json(const std::string& line) {
  try {
    return JSONSerialization::text(JSONSerialization::parse(bytesOf(line)));
  } catch (const platform::JSONError&) {
    return "refused";
  }
}

std::string archived(const std::string& line) {
  auto archive = platform::KeyedArchive::archivedData(JSONSerialization::parse(line));
  return archive ? digitsOf(*archive) : "refused";
}

std::string unarchived(const std::string& line) {
  try {
    auto value = platform::KeyedArchive::unarchivedObject(bytesOf(line));
    return value ? JSONSerialization::text(*value) : "refused";
  } catch (const platform::JSONError&) {
    return "no JSON";
  }
}

/// A link: its shape, and the rules key of its path, each "-" where it is none.
std::string link(const std::string& line) {
  auto url = platform::URL::parse(line);
  if (!url) return "refused";
  auto shape = DeeplinkPath::path(*url);
  auto key = findRPKey(platform::URLComponents(*url).path());
  return std::string(shape ? shape->rawValue() : "-") + " " + key.value_or("-");
}

class Counter : public platform::URLSessionTaskDelegate {
 public:
  platform::Task<std::optional<platform::URLRequest>> urlSession(
      platform::URLSession&, platform::URLSessionTask&, platform::HTTPURLResponse,
      platform::URLRequest next) override {
    ++redirects;
    co_return next;
  }
  int redirects = 0;
};

/// A URL: the status at the end of its redirects, or 0 where the last could not be loaded, how many
/// there were, and the last URL. The words are the issuer's file and the ports of HTTPS and HTTP.
std::string loaded(const std::string& line, const Words& words) {
  std::ifstream issuer(words.at(0));
  auto port = [&](std::size_t i) { return static_cast<std::uint16_t>(std::stoi(words.at(i))); };
  auto counter = std::make_shared<Counter>();
  auto session = platform::URLSession::make(
      {.additionalTrustAnchors = {std::istreambuf_iterator<char>(issuer), {}},
       .connectTo = {{"", 443, "127.0.0.1", port(1)}, {"", 80, "127.0.0.1", port(2)}}},
      counter);
  std::string end;
  int status = 0;
  try {
    auto outcome = platform::wait(session->data({.url = platform::URL::parse(line)}));
    end = outcome.response->url->absoluteString();
    status = dynamic_cast<const platform::HTTPURLResponse&>(*outcome.response).statusCode;
  } catch (const platform::PlatformError& error) {
    end = error.userInfo().at(std::string(platform::NSURLErrorFailingURLStringErrorKey));
  }
  return std::to_string(status) + " " + std::to_string(counter->redirects) + " " + end;
}

std::string answer(const std::string& kind, const std::string& line, const Words& words) {
  if (kind == "query") return query(line);
  if (kind == "json") return json(line);
  if (kind == "archive") return archived(line);
  if (kind == "unarchive") return unarchived(line);
  if (kind == "link") return link(line);
  return loaded(line, words);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 2) return 2;
  const Words words(arguments + 2, arguments + count);
  std::ios::sync_with_stdio(false);
  std::string line;
  while (std::getline(std::cin, line)) std::cout << answer(arguments[1], line, words) << '\n';
  return 0;
}

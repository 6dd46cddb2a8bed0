#include "examples/shop/Options.h"

#include <charconv>
#include <fstream>
#include <sstream>

namespace shop {
namespace {

std::string contents(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  if (!stream || !text || text.str().empty()) throw UsageError("cannot read " + file);
  return text.str();
}

quenwick::ConnectTo toThisMachine(std::uint16_t port, const std::string& text) {
  std::uint16_t found = 0;
  auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), found);
  if (error != std::errc() || *stop != '\0') throw UsageError(text + " is no port");
  return {.port = port, .toAddress = "127.0.0.1", .toPort = found};
}

void take(Options& options, const std::string& name, const std::string& value) {
  if (name == "--service") {
    options.serviceURL = value;
  } else if (name == "--authority") {
    options.authority = contents(value);
  } else if (name == "--port") {
    options.connectTo.push_back(toThisMachine(443, value));
  } else if (name == "--http-port") {
    options.connectTo.push_back(toThisMachine(80, value));
  } else if (name == "--api-key") {
    options.apiKey = value;
  } else if (name == "--home") {
    options.home = value;
  } else if (name == "--journal") {
    options.journal = value;
  } else {
    throw UsageError("there is no option " + name);
  }
}

}  // namespace

const char* const kUsage =
    "usage: shop [--service URL] [--authority PEM] [--port N] [--http-port N] [--api-key KEY]\n"
    "            [--home FOLDER] [--journal FILE] LINK\n";

Options parse(std::span<char* const> words) {
  Options options;
  while (!words.empty()) {
    std::string word = words[0];
    if (word == "--help" || word == "-h") {
      options.asksForHelp = true;
      return options;
    }
    if (!word.starts_with("--")) {
      options.link = word;
      words = words.subspan(1);
    } else if (words.size() < 2) {
      throw UsageError(word + " needs a value");
    } else {
      take(options, word, words[1]);
      words = words.subspan(2);
    }
  }
  if (options.link.empty()) throw UsageError("a link is needed");
  return options;
}

}  // namespace shop

#include "sandbox/CommandLine.h"

#include <charconv>

namespace quenwick::sandbox {
namespace {

std::uint16_t parsePort(std::string_view option, const std::string& text) {
  std::uint16_t port = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc() || stop != end) {
    throw UsageError(std::string(option) + " needs a port number, not \"" + text + "\"");
  }
  return port;
}

/// Reads an option that takes a value; false if there is no such option.
bool readValue(CommandLine& line, std::string_view option, std::string_view value) {
  if (option == "--port")
    line.options.port = parsePort(option, std::string(value));
  else if (option == "--http-port")
    line.options.httpPort = parsePort(option, std::string(value));
  else if (option == "--scenario")
    line.scenarioFile = value;
  else if (option == "--state")
    line.options.state = value;
  else
    return false;
  return true;
}

bool takesValue(std::string_view option) {
  CommandLine unused;
  return readValue(unused, option, "0");
}

}  // namespace

CommandLine parseCommandLine(std::span<char* const> arguments) {
  CommandLine line;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string_view argument = arguments[i];
    const std::string_view option = argument.substr(0, argument.find('='));
    if (argument == "--help" || argument == "-h") {
      line.printsHelp = true;
    } else if (argument == "--print-ca") {
      line.printsAuthority = true;
    } else if (argument == "--version") {
      line.printsVersion = true;
    } else if (!argument.starts_with('-')) {
      throw UsageError("it takes options only, not \"" + std::string(argument) + "\"");
    } else if (!takesValue(option)) {
      throw UsageError("there is no option " + std::string(argument));
    } else if (option != argument) {
      readValue(line, option, argument.substr(option.size() + 1));
    } else if (i + 1 == arguments.size()) {
      throw UsageError(std::string(option) + " needs a value");
    } else {
      readValue(line, option, arguments[++i]);
    }
  }
  return line;
}

std::string_view helpText() {
  return R"(Usage: quenwick-sandbox [options]
Serves tracking links, verification and events, and faults on demand, on 127.0.0.1 over HTTPS
and HTTP.

  --port N         HTTPS port (default 8443; 0 takes a free one)
  --http-port N    HTTP port (default 0)
  --scenario FILE  what to serve, as JSON (default: a built-in scenario)
  --state DIR      folder of what is kept: the certificate authority, a secret
                   (default: quenwick-sandbox in $XDG_DATA_HOME or ~/.local/share)
  --print-ca       print the path of the authority's certificate and exit
  --version        print the version and exit
  -h, --help       print this text and exit
)";
}

}  // namespace quenwick::sandbox

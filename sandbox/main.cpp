#include <signal.h>

#include <exception>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string_view>

#include "sandbox/CertificateAuthority.h"
#include "sandbox/CommandLine.h"
#include "sandbox/Sandbox.h"

namespace quenwick::sandbox {
namespace {

constexpr int kBadUsage = 2;

/// SIGINT and SIGTERM, blocked from here on, to be waited for.
sigset_t blockEndingSignals() {
  sigset_t signals;
  ::sigemptyset(&signals);
  ::sigaddset(&signals, SIGINT);
  ::sigaddset(&signals, SIGTERM);
  ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  return signals;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file || std::filesystem::is_directory(path))
    throw UsageError("the file " + path.string() + " cannot be read");
  if (text.str().empty()) throw UsageError("the file " + path.string() + " is empty");
  return text.str();
}

/// Writes all that there is to say.
void print(std::string_view text) {
  std::cout << text << std::flush;
  if (!std::cout) throw std::runtime_error("standard output cannot be written");
}

std::string inQuotes(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? R"('\'')" : std::string(1, c);
  return quoted + "'";
}

/// A link as a client can ask for it: one for any host is given one.
std::string pasteable(const std::string& link) {
  return link.starts_with('/') ? "https://localhost" + link : link;
}

void announce(const Sandbox& sandbox) {
  const std::string port = std::to_string(sandbox.port());
  const std::string httpPort = std::to_string(sandbox.httpPort());
  const std::string authority = sandbox.certificateAuthority().string();
  const std::string reach = " --cacert " + inQuotes(authority) +
                            " --connect-to :443:127.0.0.1:" + port +
                            " --connect-to :80:127.0.0.1:" + httpPort;
  std::cout << "HTTPS:     127.0.0.1:" << port << "\nHTTP:      127.0.0.1:" << httpPort
            << "\nAuthority: " << authority
            << "\n\nResolve a link (curl -iL takes the same options):\n"
            << "  quenwick resolve LINK" << reach;
  if (!sandbox.keys().empty()) {
    std::cout << "\n\nVerify an API key:\n  quenwick verify --api-key "
              << inQuotes(sandbox.keys().front()) << " --service " << inQuotes(sandbox.service())
              << reach;
  }
  std::cout << "\n\nLinks:\n";
  for (const std::string& link : sandbox.links()) std::cout << pasteable(link) << '\n';
  std::cout << std::flush;
}

int run(std::span<char* const> arguments) {
  CommandLine line = parseCommandLine(arguments);
  if (line.printsHelp) return print(helpText()), 0;
  if (line.printsVersion) return print("quenwick-sandbox " QUENWICK_VERSION "\n"), 0;
  if (line.options.state.empty()) line.options.state = Sandbox::defaultState();
  if (line.printsAuthority) {
    print(CertificateAuthority::inFolder(line.options.state).file().string() + '\n');
    return 0;
  }
  if (line.scenarioFile) line.options.scenario = readFile(*line.scenarioFile);
  const sigset_t signals = blockEndingSignals();
  const Sandbox sandbox(line.options);
  announce(sandbox);
  int signal = 0;
  ::sigwait(&signals, &signal);
  return 0;
}

}  // namespace
}  // namespace quenwick::sandbox

int main(int count, char** arguments) {
  using namespace quenwick::sandbox;
  const std::span<char* const> all(arguments, static_cast<std::size_t>(count));
  try {
    return run(all.subspan(1));
  } catch (const UsageError& error) {
    std::cerr << "quenwick-sandbox: " << error.what() << "\n\n" << helpText();
    return kBadUsage;
  } catch (const ScenarioError& error) {
    std::cerr << "quenwick-sandbox: " << error.what() << '\n';
    return kBadUsage;
  } catch (const std::exception& error) {
    std::cerr << "quenwick-sandbox: " << error.what() << '\n';
    return 1;
  }
}

#include "quenwick/runtime/RuntimeConfiguration.h"

#include <algorithm>

#include "quenwick/platform/JSONSerialization.h"
#include "quenwick/platform/Text.h"
#include "quenwick/runtime/HostContext.h"
#include "quenwick/runtime/Kind.h"

namespace quenwick::runtime {

template <>
struct Kind<std::filesystem::path> {
  static constexpr std::string_view name = "text";
  static std::filesystem::path read(platform::Value&& value) {
    auto path = Kind<std::string>::read(std::move(value));
    if (path.find('\0') != path.npos) throw ArgumentError("is no path");
    return path;
  }
};

template <>
struct Kind<KeychainKind> {
  static constexpr std::string_view name = "text";
  static KeychainKind read(platform::Value value) {
    auto text = Kind<std::string>::read(std::move(value));
    if (text == "automatic") return KeychainKind::automatic;
    if (text == "keyring") return KeychainKind::keyring;
    if (text == "sealedFile") return KeychainKind::sealedFile;
    throw ArgumentError("is no kind of keychain");
  }
};

template <>
struct Kind<std::uint16_t> {
  static constexpr std::string_view name = "integer";
  static std::uint16_t read(const platform::Value& value) {
    auto number = Kind<std::int64_t>::read(value);
    if (!std::in_range<std::uint16_t>(number)) throw ArgumentError("is no port");
    return static_cast<std::uint16_t>(number);
  }
};

template <>
struct Kind<ConnectTo> {
  static constexpr std::string_view name = "dictionary";
  static ConnectTo read(platform::Value&& value) {
    Fields fields(name, std::move(value));
    ConnectTo standard;
    auto text = [&](std::string_view key) {
      return fields.take<std::optional<std::string>>(key).value_or(std::string());
    };
    auto port = [&](std::string_view key, std::uint16_t otherwise) {
      return fields.take<std::optional<std::uint16_t>>(key).value_or(otherwise);
    };
    ConnectTo entry{.host = text("host"),
                    .port = port("port", standard.port),
                    .toAddress = text("toAddress"),
                    .toPort = port("toPort", standard.toPort)};
    fields.end();
    return entry;
  }
};

namespace {

using Text = std::optional<std::string>;
using Path = std::optional<std::filesystem::path>;

void runAndFree(void* work) {
  auto* function = static_cast<std::function<void()>*>(work);
  (*function)();
  delete function;
}

auto posting(decltype(quenwick_executor::post) post, std::shared_ptr<HostContext> context) {
  return [post, context = std::move(context)](std::function<void()> work) {
    context->use([&](void* pointer) {
      post(pointer, runAndFree, new std::function<void()>(std::move(work)));
    });
  };
}

// A level is handed to C as its number.
static_assert(static_cast<int>(LogLevel::debug) == QUENWICK_LOG_DEBUG);
static_assert(static_cast<int>(LogLevel::standard) == QUENWICK_LOG_DEFAULT);
static_assert(static_cast<int>(LogLevel::error) == QUENWICK_LOG_ERROR);

auto writing(decltype(quenwick_log::write) write, std::shared_ptr<HostContext> context) {
  return [write, context = std::move(context)](LogLevel level, std::string_view message) {
    auto text = platform::madeUTF8(message);
    std::ranges::replace(text, '\0', ' ');
    context->use([&](void* pointer) { write(pointer, static_cast<int>(level), text.c_str()); });
  };
}

}  // namespace

Configuration configurationFrom(const char* json) {
  if (!json) throw ArgumentError("the configuration is a null pointer");
  Fields fields("the configuration", platform::JSONSerialization::parse(json));
  Configuration configuration{
      .serviceURL = fields.take<Text>("serviceURL"),
      .trustAnchors = fields.take<Text>("trustAnchors").value_or(std::string()),
      .connectTo = fields.take<std::optional<std::vector<ConnectTo>>>("connectTo")
                       .value_or(std::vector<ConnectTo>()),
      .bundleIdentifier = fields.take<Text>("bundleIdentifier"),
      .bundleVersion = fields.take<Text>("bundleVersion"),
      .infoPlist = fields.take<Path>("infoPlist"),
      .home = fields.take<Path>("home"),
      .keychain =
          fields.take<std::optional<KeychainKind>>("keychain").value_or(KeychainKind::automatic)};
  fields.end();
  return configuration;
}

HostFunctions::HostFunctions(const quenwick_executor* executor, const quenwick_log* log) {
  // Both are the library's before either can be refused.
  auto executorContext =
      executor ? HostContext::make(executor->context, executor->destroy) : nullptr;
  auto logContext = log ? HostContext::make(log->context, log->destroy) : nullptr;
  if (executor && !executor->post) throw ArgumentError("the executor has no function");
  if (log && !log->write) throw ArgumentError("the log has no function");
  if (executor) mainExecutor = posting(executor->post, std::move(executorContext));
  if (log) logHook = writing(log->write, std::move(logContext));
}

}  // namespace quenwick::runtime

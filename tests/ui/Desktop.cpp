#include "tests/ui/Desktop.h"

#include <fstream>

#include "tests/support/FileContents.h"
#include "tests/support/Program.h"

namespace quenwick::tests {
namespace {

/// The engine keeps its processes in namespaces of their own, which not every container allows.
bool canSandbox() {
  static const bool can =
      runProgram({"bwrap", "--unshare-all", "--ro-bind", "/", "/", "--proc", "/proc", "true"})
          .exitCode == 0;
  return can;
}

}  // namespace

/// Makes a program of the test the one that opens URLs: it writes them down.
Desktop::Desktop() {
  auto folder = folder_.path();
  std::filesystem::create_directories(folder / "applications");
  auto script = folder / "open";
  std::ofstream(script) << "#!/bin/sh\nprintf '%s\\n' \"$1\" >> '" << (folder / "opened").string()
                        << "'\n";
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  std::ofstream(folder / "applications" / "recorder.desktop")
      << "[Desktop Entry]\nType=Application\nName=Recorder\nExec=" << script.string() << " %u\n"
      << "MimeType=x-scheme-handler/http;\n";
  std::ofstream list(folder / "mimeapps.list");
  list << "[Default Applications]\n";
  for (auto* scheme : {"http", "https", "tel", "shopapp"}) {
    list << "x-scheme-handler/" << scheme << "=recorder.desktop\n";
  }
}

std::map<std::string, std::optional<std::string>> Desktop::environment(
    const std::string& display) const {
  auto folder = folder_.path().string();
  std::map<std::string, std::optional<std::string>> variables{
      {"DISPLAY", display},
      {"WAYLAND_DISPLAY", std::nullopt},
      {"DBUS_SESSION_BUS_ADDRESS", "disabled:"},
      {"G_DEBUG", "fatal-criticals"},
      {"GDK_BACKEND", "x11"},
      {"GSK_RENDERER", "cairo"},
      {"GTK_A11Y", "test"},
      {"GSETTINGS_BACKEND", "memory"},
      {"HOME", folder},
      {"LC_ALL", "C.UTF-8"},
      {"LIBGL_ALWAYS_SOFTWARE", "1"},
      {"WEBKIT_DISABLE_DMABUF_RENDERER", "1"},
      {"http_proxy", std::nullopt},
      {"https_proxy", std::nullopt},
  };
  for (auto* name : {"XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME"}) {
    variables[name] = folder;
  }
  if (!canSandbox()) variables["WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS"] = "1";
  return variables;
}

std::vector<std::string> Desktop::opened() {
  auto all = contents(folder_.path() / "opened");
  std::vector<std::string> urls;
  for (std::size_t end; (end = all.find('\n', openedSize_)) != all.npos; openedSize_ = end + 1) {
    urls.push_back(all.substr(openedSize_, end - openedSize_));
  }
  return urls;
}

}  // namespace quenwick::tests

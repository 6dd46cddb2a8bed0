#pragma once

#include <filesystem>
#include <string>

#include "sandbox/Certificate.h"

namespace quenwick::sandbox {

/// What the sandbox keeps between starts: files in a folder of mode 0700, locked against other
/// processes (and threads) that ask for the same folder while this lives.
class StateFolder {
 public:
  /// Makes the folder, and those above it. One that exists keeps its mode.
  explicit StateFolder(const std::filesystem::path& path);
  ~StateFolder();
  StateFolder(const StateFolder&) = delete;
  StateFolder& operator=(const StateFolder&) = delete;

  /// The PEM file of the authority's certificate.
  std::filesystem::path authorityFile() const { return file("ca.pem"); }

  /// The authority's certificate and key; what is missing or damaged is left empty.
  Certificate readAuthority() const;
  void writeAuthority(const Certificate& made) const;

  /// 64 hexadecimal digits that nobody else can read, drawn when there are none.
  std::string secret() const;

 private:
  std::filesystem::path file(const char* name) const { return path_ / name; }

  std::filesystem::path path_;
  int lock_;
};

}  // namespace quenwick::sandbox

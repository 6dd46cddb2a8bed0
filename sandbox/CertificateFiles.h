#pragma once

#include <filesystem>

#include "sandbox/Certificate.h"

namespace quenwick::sandbox {

/// Makes a folder of mode 0700, and those above it. One that exists keeps its mode.
void makePrivateFolder(const std::filesystem::path& folder);

/// Keeps other processes (and threads) that ask for the same folder waiting while it lives.
class FolderLock {
 public:
  explicit FolderLock(const std::filesystem::path& folder);
  ~FolderLock();
  FolderLock(const FolderLock&) = delete;
  FolderLock& operator=(const FolderLock&) = delete;

 private:
  int file_;
};

/// Reads both PEM files; what is missing or damaged is left empty.
Certificate readCertificate(const std::filesystem::path& certificate,
                            const std::filesystem::path& key);

/// Replaces both files, the key's with mode 0600.
void writeCertificate(const Certificate& made, const std::filesystem::path& certificate,
                      const std::filesystem::path& key);

}  // namespace quenwick::sandbox

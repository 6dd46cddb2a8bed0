#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "sandbox/Certificate.h"

namespace quenwick::sandbox {

enum class CertificateFault;

/// Signs the servers' certificates.
class CertificateAuthority {
 public:
  /// The authority kept in a folder (0700; its key 0600), made anew when there is none or it has
  /// run out. Several processes may call this at once. Throws `std::runtime_error`.
  static CertificateAuthority inFolder(const std::filesystem::path& path);

  /// An authority that nobody trusts, kept nowhere.
  static CertificateAuthority temporary();

  /// A certificate for these hosts, valid now.
  Certificate certificate(const std::vector<std::string>& hosts) const;

  /// A certificate for these hosts that a client must refuse.
  Certificate faultyCertificate(CertificateFault fault,
                                const std::vector<std::string>& hosts) const;

  /// Where the authority's own certificate lies as PEM; empty for a temporary one.
  const std::filesystem::path& file() const { return file_; }

 private:
  explicit CertificateAuthority(Certificate own, std::filesystem::path file = {})
      : own_(std::move(own)), file_(std::move(file)) {}

  Certificate own_;
  std::filesystem::path file_;
};

}  // namespace quenwick::sandbox

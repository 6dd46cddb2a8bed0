#include "sandbox/CertificateFiles.h"

#include <fcntl.h>
#include <openssl/pem.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <system_error>

namespace quenwick::sandbox {
namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

void require(bool succeeded, const std::filesystem::path& path) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), path.string());
}

/// Writes beside the file and puts it in its place at once, so that no reader sees half of it.
void replaceFile(const std::filesystem::path& path, mode_t mode,
                 const std::function<bool(std::FILE*)>& write) {
  const std::filesystem::path draft = path.string() + ".new";
  ::unlink(draft.c_str());
  const int descriptor = ::open(draft.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, mode);
  require(descriptor >= 0, draft);
  File file(::fdopen(descriptor, "w"));
  require(file != nullptr, draft);
  requireOpenSSL(write(file.get()), "write " + draft.string());
  require(std::fflush(file.get()) == 0, draft);
  require(std::rename(draft.c_str(), path.c_str()) == 0, path);
}

}  // namespace

void makePrivateFolder(const std::filesystem::path& folder) {
  if (std::filesystem::is_directory(folder)) return;
  if (folder.has_parent_path()) std::filesystem::create_directories(folder.parent_path());
  require(::mkdir(folder.c_str(), 0700) == 0 || errno == EEXIST, folder);
}

FolderLock::FolderLock(const std::filesystem::path& folder)
    : file_(::open((folder / "lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600)) {
  require(file_ >= 0, folder / "lock");
  int result = 0;
  do {
    result = ::flock(file_, LOCK_EX);
  } while (result != 0 && errno == EINTR);
}

FolderLock::~FolderLock() { ::close(file_); }

Certificate readCertificate(const std::filesystem::path& certificate,
                            const std::filesystem::path& key) {
  Certificate result;
  if (const File file{std::fopen(certificate.c_str(), "re")}) {
    result.certificate.reset(PEM_read_X509(file.get(), nullptr, nullptr, nullptr));
  }
  if (const File file{std::fopen(key.c_str(), "re")}) {
    result.key.reset(PEM_read_PrivateKey(file.get(), nullptr, nullptr, nullptr));
  }
  return result;
}

void writeCertificate(const Certificate& made, const std::filesystem::path& certificate,
                      const std::filesystem::path& key) {
  replaceFile(key, 0600, [&made](std::FILE* file) {
    return PEM_write_PrivateKey(file, made.key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1;
  });
  replaceFile(certificate, 0644, [&made](std::FILE* file) {
    return PEM_write_X509(file, made.certificate.get()) == 1;
  });
}

}  // namespace quenwick::sandbox

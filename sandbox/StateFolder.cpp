#include "sandbox/StateFolder.h"

#include <fcntl.h>
#include <openssl/pem.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <functional>
#include <memory>
#include <system_error>

#include "sandbox/Text.h"

namespace quenwick::sandbox {
namespace {

constexpr const char* kKey = "ca-key.pem";
constexpr const char* kSecret = "secret";
constexpr std::size_t kSecretLength = 64;

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

void makePrivateFolder(const std::filesystem::path& folder) {
  std::error_code error;
  if (std::filesystem::is_directory(folder, error)) return;
  std::filesystem::create_directories(folder.parent_path(), error);
  if (!error && ::mkdir(folder.c_str(), 0700) != 0 && errno != EEXIST) {
    error.assign(errno, std::generic_category());
  }
  if (!error) return;
  throw std::system_error(error, "the folder " + folder.string() + " cannot be made");
}

}  // namespace

StateFolder::StateFolder(const std::filesystem::path& path)
    : path_(std::filesystem::absolute(path)), lock_(-1) {
  makePrivateFolder(path_);
  lock_ = ::open(file("lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  require(lock_ >= 0, file("lock"));
  int result = 0;
  do {
    result = ::flock(lock_, LOCK_EX);
  } while (result != 0 && errno == EINTR);
}

StateFolder::~StateFolder() { ::close(lock_); }

Certificate StateFolder::readAuthority() const {
  Certificate result;
  if (const File pem{std::fopen(authorityFile().c_str(), "re")}) {
    result.certificate.reset(PEM_read_X509(pem.get(), nullptr, nullptr, nullptr));
  }
  if (const File pem{std::fopen(file(kKey).c_str(), "re")}) {
    result.key.reset(PEM_read_PrivateKey(pem.get(), nullptr, nullptr, nullptr));
  }
  return result;
}

void StateFolder::writeAuthority(const Certificate& made) const {
  replaceFile(file(kKey), 0600, [&made](std::FILE* pem) {
    return PEM_write_PrivateKey(pem, made.key.get(), nullptr, nullptr, 0, nullptr, nullptr) == 1;
  });
  replaceFile(authorityFile(), 0644,
              [&made](std::FILE* pem) { return PEM_write_X509(pem, made.certificate.get()) == 1; });
}

std::string StateFolder::secret() const {
  std::string text(kSecretLength, '\0');
  const File kept(std::fopen(file(kSecret).c_str(), "re"));
  if (kept && std::fread(text.data(), 1, text.size(), kept.get()) == text.size() &&
      std::ranges::all_of(text, isHexadecimal)) {
    return text;
  }
  text = drawHexadecimal(text.size());
  replaceFile(file(kSecret), 0600, [&text](std::FILE* secret) {
    return std::fwrite(text.data(), 1, text.size(), secret) == text.size();
  });
  return text;
}

}  // namespace quenwick::sandbox

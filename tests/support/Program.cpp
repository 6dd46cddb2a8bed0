#include "tests/support/Program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/support/FileContents.h"
#include "tests/support/TemporaryDirectory.h"

namespace quenwick::tests {

Finished runProgram(const std::vector<std::string>& words) {
  TemporaryDirectory folder;
  auto output = folder.path() / "output";
  auto errors = folder.path() / "errors";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  constexpr int kNew = O_WRONLY | O_CREAT | O_TRUNC;
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, output.c_str(), kNew, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errors.c_str(), kNew, 0600);

  std::vector<std::string> line{"timeout", "--signal=KILL", "60"};
  line.insert(line.end(), words.begin(), words.end());
  std::vector<char*> arguments;
  for (auto& word : line) arguments.push_back(word.data());
  arguments.push_back(nullptr);

  pid_t process = 0;
  int error = posix_spawnp(&process, arguments[0], &actions, nullptr, arguments.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw std::runtime_error("the program did not start");
  int status = 0;
  waitpid(process, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), contents(output),
          contents(errors)};
}

}  // namespace quenwick::tests

// Child processes for the end-to-end suites: posix_spawn with stdout and
// stderr on files, or stderr on a pseudo-terminal drained while the child runs.
#include "process_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

extern char** environ;

namespace ZeltoCliTest {

std::string ReadFileBytes(const std::string& path) {
  std::ostringstream bytes;
  bytes << std::ifstream(path, std::ios::binary).rdbuf();
  return bytes.str();
}

std::string FreshDirectory(const std::string& name) {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  const std::filesystem::path directory = std::filesystem::path(ZELTO_CLI_TEST_TMP) /
      (test->test_suite_name() + std::string(".") + test->name()) / name;
  std::filesystem::remove_all(directory);
  std::filesystem::create_directories(directory);
  return directory.string();
}

ProcessResult RunZeltoMesh(const std::vector<std::string>& arguments, const std::string& directory,
                           const std::vector<std::string>& environment, bool terminal) {
  ProcessResult result;
  const std::string program = std::string(ZELTO_BINARY_DIR) + "/zelto-mesh";
  const std::string out_path = directory + "/.stdout";
  std::string err_path = directory + "/.stderr";
  // This process holds both ends of the terminal, so that it exists before
  // the child opens it and after the child has gone.
  int pty = -1, held = -1;
  if (terminal) {
    pty = posix_openpt(O_RDWR | O_NOCTTY);
    if (pty < 0 || grantpt(pty) != 0 || unlockpt(pty) != 0) ADD_FAILURE() << "no pseudo-terminal";
    err_path = ptsname(pty);
    held = open(err_path.c_str(), O_RDWR | O_NOCTTY);
  }
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err_path.c_str(),
                                   terminal ? O_WRONLY | O_NOCTTY : O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
  std::vector<char*> argv{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (char** entry = environ; *entry != nullptr; ++entry) envp.push_back(*entry);
  for (const std::string& entry : environment) envp.push_back(const_cast<char*>(entry.c_str()));
  envp.push_back(nullptr);
  pid_t child = -1;
  const int spawned =
      posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) ADD_FAILURE() << "cannot run " << program << ": " << std::strerror(spawned);
  // On a terminal, drain it while the child runs, so that the child never
  // blocks on a full one, and once more after it has exited.
  for (bool exited = spawned != 0; !exited || pty >= 0;) {
    pollfd ready{pty, POLLIN, 0};
    char buffer[4096];
    if (pty >= 0 && poll(&ready, 1, 20) > 0 && (ready.revents & POLLIN) != 0) {
      const ssize_t count = read(pty, buffer, sizeof buffer);
      result.err.append(buffer, count > 0 ? static_cast<size_t>(count) : 0);
      continue;
    }
    if (exited) break;
    int status = 0;
    const pid_t waited = waitpid(child, &status, pty >= 0 ? WNOHANG : 0);
    exited = waited == child || (waited < 0 && errno != EINTR);
    if (exited) result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  result.out = ReadFileBytes(out_path);
  std::filesystem::remove(out_path);
  if (!terminal) result.err = ReadFileBytes(err_path);
  if (!terminal) std::filesystem::remove(err_path);
  close(held);
  close(pty);
  return result;
}

}  // namespace ZeltoCliTest

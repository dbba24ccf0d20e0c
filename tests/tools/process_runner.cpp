#include "process_runner.h"

#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

extern char** environ;

namespace ZeltoCliTest {

std::string ReadFileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream bytes;
  bytes << file.rdbuf();
  return bytes.str();
}

std::string FreshDirectory(const std::string& name) {
  const auto* test = ::testing::UnitTest::GetInstance()->current_test_info();
  // Under this build's tree: builds of other presets may run the same tests
  // at the same time.
  const std::filesystem::path directory = std::filesystem::path(ZELTO_CLI_TEST_TMP) /
                                          (std::string(test->test_suite_name()) + "." +
                                           test->name()) /
                                          name;
  std::filesystem::remove_all(directory);
  std::filesystem::create_directories(directory);
  return directory.string();
}

namespace {

std::string ProgramPath() { return std::string(ZELTO_BINARY_DIR) + "/zelto-mesh"; }

// Spawns zelto-mesh in `workingDirectory` with stdin from /dev/null, stdout
// to `out_path` and stderr to `err_path` (a file, or a terminal device).
pid_t Spawn(const std::vector<std::string>& arguments, const std::string& workingDirectory,
            const std::vector<std::string>& environment, const std::string& out_path,
            const std::string& err_path, int err_flags) {
  const std::string program = ProgramPath();
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, out_path.c_str(),
                                   O_WRONLY | O_CREAT | O_TRUNC, 0644);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, err_path.c_str(), err_flags, 0644);
  // Relative paths such as the default out/ land in the working directory.
  posix_spawn_file_actions_addchdir_np(&actions, workingDirectory.c_str());

  std::vector<char*> argv;
  argv.push_back(const_cast<char*>(program.c_str()));
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  std::vector<char*> envp;
  for (char** entry = environ; *entry != nullptr; ++entry) envp.push_back(*entry);
  for (const std::string& entry : environment) envp.push_back(const_cast<char*>(entry.c_str()));
  envp.push_back(nullptr);

  pid_t child = 0;
  const int spawned =
      posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), envp.data());
  posix_spawn_file_actions_destroy(&actions);
  if (spawned != 0) {
    ADD_FAILURE() << "cannot run " << program << ": " << std::strerror(spawned);
    return -1;
  }
  return child;
}

int WaitForExit(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ProcessResult RunZeltoMesh(const std::vector<std::string>& arguments,
                           const std::string& workingDirectory,
                           const std::vector<std::string>& environment) {
  ProcessResult result;
  std::filesystem::create_directories(workingDirectory);
  const std::string out_path = workingDirectory + "/.stdout";
  const std::string err_path = workingDirectory + "/.stderr";
  const pid_t child = Spawn(arguments, workingDirectory, environment, out_path, err_path,
                            O_WRONLY | O_CREAT | O_TRUNC);
  if (child < 0) return result;
  result.exitCode = WaitForExit(child);
  result.out = ReadFileBytes(out_path);
  result.err = ReadFileBytes(err_path);
  std::filesystem::remove(out_path);
  std::filesystem::remove(err_path);
  return result;
}

ProcessResult RunZeltoMeshOnTerminal(const std::vector<std::string>& arguments,
                                     const std::string& workingDirectory) {
  ProcessResult result;
  std::filesystem::create_directories(workingDirectory);
  const int terminal = posix_openpt(O_RDWR | O_NOCTTY);
  if (terminal < 0 || grantpt(terminal) != 0 || unlockpt(terminal) != 0) {
    ADD_FAILURE() << "no pseudo-terminal: " << std::strerror(errno);
    return result;
  }
  // This process holds the terminal's other end too, so that it exists
  // before the child opens it and after the child is gone.
  const std::string terminal_name = ptsname(terminal);
  const int held = open(terminal_name.c_str(), O_RDWR | O_NOCTTY);
  const std::string out_path = workingDirectory + "/.stdout";
  const pid_t child =
      Spawn(arguments, workingDirectory, {}, out_path, terminal_name, O_WRONLY | O_NOCTTY);
  if (child >= 0) {
    // Drain the terminal while the child runs, so that it never blocks on
    // it, and once more after it has exited.
    bool exited = false;
    int status = 0;
    char buffer[4096];
    for (;;) {
      pollfd ready{terminal, POLLIN, 0};
      if (poll(&ready, 1, 20) > 0 && (ready.revents & POLLIN) != 0) {
        const ssize_t count = read(terminal, buffer, sizeof buffer);
        if (count > 0) result.err.append(buffer, static_cast<size_t>(count));
        continue;
      }
      if (exited) break;
      exited = waitpid(child, &status, WNOHANG) == child;
    }
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    result.out = ReadFileBytes(out_path);
  }
  close(held);
  close(terminal);
  std::filesystem::remove(out_path);
  return result;
}

}  // namespace ZeltoCliTest

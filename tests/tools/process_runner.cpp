// Child processes for the end-to-end suites, started through the shell with
// stdout on a file and stderr on a file or on a pseudo-terminal.
#include "process_runner.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

// A program built for another machine runs under its emulator.
#ifndef ZELTO_CLI_LAUNCHER
#define ZELTO_CLI_LAUNCHER ""
#endif

namespace ZeltoCliTest {

std::string ReadFileBytes(const std::string& path) {
  return std::string(std::istreambuf_iterator<char>(std::ifstream(path).rdbuf()), {});
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
  // Holding both ends, this process keeps what the child wrote until it reads it.
  const int pty = terminal ? posix_openpt(O_RDWR | O_NOCTTY) : -1;
  const bool opened = pty >= 0 && grantpt(pty) == 0 && unlockpt(pty) == 0;
  const std::string err_path = opened ? ptsname(pty) : directory + "/.stderr";
  const int held = opened ? open(err_path.c_str(), O_RDWR | O_NOCTTY) : -1;
  const auto quote = [](const std::string& text) {  // one word for the shell, as it is
    std::string quoted = "'";
    for (const char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
  };
  std::string command = "cd " + quote(directory) + " && exec env";
  for (const std::string& variable : environment) command += " " + quote(variable);
  command += " " ZELTO_CLI_LAUNCHER " " + quote(std::string(ZELTO_BINARY_DIR) + "/zelto-mesh");
  for (const std::string& argument : arguments) command += " " + quote(argument);
  const int status = std::system((command + " </dev/null >.stdout 2>" + quote(err_path)).c_str());
  ProcessResult result{WIFEXITED(status) ? WEXITSTATUS(status) : -1,
                       ReadFileBytes(directory + "/.stdout"), ""};
  // The terminal hands the bytes on a moment later: read until it is quiet.
  char buffer[4096];
  for (pollfd ready{pty, POLLIN, 0}; opened && poll(&ready, 1, 200) > 0;) {
    const ssize_t count = read(pty, buffer, sizeof buffer);
    result.err.append(buffer, count > 0 ? size_t(count) : 0);
  }
  if (!opened) result.err = ReadFileBytes(err_path);
  std::filesystem::remove(directory + "/.stdout");
  std::filesystem::remove(directory + "/.stderr");
  close(held);
  close(pty);
  return result;
}

}  // namespace ZeltoCliTest

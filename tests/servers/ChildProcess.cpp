#include "tests/servers/ChildProcess.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <thread>
#include <utility>

namespace orvane::test {

namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kLongestCommand{10};

pid_t spawn(const std::vector<std::string> &command, int input, int output) {
  std::vector<char *> arguments;
  for (const std::string &word : command)
    arguments.push_back(const_cast<char *>(word.c_str()));
  arguments.push_back(nullptr);
  const pid_t process = fork();
  if (process != 0)
    return process;
  // Only what is safe after a fork of a process with threads.
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  ::signal(SIGPIPE, SIG_DFL);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  execvp(arguments[0], arguments.data());
  _exit(127);
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string> &command, const std::string &logFile) {
  std::array<int, 2> input{};
  if (pipe2(input.data(), O_CLOEXEC) != 0)
    throw std::runtime_error("no pipe");
  const char *path = logFile.empty() ? "/dev/null" : logFile.c_str();
  const int output = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
  mProcess = spawn(command, input[0], output);
  close(input[0]);
  close(output);
  mInput = input[1];
  if (mProcess < 0)
    throw std::runtime_error("no process");
}

ChildProcess::~ChildProcess() {
#ifdef ORVANE_COVERAGE
  // A program writes what it has counted when it ends by itself.
  signal(SIGTERM);
  wait(std::chrono::seconds(3));
#endif
  kill();
}

ChildProcess::ChildProcess(ChildProcess &&other) noexcept
    : mProcess(std::exchange(other.mProcess, -1)), mInput(std::exchange(other.mInput, -1)) {}

ChildProcess &ChildProcess::operator=(ChildProcess &&other) noexcept {
  if (this != &other) {
    kill();
    mProcess = std::exchange(other.mProcess, -1);
    mInput = std::exchange(other.mInput, -1);
  }
  return *this;
}

void ChildProcess::signal(int number) const {
  if (mProcess > 0)
    ::kill(mProcess, number);
}

void ChildProcess::kill() {
  if (mProcess > 0) {
    ::kill(mProcess, SIGKILL);
    waitpid(mProcess, nullptr, 0);
    mProcess = -1;
  }
  if (mInput >= 0)
    close(std::exchange(mInput, -1));
}

int ChildProcess::wait(std::chrono::milliseconds longest) {
  const auto end = Clock::now() + longest;
  int status = 0;
  while (mProcess > 0 && waitpid(mProcess, &status, WNOHANG) == 0) {
    if (Clock::now() > end) {
      kill();
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  mProcess = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

void ChildProcess::writeLine(const std::string &line) const {
  const std::string text = line + "\n";
  if (write(mInput, text.data(), text.size()) < 0)
    throw std::runtime_error("the program reads no more");
}

std::string outputOf(const std::vector<std::string> &command) {
  std::array<int, 2> output{};
  if (pipe2(output.data(), O_CLOEXEC) != 0)
    throw std::runtime_error("no pipe");
  const int nothing = open("/dev/null", O_RDONLY | O_CLOEXEC);
  const pid_t process = spawn(command, nothing, output[1]);
  close(nothing);
  close(output[1]);
  const auto end = Clock::now() + kLongestCommand;
  std::string text;
  bool isComplete = false;
  while (process > 0 && !isComplete && Clock::now() < end) {
    pollfd ready{output[0], POLLIN, 0};
    if (poll(&ready, 1, 100) <= 0)
      continue;
    std::array<char, 4096> chunk{};
    const ssize_t count = read(output[0], chunk.data(), chunk.size());
    isComplete = count <= 0;
    if (count > 0)
      text.append(chunk.data(), static_cast<std::size_t>(count));
  }
  close(output[0]);
  if (process > 0) {
    if (!isComplete)
      ::kill(process, SIGKILL);
    waitpid(process, nullptr, 0);
  }
  return isComplete ? text : std::string();
}

}  // namespace orvane::test

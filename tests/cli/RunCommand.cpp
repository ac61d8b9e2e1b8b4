#include "tests/cli/RunCommand.h"

#include <array>
#include <chrono>
#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <linux/capability.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace orvane::test {
namespace {

constexpr auto kLongest = std::chrono::seconds(30);

struct Pipe {
  int ends[2];
  Pipe() {
    if (::pipe2(ends, O_CLOEXEC) != 0)
      throw std::runtime_error("no pipe");
  }
};

[[noreturn]] void execute(const std::vector<std::string> &arguments, const CommandOptions &options,
                          int output, int errors) {
  if (options.outputTo == "-")
    ::close(STDOUT_FILENO);
  else if (!options.outputTo.empty())
    ::dup2(::open(options.outputTo.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600), STDOUT_FILENO);
  else
    ::dup2(output, STDOUT_FILENO);
  ::dup2(errors, STDERR_FILENO);
  if (options.mostBytes != 0) {
    const rlimit limit{static_cast<rlim_t>(options.mostBytes),
                       static_cast<rlim_t>(options.mostBytes)};
    ::setrlimit(RLIMIT_FSIZE, &limit);
  }
  if (options.heedsModes)
    ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
  if (options.withoutServer)
    ::setenv("PULSE_SERVER", "unix:/nonexistent/native", 1);
  // No test may find temperaments of whoever runs it.
  ::setenv("XDG_DATA_HOME", "/nonexistent", 1);
  for (const auto &[name, value] : options.environment)
    ::setenv(name.c_str(), value.c_str(), 1);
  const char *program = options.program.empty() ? ORVANE_CLI : options.program.c_str();
  std::vector<char *> argv{const_cast<char *>(program)};
  for (const std::string &argument : arguments)
    argv.push_back(const_cast<char *>(argument.c_str()));
  argv.push_back(nullptr);
  ::execv(program, argv.data());
  ::_exit(127);
}

}  // namespace

std::vector<std::string> CommandResult::lines() const {
  std::vector<std::string> lines;
  std::size_t start = 0;
  while (start < output.size()) {
    const std::size_t end = std::min(output.find('\n', start), output.size());
    lines.push_back(output.substr(start, end - start));
    start = end + 1;
  }
  return lines;
}

CommandResult runCommand(const std::vector<std::string> &arguments, const CommandOptions &options) {
  using Clock = std::chrono::steady_clock;
  Pipe output;
  Pipe errors;
  const pid_t child = ::fork();
  if (child < 0)
    throw std::runtime_error("no process");
  if (child == 0)
    execute(arguments, options, output.ends[1], errors.ends[1]);
  ::close(output.ends[1]);
  ::close(errors.ends[1]);
  if (options.closeEarly)
    ::close(output.ends[0]);

  CommandResult result;
  const auto start = Clock::now();
  bool interrupted = options.interruptAfterMs == 0;
  pollfd descriptors[] = {{options.closeEarly ? -1 : output.ends[0], POLLIN, 0},
                          {errors.ends[0], POLLIN, 0}};
  std::string *const texts[] = {&result.output, &result.errors};
  while (descriptors[0].fd >= 0 || descriptors[1].fd >= 0) {
    ::poll(descriptors, 2, 20);
    const auto spent = Clock::now() - start;
    if (!interrupted && spent > std::chrono::milliseconds(options.interruptAfterMs)) {
      interrupted = true;
      ::kill(child, SIGINT);
    }
    if (spent > kLongest && !result.tookTooLong) {
      result.tookTooLong = true;
      ::kill(child, SIGABRT);
    }
    if (spent > kLongest + std::chrono::seconds(1))
      ::kill(child, SIGKILL);
    for (std::size_t k = 0; k < 2; ++k) {
      if (descriptors[k].fd < 0 || descriptors[k].revents == 0)
        continue;
      std::array<char, 65536> bytes;
      const ssize_t count = ::read(descriptors[k].fd, bytes.data(), bytes.size());
      if (count > 0) {
        texts[k]->append(bytes.data(), static_cast<std::size_t>(count));
      } else {
        ::close(descriptors[k].fd);
        descriptors[k].fd = -1;
      }
    }
  }
  int status = 0;
  rusage usage{};
  ::wait4(child, &status, 0, &usage);
  result.peakKiB = usage.ru_maxrss;
  if (WIFEXITED(status))
    result.exitCode = WEXITSTATUS(status);
  else
    result.signal = WTERMSIG(status);
  return result;
}

}  // namespace orvane::test

#include "tests/failures/FailingRun.h"

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iostream>
#include <sstream>

#include "tests/long/LongRun.h"

namespace orvane::test {
namespace {

// As in FailingCalls.c.
struct Counters {
  std::uint64_t calls;
  std::uint64_t failed;
  char caller[112];
  char endedIn[112];
};

}  // namespace

std::string Failure::name() const {
  return std::string(calls == Calls::Memory ? "memory" : "files") +
         (lasting == Lasting::Once ? " once" : " for good") +
         (error == 0 ? "" : std::string(" (") + std::strerror(error) + ")") +
         (after.empty() ? "" : " from " + after + " on");
}

std::string FailedRun::told() const {
  return "call " + std::to_string(number) + ", of " + caller + ": exit " +
         std::to_string(result.exitCode) + ", signal " + std::to_string(result.signal) +
         (endedIn.empty() ? "" : " in " + endedIn) + ", \"" + result.output.substr(0, 200) +
         "\", \"" + result.errors.substr(0, 500) + "\"";
}

FailedRun FailingRuns::run(const Failure &failure, std::uint64_t number) const {
  const std::string file =
      mFolder.write("counters", std::string_view(std::string(sizeof(Counters), '\0')));
  CommandOptions options = mOptions;
  const auto set = [&options](const char *name, const std::string &value) {
    options.environment.emplace_back(name, value);
  };
  set("LD_PRELOAD", ORVANE_FAILING_CALLS);
  set("FAILING_COUNT", file);
  set("FAILING_KIND", failure.calls == Calls::Memory ? "memory" : "files");
  set("FAILING_FIRST", std::to_string(number));
  if (failure.lasting == Lasting::ForGood)
    set("FAILING_FOREVER", "1");
  if (failure.error != 0)
    set("FAILING_ERROR", std::to_string(failure.error));
  if (!failure.after.empty())
    set("FAILING_AFTER", failure.after);
  if (failure.quitsWhenIdle)
    set("FAILING_QUIT", "1");
  FailedRun run;
  run.result = runCommand(mArguments, options);
  run.number = number;
  Counters counters{};
  std::ifstream(file, std::ios::binary).read(reinterpret_cast<char *>(&counters), sizeof(counters));
  run.calls = counters.calls;
  run.caller = counters.caller;
  run.endedIn = counters.endedIn;
  return run;
}

std::uint64_t FailingRuns::forEach(const Failure &failure, std::uint64_t shortCount,
                                   const std::function<void()> &before,
                                   const std::function<void(const FailedRun &)> &after) const {
  before();
  const std::uint64_t all = run(failure, 0).calls;
  std::uint64_t tried = 0;
  // A number beyond the last call is none: a program that runs threads does not make the same
  // number each time.
  const auto attempt = [&](std::uint64_t number) {
    before();
    const FailedRun failed = run(failure, number);
    if (failed.calls < number)
      return;
    ++tried;
    after(failed);
  };
  if (all == 0)
    return 0;
  attempt(1);
  const std::uint64_t step = std::max<std::uint64_t>(1, all / longRunCount(shortCount));
  for (std::uint64_t number = 2 + Random(longRunSeed()).below(step); number < all; number += step)
    attempt(number);
  attempt(all);
  std::cout << failure.name() << ": " << tried << " of " << all << " calls made to fail\n";
  return tried;
}

std::string whyUnclean(const FailedRun &run, const std::vector<std::string> &lineBeginnings) {
  const CommandResult &result = run.result;
  if (result.tookTooLong)
    return "did not end";
  if (result.signal != 0)
    return "ended by a signal";
  if (result.exitCode != 0 && result.exitCode != 1)
    return "ended with a status that means something else";
  if (result.exitCode == 1 && result.errors.empty())
    return "failed without a word";
  std::istringstream lines(result.errors);
  for (std::string line; std::getline(lines, line);) {
    if (std::ranges::none_of(lineBeginnings,
                             [&](const auto &word) { return line.starts_with(word); }))
      return "says what is no line of its own";
  }
  return {};
}

}  // namespace orvane::test

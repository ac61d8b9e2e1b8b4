// Several recordings at once: what is said of them, and what they cost.
#include <chrono>
#include <cmath>
#include <csignal>

#include <gtest/gtest.h>

#include "tests/Sanitized.h"
#include "tests/cli/RunCommand.h"
#include "tests/cli/TestFiles.h"

namespace orvane::test {
namespace {

class AnalyzeSeveral : public testing::Test {
 protected:
  // 50 Hz, 8 samples a period: a reading in each block, and a file that is read fast.
  std::string writeLong(const std::string &name, double hours) const {
    const std::vector<float> period = sine(50.0, 400, 0.02);
    std::vector<float> samples;
    for (int k = 0; k < hours * 3600.0 * 50.0; ++k)
      samples.insert(samples.end(), period.begin(), period.end());
    return mFolder.writeSound(name, samples, 400);
  }

  static CommandOptions toNobody() {
    CommandOptions options;
    options.outputTo = "/dev/null";
    return options;
  }

  TestFolder mFolder;
};

TEST_F(AnalyzeSeveral, WhatIsSaidOfThemIsWhatIsSaidOfEachInTheirOrder) {
  std::vector<std::string> files;
  for (int k = 0; k < 12; ++k) {
    const std::string name = std::to_string(k) + ".wav";
    const double seconds = k % 3 == 0 ? 300.0 : 0.5;
    files.push_back(mFolder.writeSound(name, sine(200.0 + 17.0 * k, 8000, seconds), 8000));
  }
  for (const std::vector<std::string> &form :
       {std::vector<std::string>{}, {"--summary"}, {"--callback-frames", "100000"}}) {
    std::string expected;
    std::vector<std::string> all{"analyze"};
    for (const std::string &file : files) {
      std::vector<std::string> one{"analyze", file};
      one.insert(one.end(), form.begin(), form.end());
      expected += file + ":\n" + runCommand(one).output;
      all.push_back(file);
    }
    all.insert(all.end(), form.begin(), form.end());
    const CommandResult result = runCommand(all);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.errors, "");
    EXPECT_TRUE(result.output == expected) << result.output.substr(0, 2000);
  }
}

TEST_F(AnalyzeSeveral, WhatWentWrongIsToldInTheirOrderAndTheOthersAreRead) {
  const std::string good = mFolder.writeSound("good.wav", sine(500.0, 8000, 1.0), 8000);
  const std::string empty = mFolder.write("empty.wav", "");
  const std::string none = mFolder.writeSound("none.wav", {}, 8000);
  const CommandResult result =
      runCommand({"analyze", none, good, "/no/such", empty, good, "/no/such/either"});
  EXPECT_EQ(result.exitCode, 1);
  const std::string line = "   0.054 s  B4   +21 cents   500.0Hz, ideal  493.9Hz, +6.1Hz\n";
  EXPECT_EQ(result.output, none + ":\n" + good + ":\n" + line + "/no/such:\n" + empty + ":\n" +
                               good + ":\n" + line + "/no/such/either:\n");
  EXPECT_EQ(result.errors, "orvane-cli: " + none + ": holds no sound\n" +
                               "orvane-cli: /no/such: no such file\n" + "orvane-cli: " + empty +
                               ": is empty\n" + "orvane-cli: /no/such/either: no such file\n");
}

TEST_F(AnalyzeSeveral, AReaderThatLeavesEndsTheWorkOnAllOfThem) {
  const std::string file = writeLong("long.wav", 2.0);
  CommandOptions early;
  early.closeEarly = true;
  const auto start = std::chrono::steady_clock::now();
  const CommandResult result = runCommand({"analyze", file, file, file, file, "--json"}, early);
  const auto spent = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.errors, "orvane-cli: standard output: Broken pipe\n");
  const auto wholeStart = std::chrono::steady_clock::now();
  runCommand({"analyze", file, "--json"}, toNobody());
  EXPECT_LT(spent, std::chrono::steady_clock::now() - wholeStart);
}

TEST_F(AnalyzeSeveral, AnInterruptEndsTheWorkOnAllOfThem) {
  const std::string file = writeLong("long.wav", 2.0);
  CommandOptions interrupted = toNobody();
  interrupted.interruptAfterMs = 50;
  const CommandResult result =
      runCommand({"analyze", file, file, file, file, file, file, "--json"}, interrupted);
  EXPECT_EQ(result.signal, SIGINT);
  EXPECT_EQ(result.errors, "");
}

TEST_F(AnalyzeSeveral, TenHoursTakeNoMoreMemoryThanAMinute) {
  if (kIsSanitized)
    GTEST_SKIP() << "a sanitizer takes memory of its own";
  const std::string minute = writeLong("minute.wav", 1.0 / 60.0);
  const std::string day = writeLong("day.wav", 10.0);
  const std::string plot = mFolder.path("plot.svg");
  for (const std::vector<std::string> &more :
       {std::vector<std::string>{}, {"--json", "--summary"}, {"--csv"}, {"--plot", plot}}) {
    const auto peak = [&more](const std::string &file) {
      std::vector<std::string> arguments{"analyze", file};
      arguments.insert(arguments.end(), more.begin(), more.end());
      const CommandResult result = runCommand(arguments, toNobody());
      EXPECT_EQ(result.exitCode, 0) << result.errors;
      return result.peakKiB;
    };
    EXPECT_LT(std::abs(peak(day) - peak(minute)), 1024) << (more.empty() ? "" : more[0]);
  }
}

TEST_F(AnalyzeSeveral, WhatWaitsForItsTurnIsHeldBackInBoundedMemory) {
  if (kIsSanitized)
    GTEST_SKIP() << "a sanitizer takes memory of its own";
  const std::string day = writeLong("day.wav", 10.0);  // says 150 MB
  const long alone = runCommand({"analyze", day, "--json"}, toNobody()).peakKiB;
  const CommandResult result = runCommand({"analyze", day, day, "--json"}, toNobody());
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_LT(result.peakKiB - alone, (16 + 8) * 1024);
}

}  // namespace
}  // namespace orvane::test

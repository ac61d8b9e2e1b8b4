// orvane-cli: the tuner in the terminal.
#include <exception>
#include <new>

#include "audio/KeptMemory.h"
#include "audio/UncheckedMemory.h"
#include "cli/CliError.h"
#include "cli/CommandLine.h"
#include "cli/Output.h"
#include "core/UncaughtErrors.h"

namespace orvane {
namespace {

int run(const CommandLine &line) {
  switch (line.command) {
    case Command::ShowText:
      break;
    case Command::Devices:
      return runDevices(line.devices, line.common);
    case Command::Listen:
      return runListen(line.listen, line.common);
    case Command::Analyze:
      return runAnalyze(line.analyze, line.common);
    case Command::Temperaments:
      return runTemperaments(line.temperaments, line.common);
  }
  Output output;
  output.write(line.text);
  output.flush();
  return kExitDone;
}

// Before the other objects with static storage, which take memory.
[[gnu::constructor(101)]] void prepareForTheWorst() {
  keepFreedMemory();
  reportUncaughtErrors("orvane-cli");
  reportUncheckedMemory("orvane-cli");
}

}  // namespace
}  // namespace orvane

int main(int argc, char **argv) {
  orvane::Output::prepareStandardStreams();
  try {
    return orvane::run(orvane::parseCommandLine(argc, argv));
  } catch (const orvane::CliError &error) {
    orvane::printError(error.what());
    return error.exitCode();
  } catch (const std::bad_alloc &) {
    orvane::printError("memory: not enough");
  } catch (const std::exception &error) {
    orvane::printError(std::string("internal error: ") + error.what());
  }
  return orvane::kExitFailed;
}

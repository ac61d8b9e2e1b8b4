#include "audio/AUInputUnit.h"
#include "cli/CliError.h"
#include "cli/Commands.h"
#include "cli/Inputs.h"
#include "cli/Output.h"
#include "cli/ReadingJson.h"

namespace orvane {

int runDevices(const DevicesOptions &options, const CommonOptions &common) {
  resolveTuning(common);  // a wrong option is wrong here too
  const Inputs inputs(options.inputs);
  AUInputUnit unit(inputs.hardware());
  inputs.checkReached();
  Output output;
  std::size_t index = 0;
  for (const AudioInputSource &source : unit.audioInputSources()) {
    if (options.json) {
      output.write("{\"index\":" + std::to_string(index) + ",\"name\":" + jsonString(source.name) +
                   ",\"deviceID\":" + std::to_string(source.deviceID));
      if (source.dataSource)
        output.write(",\"dataSource\":" + std::to_string(*source.dataSource));
      output.write("}\n");
    } else {
      output.write(oneLine(source.name) + '\n');
    }
    ++index;
  }
  output.flush();
  return kExitDone;
}

}  // namespace orvane

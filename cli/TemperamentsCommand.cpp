#include "cli/CliError.h"
#include "cli/Commands.h"
#include "cli/Output.h"
#include "cli/ReadingJson.h"
#include "cli/ScalaCommands.h"

namespace orvane {

int runTemperaments(const TemperamentsOptions &options, const CommonOptions &common) {
  if (!options.imports.empty())
    return importScales(options.imports);
  if (options.exported)
    return exportScale(*options.exported, common);
  const Tuning tuning = resolveTuning(common);
  const TemperamentTables &tables = tuning.tables;
  Output output;
  for (std::size_t row = 0; row < tables.rowCount(); ++row) {
    if (options.json)
      output.write("{\"name\":" + jsonString(tables.name(row)) +
                   ",\"toolTip\":" + jsonString(tables.toolTip(row)) + "}\n");
    else
      output.write(oneLine(tables.name(row)) + "\n    " + tables.toolTip(row) + '\n');
  }
  output.flush();
  return kExitDone;
}

}  // namespace orvane

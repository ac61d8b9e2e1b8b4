// The settings file: any bytes in its place, then settings written over them and read again.
#include <fstream>
#include <optional>
#include <vector>

#include <QString>

#include "app/UserDefaults.h"
#include "fuzz/FuzzInput.h"
#include "tests/TemporaryFolder.h"

namespace orvane::fuzz {
namespace {

const std::vector<std::string> kKeys = {"ReferencePitchKey",
                                        "TuningKey",
                                        "TonicKey",
                                        "org.velmora.TransposeKey",
                                        "DisclosedKey",
                                        "org.velmora.TunerMeterKey",
                                        "org.velmora.InputDeviceKey",
                                        "org.velmora.TuneSpeechKey",
                                        "org.velmora.HertzSpeechKey"};

UserDefaults open(const std::filesystem::path &file) {
  return UserDefaults(
      [](const std::string &line) {
        require(line.find("cannot") == std::string::npos, "a file can be written in its folder");
      },
      file);
}

void readAll(const UserDefaults &defaults) {
  for (const std::string &key : kKeys) {
    defaults.floatForKey(key);
    defaults.integerForKey(key);
    defaults.boolForKey(key);
  }
}

// A text that any user could have given a device, of the bytes that the file begins with.
std::string titleOf(std::string_view bytes) {
  return QString::fromLatin1(bytes.data(),
                             static_cast<qsizetype>(std::min<std::size_t>(bytes.size(), 32)))
      .toStdString();
}

}  // namespace
}  // namespace orvane::fuzz

// A value in the file can say that it is a list of billions. The toolkit makes room for them, but
// touches none of it, and goes on where it gets none.
extern "C" const char *__asan_default_options() {
  return "max_allocation_size_mb=192:allocator_may_return_null=1";
}

int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t size) {
  using namespace orvane;
  using namespace orvane::fuzz;
  static const test::TemporaryFolder folder;
  // A name of its own, because the toolkit remembers files by name, size and time.
  static unsigned count = 0;
  const std::filesystem::path file = folder / (std::to_string(count++) + ".ini");
  const std::string_view input(reinterpret_cast<const char *>(bytes), size);
  std::ofstream(file, std::ios::binary) << input;

  std::vector<std::optional<std::string>> before;
  const std::string title = titleOf(input);
  {
    UserDefaults defaults = open(file);
    readAll(defaults);
    for (const std::string &key : kKeys)
      before.push_back(defaults.stringForKey(key));
    defaults.setFloat(442.5F, kKeys[0]);
    defaults.setInteger(-3, kKeys[3]);
    defaults.setObject(title, kKeys[6]);
    defaults.synchronize();
  }
  const UserDefaults defaults = open(file);
  readAll(defaults);
  require(defaults.floatForKey(kKeys[0]) == 442.5F, "a number that was saved is read again");
  require(defaults.integerForKey(kKeys[3]) == -3, "a whole number that was saved is read again");
  require(defaults.stringForKey(kKeys[6]) == title, "a text that was saved is read again");
  for (const std::size_t k : {1U, 2U, 4U, 5U, 7U, 8U})
    require(defaults.stringForKey(kKeys[k]) == before[k], "the other settings stay");

  std::filesystem::remove(file);
  std::filesystem::remove(file.string() + ".damaged");
  return 0;
}

// A source as the sound server lists it, and the collector of one whole listing.
#pragma once

#include <pulse/pulseaudio.h>

#include <map>
#include <string>
#include <vector>

namespace orvane {

struct PulsePort {
  std::string name;
  std::string description;
};

struct PulseSource {
  std::string name;  // lasting
  std::string description;
  std::string manufacturer;                // device's, else card's, else driver's; never empty
  std::uint32_t index = PA_INVALID_INDEX;  // number at this server, new at each appearance
  bool isMonitor = false;
  pa_sample_spec sampleSpec{};
  pa_channel_map channelMap{};
  pa_cvolume volume{};
  pa_volume_t volumeBase = PA_VOLUME_NORM;
  std::uint32_t volumeSteps = 0;
  std::vector<PulsePort> ports;
  std::string activePort;  // empty = none
};

// Gathers the cards and then the sources of one listing. Notification thread only.
class PulseListing {
 public:
  void addCard(const pa_card_info &card);
  void addSource(const pa_source_info &source);

  const std::vector<PulseSource> &sources() const { return mSources; }

 private:
  struct Card {
    std::string vendor;
    std::string driver;
  };

  std::map<std::uint32_t, Card> mCards;
  std::vector<PulseSource> mSources;
};

}  // namespace orvane

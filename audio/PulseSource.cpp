#include "audio/PulseSource.h"

#include <initializer_list>
#include <string_view>

namespace orvane {

namespace {

std::string textOf(const char *text) {
  return text != nullptr ? text : "";
}

std::string firstNotEmpty(std::initializer_list<std::string_view> texts) {
  for (const std::string_view text : texts) {
    if (!text.empty())
      return std::string(text);
  }
  return {};
}

}  // namespace

void PulseListing::addCard(const pa_card_info &card) {
  mCards[card.index] = {textOf(pa_proplist_gets(card.proplist, PA_PROP_DEVICE_VENDOR_NAME)),
                        textOf(card.driver)};
}

void PulseListing::addSource(const pa_source_info &info) {
  const auto known = mCards.find(info.card);
  const Card card = known == mCards.end() ? Card{} : known->second;
  const std::string vendor = textOf(pa_proplist_gets(info.proplist, PA_PROP_DEVICE_VENDOR_NAME));

  PulseSource source;
  source.name = textOf(info.name);
  source.description = firstNotEmpty({textOf(info.description), source.name});
  source.manufacturer =
      firstNotEmpty({vendor, card.vendor, textOf(info.driver), card.driver, "Unknown"});
  source.index = info.index;
  // Some servers know a monitor only by its class.
  source.isMonitor = info.monitor_of_sink != PA_INVALID_INDEX ||
                     textOf(pa_proplist_gets(info.proplist, PA_PROP_DEVICE_CLASS)) == "monitor";
  source.sampleSpec = info.sample_spec;
  source.channelMap = info.channel_map;
  source.volume = info.volume;
  source.volumeBase = info.base_volume;
  source.volumeSteps = info.n_volume_steps;
  for (std::uint32_t i = 0; i < info.n_ports; ++i)
    source.ports.push_back({textOf(info.ports[i]->name), textOf(info.ports[i]->description)});
  if (info.active_port != nullptr)
    source.activePort = textOf(info.active_port->name);
  mSources.push_back(std::move(source));
}

}  // namespace orvane

#include "cli/PitchPlot.h"

#include <filesystem>
#include <string_view>

#include "cli/CliError.h"
#include "cli/PlotPanel.h"
#include "cli/ReadingFields.h"
#include "cli/ReadingJson.h"
#include "cli/Terminal.h"
#include "core/TuningControls.h"

namespace orvane {
namespace {

constexpr std::size_t kWidestTitle = 120;     // characters
constexpr std::size_t kWidestSubtitle = 100;  // beside the legend

// Any bytes as text between tags.
std::string xmlText(const std::string &bytes) {
  std::string text;
  const std::string valid = validUtf8(oneLine(bytes));
  for (std::size_t at = 0; at < valid.size(); ++at) {
    // Two code points at the end of the plane are no characters in XML.
    const std::string_view three = std::string_view(valid).substr(at, 3);
    if (three == "\uFFFE" || three == "\uFFFF") {
      text += "\uFFFD";
      at += 2;
    } else if (valid[at] == '&') {
      text += "&amp;";
    } else if (valid[at] == '<') {
      text += "&lt;";
    } else if (valid[at] == '>') {
      text += "&gt;";
    } else {
      text += valid[at];
    }
  }
  return text;
}

constexpr const char *kDarkColours =
    "<style>@media (prefers-color-scheme:dark){"
    ".paper{fill:#14181d}.ink{fill:#e5eaf0}.faint{fill:#9aa6b4}.grid{stroke:#29313a}"
    ".zero{stroke:#8593a3}.band{fill:#1b5231}.guide,.line{stroke:#5d6b7a}.range{stroke:#28323c}"
    ".tune{fill:#4ade80}.near{fill:#7cb0ff}.far{fill:#ff7d70}}</style>\n";

}  // namespace

std::string PitchPlot::subtitle() const {
  const TuningSettings &settings = mTuning.settings;
  std::string text = kEqualTemperament;
  if (settings.mTuning > 0)
    text = mTuning.tables.name(static_cast<std::size_t>(settings.mTuning) - 1) + " on " +
           pitchClassName(static_cast<int>(settings.mTonic));
  text += ", A4 = ";
  appendNumber(text, settings.mReferencePitch);
  text += " Hz";
  if (settings.mTranspose != 0)
    text += ", " + transposeText(settings.mTranspose);
  return text;
}

void PitchPlot::add(const std::string &file, const PitchCurve &curve) {
  const auto text = [](const char *look, int y, const std::string &shown, std::size_t width) {
    return std::string("<text ") + look + " x=\"24\" y=\"" + std::to_string(y) + "\">" +
           xmlText(columnsOf(shown, width)) + "</text>\n";
  };
  mBody +=
      "<g transform=\"translate(0 " + std::to_string(mPanels * kPanelHeight) + ")\">\n" +
      text("class=\"ink\" fill=\"#1e293b\" font-size=\"16\" font-weight=\"600\"", 30,
           std::filesystem::path(file).filename().string(), kWidestTitle) +
      text("class=\"faint\" fill=\"#5b6675\" font-size=\"12\"", 49, subtitle(), kWidestSubtitle) +
      plotLegend(curve, kPanelWidth - 28, 49) + plotPanel(curve) + "</g>\n";
  ++mPanels;
}

std::string PitchPlot::svg() const {
  const std::string height = std::to_string(mPanels * kPanelHeight);
  const std::string width = std::to_string(kPanelWidth);
  return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
         "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" +
         width + "\" height=\"" + height + "\" viewBox=\"0 0 " + width + ' ' + height +
         "\" font-family=\"system-ui, 'DejaVu Sans', sans-serif\">\n"
         "<title>Cents over time</title>\n" +
         kDarkColours + "<rect class=\"paper\" fill=\"#ffffff\" width=\"" + width + "\" height=\"" +
         height + "\"/>\n" + mBody + "</svg>\n";
}

}  // namespace orvane

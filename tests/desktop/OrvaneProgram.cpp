#include "tests/desktop/OrvaneProgram.h"

#include <QFile>
#include <QXmlStreamReader>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>
#include <stdexcept>

#include "tests/servers/HardwareProbe.h"

namespace orvane::test {

namespace {

constexpr std::chrono::seconds kPatience{5};

QRect readRect(QXmlStreamReader &xml) {
  std::map<QString, int> numbers;
  while (xml.readNextStartElement()) {
    const QString name = xml.name().toString();
    numbers[name] = xml.readElementText().toInt();
  }
  return {numbers[QStringLiteral("x")], numbers[QStringLiteral("y")],
          numbers[QStringLiteral("width")], numbers[QStringLiteral("height")]};
}

// Of the main window's description: every widget's rectangle in its parent.
std::map<std::string, QRect> readGeometries() {
  QFile file(QStringLiteral(ORVANE_RESOURCES_DIR "/MainMenu.ui"));
  if (!file.open(QIODevice::ReadOnly))
    throw std::runtime_error("no description of the main window");
  QXmlStreamReader xml(&file);
  std::map<std::string, QRect> geometries;
  std::string widget;
  while (!xml.atEnd()) {
    if (xml.readNext() != QXmlStreamReader::StartElement)
      continue;
    if (xml.name() == QLatin1String("widget"))
      widget = xml.attributes().value(QLatin1String("name")).toString().toStdString();
    else if (xml.name() == QLatin1String("rect"))
      geometries[widget] = readRect(xml);
  }
  return geometries;
}

const std::map<std::string, QRect> &geometries() {
  static const std::map<std::string, QRect> all = readGeometries();
  return all;
}

}  // namespace

OrvaneProgram::OrvaneProgram(const Desktop &desktop, const AccessibleTree &tree,
                             const std::vector<std::string> &arguments)
    : mTree(tree),
      mWindows(desktop),
      mInput(desktop),
      mLog((desktop.folder() / "orvane.log").string()) {
  std::filesystem::remove(mLog);
  std::vector<std::string> command{ORVANE_PROGRAM};
  command.insert(command.end(), arguments.begin(), arguments.end());
  mProcess = ChildProcess(desktop.command(command), mLog);
}

bool OrvaneProgram::opens() const {
  const auto knowsItsDevice = [this] {
    // Collapsed, the window does not show it.
    const Accessible device = object("mInputDevicePopUpButton");
    return !device.exists() || !device.text().empty();
  };
  return eventually([&] {
    const WindowId window = mWindows.find(kMainWindow);
    return window != 0 && window == mWindows.active() && !text("mNoteText").empty() &&
           knowsItsDevice();
  });
}

std::string OrvaneProgram::standardError() const {
  std::ifstream file(mLog);
  return {std::istreambuf_iterator<char>(file), {}};
}

Accessible OrvaneProgram::contentView() const {
  return application().findNamed(kMainWindow, "frame").find([](const Accessible &object) {
    const QRect rect = object.extents();
    return object.role() == "filler" && rect.width() >= geometries().at("mContentView").width() / 2;
  });
}

QRect OrvaneProgram::place(const std::string &control) const {
  const QRect view = contentView().extents();
  if (view.isEmpty())
    return {};
  // The upper left corner of the content stays, and everything is zoomed with its width.
  const double zoom = 1.0 * view.width() / geometries().at("mContentView").width();
  const QRectF rect = geometries().at(control);
  return QRectF(view.topLeft() + rect.topLeft() * zoom, rect.size() * zoom).toAlignedRect();
}

Accessible OrvaneProgram::object(const std::string &control) const {
  const Accessible view = contentView();
  const QRect wanted = place(control);
  return view.find([&](const Accessible &object) { return object.extents() == wanted; });
}

std::string OrvaneProgram::title(const std::string &popUp) const {
  return object(popUp).text();
}

std::vector<std::string> OrvaneProgram::titles(const std::string &popUp) const {
  std::vector<std::string> titles;
  object(popUp).find([&](const Accessible &item) {
    if (item.role() == "list item")
      titles.push_back(item.name());
    return false;
  });
  return titles;
}

std::string OrvaneProgram::note() const {
  std::istringstream words(text("mNoteText"));
  std::string note;
  for (std::string word; words >> word;)
    note += word == "sharp" ? "♯" : word == "flat" ? "♭" : word;
  return note;
}

bool OrvaneProgram::choose(const std::string &popUp, const std::string &title) const {
  click(popUp);
  QRect item;
  const bool isSeen = eventually(
      [&] {
        const Accessible found = object(popUp).findNamed(title, "list item");
        item = found.extents();
        return found.is(AccessibleState::kShowing) && !item.isEmpty();
      },
      kPatience);
  if (isSeen)
    mInput.click(item.center());
  return isSeen;
}

Accessible OrvaneProgram::openMenu(const std::string &menu, const std::string &item) const {
  mInput.key("Alt+" + menu.substr(0, 1));
  Accessible found;
  eventually(
      [&] {
        found = shownMenu().findNamed(item, "menu item");
        return found.exists();
      },
      kPatience);
  return found;
}

// The windows share the items' objects, which know their places in one of them only; so the way to
// an item is counted.
bool OrvaneProgram::chooseMenu(const std::string &menu, const std::string &item) const {
  if (!openMenu(menu, item).exists())
    return false;
  for (const Accessible &object : shownMenu().children()) {
    if (object.name() == item)
      break;
    if (object.role() == "menu item")
      mInput.key("Down");
  }
  mInput.key("Return");
  return true;
}

Accessible OrvaneProgram::shownMenu() const {
  return application().find([](const Accessible &object) {
    return object.role() == "popup menu" && object.is(AccessibleState::kShowing);
  });
}

void OrvaneProgram::enter(const std::string &field, const std::string &text) const {
  click(field);
  mInput.key("Ctrl+A");
  mInput.type(text);
  mInput.key("Return");
}

std::map<std::string, std::string> storedSettings(const Desktop &desktop) {
  std::ifstream file(desktop.configurationFolder() / "velmora/Orvane.ini");
  std::map<std::string, std::string> settings;
  for (std::string line; std::getline(file, line);) {
    const std::size_t sign = line.find('=');
    if (sign != std::string::npos)
      settings[line.substr(0, sign)] = line.substr(sign + 1);
  }
  return settings;
}

}  // namespace orvane::test

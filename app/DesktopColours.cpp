#include "app/DesktopColours.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include <QApplication>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QEvent>
#include <QPalette>
#include <QScopedValueRollback>

namespace orvane {
namespace {

const QString kPortal = QStringLiteral("org.freedesktop.portal.Desktop");
const QString kPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString kSettings = QStringLiteral("org.freedesktop.portal.Settings");
const QString kGroup = QStringLiteral("org.freedesktop.appearance");
const QString kKey = QStringLiteral("color-scheme");
// Of that key. All other numbers mean: not dark.
constexpr uint kPreferDark = 1;

// The older operation, which all portals have so far, and the newer one.
const QString kRead = QStringLiteral("Read");
const QString kReadOne = QStringLiteral("ReadOne");

struct RoleColour {
  QPalette::ColorRole role;
  QRgb colour;
};
constexpr std::array kDarkColours = {
    RoleColour{QPalette::Window, 0xff2b2e32},
    RoleColour{QPalette::WindowText, 0xffeceff1},
    RoleColour{QPalette::Base, 0xff1f2225},
    RoleColour{QPalette::AlternateBase, 0xff26292c},
    RoleColour{QPalette::Text, 0xffeceff1},
    RoleColour{QPalette::PlaceholderText, 0xff9aa3aa},
    RoleColour{QPalette::Button, 0xff3a3e43},
    RoleColour{QPalette::ButtonText, 0xffeceff1},
    RoleColour{QPalette::BrightText, 0xffffffff},
    RoleColour{QPalette::ToolTipBase, 0xff43484e},
    RoleColour{QPalette::ToolTipText, 0xffeceff1},
    RoleColour{QPalette::Highlight, 0xff5ca3e6},
    RoleColour{QPalette::HighlightedText, 0xff000000},
    RoleColour{QPalette::Link, 0xff7ab8f2},
    RoleColour{QPalette::LinkVisited, 0xffc3a6ee},
    RoleColour{QPalette::Light, 0xff4d5258},
    RoleColour{QPalette::Midlight, 0xff43484e},
    RoleColour{QPalette::Mid, 0xff24272a},
    RoleColour{QPalette::Dark, 0xff1a1c1f},
    RoleColour{QPalette::Shadow, 0xff0f1113},
};

constexpr QRgb kDisabledHighlight = 0xff6b7279;
constexpr QRgb kDisabledText = 0xffa3a8ac;

struct Text {
  QPalette::ColorRole role;
  QPalette::ColorRole ground;
};
constexpr std::array kDisabledTexts = {Text{QPalette::WindowText, QPalette::Window},
                                       Text{QPalette::Text, QPalette::Base},
                                       Text{QPalette::ButtonText, QPalette::Button}};

double luminance(const QColor &colour) {
  const auto linear = [](float component) {
    const double value = static_cast<double>(component);
    return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF()) +
         0.0722 * linear(colour.blueF());
}

double contrast(const QColor &one, const QColor &other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

QColor middle(const QColor &one, const QColor &other) {
  return QColor((one.red() + other.red()) / 2, (one.green() + other.green()) / 2,
                (one.blue() + other.blue()) / 2);
}

bool isDark(const QPalette &palette) {
  return luminance(palette.color(QPalette::Window)) <
         luminance(palette.color(QPalette::WindowText));
}

QPalette darkPalette() {
  QPalette palette;
  for (const RoleColour &entry : kDarkColours)
    palette.setColor(entry.role, QColor::fromRgb(entry.colour));
  palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor::fromRgb(kDisabledHighlight));
  for (const Text &text : kDisabledTexts)
    palette.setColor(QPalette::Disabled, text.role, QColor::fromRgb(kDisabledText));
  return palette;
}

// What has to take the place of those of the colours that cannot be read. The toolkit's own
// selection has 3.7 to 1, its own disabled text 1.6 to 1.
QPalette correctionsTo(const QPalette &colours) {
  QPalette palette;
  for (const QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive}) {
    const QColor ground = colours.color(group, QPalette::Highlight);
    if (contrast(ground, colours.color(group, QPalette::HighlightedText)) < 4.5)
      palette.setColor(group, QPalette::HighlightedText,
                       contrast(ground, Qt::white) >= 4.5 ? Qt::white : Qt::black);
  }
  for (const auto &[role, on] : kDisabledTexts) {
    const QColor ground = colours.color(QPalette::Disabled, on);
    if (contrast(ground, colours.color(QPalette::Disabled, role)) < 3.0)
      palette.setColor(QPalette::Disabled, role,
                       middle(ground, colours.color(QPalette::Active, role)));
  }
  return palette;
}

}  // namespace

DesktopColours::DesktopColours(const QDBusConnection &bus) : mBus(bus) {
  apply();
  QCoreApplication::instance()->installEventFilter(this);
  mBus.connect(kPortal, kPath, kSettings, QStringLiteral("SettingChanged"), this,
               SLOT(settingChanged(QDBusMessage)));
  // The portal can be later than the application, or be started again.
  auto *watcher =
      new QDBusServiceWatcher(kPortal, mBus, QDBusServiceWatcher::WatchForRegistration, this);
  connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, [this] { ask(kRead); });
  ask(kRead);
}

void DesktopColours::ask(const QString &operation) {
  QDBusMessage call = QDBusMessage::createMethodCall(kPortal, kPath, kSettings, operation);
  call << kGroup << kKey;
  auto *watcher = new QDBusPendingCallWatcher(mBus.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, operation] {
    watcher->deleteLater();
    const QDBusMessage reply = watcher->reply();
    if (reply.type() == QDBusMessage::ReplyMessage)
      take(reply.arguments().value(0));
    else if (operation == kRead && watcher->error().type() == QDBusError::UnknownMethod)
      ask(kReadOne);
  });
}

void DesktopColours::settingChanged(const QDBusMessage &message) {
  const QVariantList arguments = message.arguments();
  if (arguments.size() == 3 && arguments[0] == kGroup && arguments[1] == kKey)
    take(arguments[2]);
}

void DesktopColours::take(QVariant value) {
  // The older operation wraps what is wrapped already.
  while (value.metaType() == QMetaType::fromType<QDBusVariant>())
    value = value.value<QDBusVariant>().variant();
  if (value.metaType() != QMetaType::fromType<uint>())
    return;
  const bool prefersDark = value.toUInt() == kPreferDark;
  if (std::exchange(mPrefersDark, prefersDark) != prefersDark)
    apply();
}

void DesktopColours::apply() {
  if (mPrefersDark && mIsOurDark)
    return;
  const QScopedValueRollback<bool> applying(mIsApplying, true);
  // Without any of ours the platform's own can be seen.
  QApplication::setPalette(QPalette());
  const QPalette own = QApplication::palette();
  mIsOurDark = mPrefersDark && !isDark(own);
  QApplication::setPalette(mIsOurDark ? darkPalette() : correctionsTo(own));
}

bool DesktopColours::eventFilter(QObject *watched, QEvent *event) {
  if (watched == QCoreApplication::instance() &&
      event->type() == QEvent::ApplicationPaletteChange && !mIsApplying)
    apply();
  return QObject::eventFilter(watched, event);
}

}  // namespace orvane

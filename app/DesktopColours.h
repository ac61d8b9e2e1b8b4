// The colours of the windows: those of the toolkit's platform, or dark ones of our own where the
// desktop prefers dark and the platform does not know it. Every selected text has a contrast of at
// least 4.5 to 1 with its ground, every disabled one of at least 3 to 1 (WCAG 2).
//
// What the desktop prefers is asked of its settings portal without waiting, and followed while the
// application runs. Without a bus, a portal or a sensible answer the colours stay as they are.
// Main thread; one object, for the life of the application.
#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QString>
#include <QVariant>

namespace orvane {

class DesktopColours : public QObject {
  Q_OBJECT

 public:
  // To be made before the windows, so that their first frame can have the right colours.
  explicit DesktopColours(const QDBusConnection &bus = QDBusConnection::sessionBus());

 protected:
  bool eventFilter(QObject *watched, QEvent *event) override;

 private slots:
  void settingChanged(const QDBusMessage &message);

 private:
  void ask(const QString &operation);
  void take(QVariant value);
  void apply();

  QDBusConnection mBus;
  bool mPrefersDark = false;  // the desktop
  bool mIsOurDark = false;
  bool mIsApplying = false;
};

}  // namespace orvane

#include "app/DesktopSystem.h"

#include <iostream>

#include <QApplication>
#include <QDir>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>

#include "app/DispatcherSpeech.h"

namespace orvane {
namespace {

bool isDesktop(const QString &currentDesktop, const char *name) {
  return currentDesktop.split(QLatin1Char(':')).contains(QLatin1String(name), Qt::CaseInsensitive);
}

void launch(QStringList command) {
  const QString program = command.takeFirst();
  QProcess::startDetached(program, command);
}

// Installed, the program that speaks is out of the way of those that people start; where both were
// built, it stands beside this one.
QString speechHelper() {
  const QString here = QCoreApplication::applicationDirPath();
  const QString installed =
      QDir::cleanPath(here + QStringLiteral("/../libexec/orvane/orvane-speech"));
  return QFileInfo::exists(installed) ? installed : here + QStringLiteral("/orvane-speech");
}

}  // namespace

void DesktopSystem::beep() {
  QApplication::beep();
}

QStringList DesktopSystem::soundSettingsCommand(const QString &currentDesktop) {
  if (isDesktop(currentDesktop, "GNOME"))
    return {QStringLiteral("gnome-control-center"), QStringLiteral("sound")};
  if (isDesktop(currentDesktop, "KDE"))
    return {QStringLiteral("systemsettings"), QStringLiteral("kcm_pulseaudio")};
  return {QStringLiteral("pavucontrol"), QStringLiteral("--tab=4")};
}

// GNOME and KDE have inputs and outputs on one page, so there the same command is given again,
// which brings the open page to the front.
QStringList DesktopSystem::soundInputPageCommand(const QString &currentDesktop) {
  return soundSettingsCommand(currentDesktop);
}

void DesktopSystem::openSoundSettings() {
  launch(soundSettingsCommand(qEnvironmentVariable("XDG_CURRENT_DESKTOP")));
}

void DesktopSystem::showSoundInputPage() {
  launch(soundInputPageCommand(qEnvironmentVariable("XDG_CURRENT_DESKTOP")));
}

void DesktopSystem::runAlertPanel(const std::string &title, const std::string &message,
                                  const std::string &button) {
  QMessageBox alert(QMessageBox::Critical, QCoreApplication::applicationName(),
                    QString::fromStdString(title));
  alert.setInformativeText(QString::fromStdString(message));
  alert.addButton(QString::fromStdString(button), QMessageBox::AcceptRole);
  alert.exec();
}

void DesktopSystem::terminate() {
  // Not quit(): that would close the windows first, and whether the needle meter was open is one of
  // the settings. Queued, because the loop may not run yet.
  QMetaObject::invokeMethod(
      qApp, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

std::unique_ptr<SpeechSynthesizer> DesktopSystem::makeSpeechSynthesizer() {
  return std::make_unique<DispatcherSpeech>(speechHelper());
}

void DesktopSystem::log(const std::string &line) {
  std::cerr << "orvane: " << line << std::endl;
}

}  // namespace orvane

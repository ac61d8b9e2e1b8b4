#include "app/InterfaceDescription.h"

#include <map>

#include <QBuffer>
#include <QCoreApplication>
#include <QFile>
#include <QScopeGuard>
#include <QUiLoader>

#include "views/AutoResizeBox.h"
#include "views/AutoResizeImageView.h"
#include "views/AutoResizeMeter.h"
#include "views/AutoResizePopUpButton.h"
#include "views/AutoResizeSlider.h"
#include "views/AutoResizeStepper.h"
#include "views/AutoResizeTextField.h"
#include "views/ContentView.h"
#include "views/DisclosureButton.h"
#include "views/HiddenButton.h"
#include "views/ResizeWindow.h"
#include "views/TuningMeterView.h"

namespace orvane {
namespace {

template <typename Class>
QWidget *make(QWidget *parent) {
  return new Class(parent);
}

class Loader : public QUiLoader {
 public:
  QWidget *createWidget(const QString &className, QWidget *parent, const QString &name) override {
    static const std::map<QString, QWidget *(*)(QWidget *)> kClasses = {
        {"AutoResizeBox", make<AutoResizeBox>},
        {"AutoResizeImageView", make<AutoResizeImageView>},
        {"AutoResizeMeter", make<AutoResizeMeter>},
        {"AutoResizePopUpButton", make<AutoResizePopUpButton>},
        {"AutoResizeSlider", make<AutoResizeSlider>},
        {"AutoResizeStepper", make<AutoResizeStepper>},
        {"AutoResizeTextField", make<AutoResizeTextField>},
        {"ContentView", make<ContentView>},
        {"DisclosureButton", make<DisclosureButton>},
        {"HiddenButton", make<HiddenButton>},
        {"ResizeWindow", make<ResizeWindow>},
        {"TuningMeterView", make<TuningMeterView>},
        {"Window", make<Window>},
    };
    const auto known = kClasses.find(className);
    if (known == kClasses.end())
      return QUiLoader::createWidget(className, parent, name);
    QWidget *widget = known->second(parent);
    widget->setObjectName(name);
    return widget;
  }
};

// The toolkit's loader would load every plug-in for form designers that is installed, and with them
// libraries that take longer than the rest of a description.
std::unique_ptr<Loader> loaderWithoutPlugIns() {
  const QStringList paths = QCoreApplication::libraryPaths();
  QCoreApplication::setLibraryPaths({});
  const auto restore = qScopeGuard([&paths] { QCoreApplication::setLibraryPaths(paths); });
  auto loader = std::make_unique<Loader>();
  loader->setLanguageChangeEnabled(false);
  return loader;
}

}  // namespace

InterfaceDescription::InterfaceDescription(const QString &name)
    : mName(QStringLiteral("resources:") + name + QStringLiteral(".ui")) {
  QFile file(mName);
  if (!file.open(QIODevice::ReadOnly))
    fail(file.errorString().toStdString());
  QBuffer text;
  text.setData(file.readAll());
  if (file.error() != QFileDevice::NoError)
    fail(file.errorString().toStdString());
  text.open(QIODevice::ReadOnly);
  const std::unique_ptr<Loader> loader = loaderWithoutPlugIns();
  mRoot.reset(loader->load(&text));
  if (mRoot == nullptr)
    fail(loader->errorString().simplified().toStdString());
}

void InterfaceDescription::fail(const std::string &reason) const {
  throw InterfaceError(mName.section(QLatin1Char(':'), 1).toStdString() + ": " + reason);
}

}  // namespace orvane

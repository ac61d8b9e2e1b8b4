#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include <QLibraryInfo>
#include <QScopeGuard>
#include <QUiLoader>

#include "tests/app/ControllerWatch.h"
#include "tests/app/ResourceFolder.h"

namespace orvane::test {
namespace {

struct Field {
  std::string className;
  std::string name;
};

const std::vector<Field> kFields = {
    {"ContentView", "mContentView"},
    {"DisclosureButton", "mDisclosureButton"},
    {"AutoResizeBox", "mUndisclosedSizeBox"},
    {"AutoResizeTextField", "mNoteText"},
    {"AutoResizeTextField", "mAccidentalText"},
    {"AutoResizeTextField", "mOctaveText"},
    {"AutoResizeTextField", "mCentText"},
    {"AutoResizeTextField", "mFrequencyText"},
    {"AutoResizeTextField", "mFrequencyDiffText"},
    {"AutoResizeTextField", "mIdealFrequencyText"},
    {"AutoResizeTextField", "mLevelText"},
    {"AutoResizeTextField", "mReferencePitchText"},
    {"AutoResizeStepper", "mReferencePitchStepper"},
    {"AutoResizePopUpButton", "mTuningPopUpButton"},
    {"AutoResizePopUpButton", "mTonicPopUpButton"},
    {"AutoResizePopUpButton", "mTransposePopUpButton"},
    {"AutoResizeTextField", "mTransposeText"},
    {"AutoResizePopUpButton", "mInputDevicePopUpButton"},
    {"AutoResizeSlider", "mInputVolumeSlider"},
    {"AutoResizeTextField", "mInputVolumeText"},
    {"HiddenButton", "openSoundPreferencesButton"},
    {"AutoResizeImageView", "mFlat4"},
    {"AutoResizeImageView", "mFlat3"},
    {"AutoResizeImageView", "mFlat2"},
    {"AutoResizeImageView", "mFlat1"},
    {"AutoResizeImageView", "mFlat0"},
    {"AutoResizeImageView", "mNatural"},
    {"AutoResizeImageView", "mSharp0"},
    {"AutoResizeImageView", "mSharp1"},
    {"AutoResizeImageView", "mSharp2"},
    {"AutoResizeImageView", "mSharp3"},
    {"AutoResizeImageView", "mSharp4"},
    {"AutoResizeImageView", "mLevel0"},
    {"AutoResizeImageView", "mLevel1"},
    {"AutoResizeImageView", "mLevel2"},
    {"AutoResizeImageView", "mLevel3"},
    {"AutoResizeImageView", "mLevel4"},
    {"AutoResizeImageView", "mLevel5"},
    {"AutoResizeImageView", "mLevel6"},
    {"AutoResizeImageView", "mLevel7"},
    {"QAction", "about"},
    {"QAction", "openSoundPreferences"},
    {"QAction", "hide"},
    {"QAction", "terminate"},
    {"QAction", "showOrvaneWindow"},
    {"QAction", "showTuningMeterWindow"},
    {"QAction", "performClose"},
    {"QAction", "iaSpeakStatus"},
    {"QAction", "iaSpeakDetails"},
    {"QAction", "iaSpeakTune"},
    {"QAction", "iaSpeakHertz"},
    {"QAction", "showHelp"},
};

class InterfaceDescriptionTest : public testing::Test {
 protected:
  // What keeps a tuner from being made, if anything does.
  std::string error() {
    FakeHardware hardware({microphone()});
    FakeSystem system(hardware);
    UserDefaults defaults({}, mFolder / "Orvane.ini");
    std::string reason = "none";
    try {
      const Controller controller({hardware, defaults, system, mFolder / "Temperaments.txt"});
    } catch (const InterfaceError &error) {
      reason = error.what();
    }
    EXPECT_TRUE(hardware.calls.empty());
    return reason;
  }
  // The same, which must be one line about that description.
  std::string errorIn(const std::string &description) {
    const std::string reason = error();
    EXPECT_TRUE(reason.starts_with(description + ": ")) << reason;
    EXPECT_GT(reason.size(), description.size() + 2) << reason;
    EXPECT_EQ(reason.find('\n'), std::string::npos) << reason;
    return reason;
  }

  TemporaryFolder mFolder;
  ResourceFolder mResources;
};

TEST_F(InterfaceDescriptionTest, TheShippedDescriptionsHaveAllFields) {
  EXPECT_EQ(error(), "none");
}

TEST_F(InterfaceDescriptionTest, NamesTheFieldThatAWindowLacks) {
  for (const Field &field : kFields) {
    mResources.edit("MainMenu.ui", "name=\"" + field.name + "\"", "name=\"other\"");
    EXPECT_EQ(error(), "MainMenu.ui: has no " + field.className + " named '" + field.name + "'");
    mResources.restore("MainMenu.ui");
  }
  mResources.edit("TuningMeter.ui", "name=\"mTuningMeterView\"", "name=\"other\"");
  EXPECT_EQ(error(), "TuningMeter.ui: has no TuningMeterView named 'mTuningMeterView'");
}

TEST_F(InterfaceDescriptionTest, TakesNoFieldOfAnotherClass) {
  mResources.edit("MainMenu.ui", "<widget class=\"AutoResizeSlider\"", "<widget class=\"QSlider\"");
  EXPECT_EQ(error(), "MainMenu.ui: has no AutoResizeSlider named 'mInputVolumeSlider'");
}

TEST_F(InterfaceDescriptionTest, TakesNoWindowOfAnotherClass) {
  mResources.edit("TuningMeter.ui", "<widget class=\"Window\"", "<widget class=\"QMainWindow\"");
  EXPECT_EQ(error(), "TuningMeter.ui: is no Window");
  mResources.edit("MainMenu.ui", "<widget class=\"ResizeWindow\"", "<widget class=\"Window\"");
  EXPECT_EQ(error(), "MainMenu.ui: is no ResizeWindow");
}

TEST_F(InterfaceDescriptionTest, NamesAMissingDescription) {
  mResources.remove("TuningMeter.ui");
  EXPECT_EQ(error(), "TuningMeter.ui: No such file or directory");
  mResources.remove("MainMenu.ui");
  EXPECT_EQ(error(), "MainMenu.ui: No such file or directory");
  mResources.makeFolder("MainMenu.ui");
  errorIn("MainMenu.ui");
}

TEST_F(InterfaceDescriptionTest, NamesADescriptionThatCannotBeRead) {
  mResources.makeUnreadable("MainMenu.ui");
  EXPECT_EQ(error(), "MainMenu.ui: Input/output error");
}

TEST_F(InterfaceDescriptionTest, NamesADamagedDescriptionInOneLine) {
  const std::string whole = mResources.read("MainMenu.ui");
  for (const std::string &damaged :
       {std::string(), std::string("\n"), std::string("no description"), std::string(4096, '\0'),
        std::string("<html/>"), std::string("<ui version=\"4.0\"/>"),
        std::string("<ui version=\"4.0\"><widget/></ui>")}) {
    mResources.write("MainMenu.ui", damaged);
    errorIn("MainMenu.ui");
  }
  // Cut off anywhere it is damaged, were it only of its last tag.
  for (std::size_t size = 1; size < whole.size() - 5; size += 997) {
    mResources.write("MainMenu.ui", whole.substr(0, size));
    errorIn("MainMenu.ui");
  }
  mResources.write("MainMenu.ui", whole);
  EXPECT_EQ(error(), "none");
}

// The memory map of this process names the libraries in it.
bool isLoaded(const std::filesystem::path &library) {
  std::ifstream map("/proc/self/maps");
  const std::string lines{std::istreambuf_iterator<char>(map), {}};
  return lines.find(library.string()) != std::string::npos;
}

TEST_F(InterfaceDescriptionTest, LoadsNoPlugInsForFormDesigners) {
  const std::filesystem::path plugIn = mFolder / "designer" / "libqminimal.so";
  std::filesystem::create_directory(plugIn.parent_path());
  std::filesystem::copy_file(
      std::filesystem::path(QLibraryInfo::path(QLibraryInfo::PluginsPath).toStdString()) /
          "platforms" / plugIn.filename(),
      plugIn);
  QCoreApplication::addLibraryPath(QString::fromStdString((mFolder / "").string()));
  const auto restore = qScopeGuard([this] {
    QCoreApplication::removeLibraryPath(QString::fromStdString((mFolder / "").string()));
  });
  const QStringList paths = QCoreApplication::libraryPaths();

  EXPECT_EQ(error(), "none");
  EXPECT_FALSE(isLoaded(plugIn));
  EXPECT_EQ(QCoreApplication::libraryPaths(), paths);
  // The toolkit's loader, left to itself, does.
  const QUiLoader loader;
  EXPECT_TRUE(isLoaded(plugIn));
}

class HelpPanelTest : public testing::Test {
 protected:
  // What the system is asked for when help is shown.
  Lines showHelp() {
    HelpPanel::showHelpPanel(mSystem);
    QApplication::processEvents();
    return mHardware.takeCalls();
  }
  static Window *window() {
    for (QWidget *widget : QApplication::topLevelWidgets()) {
      if (widget->objectName() == QLatin1String("Help"))
        return qobject_cast<Window *>(widget);
    }
    return nullptr;
  }

  FakeHardware mHardware;
  FakeSystem mSystem{mHardware};
  ResourceFolder mResources;
};

TEST_F(HelpPanelTest, LogsAndBeepsWhenThereIsNoneAndTriesAgainTheNextTime) {
  mResources.remove("Help.ui");
  const Lines failure = {"log Failed to load Help.nib", "log Help.ui: No such file or directory",
                         "beep"};
  EXPECT_EQ(showHelp(), failure);
  EXPECT_EQ(showHelp(), failure);
  EXPECT_EQ(window(), nullptr);
  mResources.write("Help.ui", kHelpDescription);
  EXPECT_TRUE(showHelp().empty());
  ASSERT_NE(window(), nullptr);
  EXPECT_TRUE(window()->isVisible());
}

TEST_F(HelpPanelTest, TakesOnlyAWholeDescriptionOfAWindow) {
  mResources.write("Help.ui", "<ui version=\"4.0\"><widget class=\"QWidget\" name=\"Help\"/></ui>");
  EXPECT_EQ(showHelp(),
            (Lines{"log Failed to load Help.nib", "log Help.ui: is no Window", "beep"}));
  mResources.write("Help.ui", kHelpDescription.substr(0, 100));
  const Lines damaged = showHelp();
  ASSERT_EQ(damaged.size(), 3U);
  EXPECT_EQ(damaged[0], "log Failed to load Help.nib");
  EXPECT_TRUE(damaged[1].starts_with("log Help.ui: ")) << damaged[1];
  EXPECT_EQ(damaged[2], "beep");
  EXPECT_EQ(window(), nullptr);
  mResources.write("Help.ui", kHelpDescription);
  EXPECT_TRUE(showHelp().empty());
  EXPECT_NE(window(), nullptr);
}

TEST_F(HelpPanelTest, IsLoadedOnceAndCentredOnlyWhenItWasNotVisible) {
  mResources.write("Help.ui", kHelpDescription);
  showHelp();
  Window *const first = window();
  ASSERT_NE(first, nullptr);
  const QRectF centred = first->frame();
  EXPECT_LE((centred.center() - first->visibleFrame().center()).manhattanLength(), 2.0);

  mResources.remove("Help.ui");
  first->setFrame(centred.translated(-60, -40));
  const QRectF moved = first->frame();
  EXPECT_TRUE(showHelp().empty());
  EXPECT_EQ(first->frame(), moved);
  EXPECT_EQ(window(), first);

  first->close();
  EXPECT_TRUE(showHelp().empty());
  EXPECT_EQ(window(), first);
  EXPECT_TRUE(first->isVisible());
  EXPECT_EQ(first->frame(), centred);
  EXPECT_EQ(QApplication::activeWindow(), first);
}

// In a process of its own, because it ends the application.
TEST_F(HelpPanelTest, LetsTheApplicationEndWhileItIsOpen) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  mResources.write("Help.ui", kHelpDescription);
  EXPECT_EXIT(
      {
        showHelp();
        qApp->~QApplication();
        std::_Exit(0);
      },
      testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace orvane::test

#include <gtest/gtest.h>

#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QTimer>

#include "app/HelpPanel.h"
#include "tests/app/ControllerWatch.h"
#include "tests/app/ResourceFolder.h"
#include "tests/app/UserInput.h"

namespace orvane::test {
namespace {

class ControllerWindowTest : public testing::Test {
 protected:
  ControllerWindowTest() { rig.hardware.calls.clear(); }

  QAction &item(const char *name) const {
    return *tuner.mWindow->findChild<QAction *>(QString::fromLatin1(name));
  }
  // Everything the menus hold, separators aside.
  static std::vector<QAction *> itemsOf(const Window &window) {
    std::vector<QAction *> items;
    for (const QAction *title : window.menuBar()->actions()) {
      for (QAction *item : title->menu()->actions()) {
        if (!item->isSeparator())
          items.push_back(item);
      }
    }
    return items;
  }
  static void openMenusOf(const Window &window) {
    for (const QAction *title : window.menuBar()->actions())
      emit title->menu()->aboutToShow();
  }
  // The system takes its time to hand over the keyboard.
  static QWidget *windowWithKeyboard() {
    QApplication::processEvents();
    return QApplication::activeWindow();
  }
  // Of the hardware and the system since the last time.
  Lines takeCalls() {
    QApplication::processEvents();
    return rig.hardware.takeCalls();
  }

  ControllerRig rig;
  Controller &tuner = rig.launch();
};

TEST_F(ControllerWindowTest, HidingStopsTheStreamAndUnhidingStartsIt) {
  tuner.applicationDidHide();
  EXPECT_EQ(takeCalls(), stopCalls("7"));
  tuner.applicationDidUnhide();
  EXPECT_EQ(takeCalls(), startCalls("7"));
}

TEST_F(ControllerWindowTest, OnlyTheLastWindowToBeMinimisedStopsTheStream) {
  tuner.mWindow->showMinimized();
  EXPECT_TRUE(takeCalls().empty());
  tuner.mTuningMeterWindow->showMinimized();
  EXPECT_EQ(takeCalls(), stopCalls("7"));
  tuner.mTuningMeterWindow->showNormal();
  EXPECT_EQ(takeCalls(), startCalls("7"));
  tuner.mWindow->showNormal();
  EXPECT_TRUE(takeCalls().empty());
}

TEST_F(ControllerWindowTest, MinimisingTheOnlyOpenWindowStopsTheStream) {
  tuner.mTuningMeterWindow->close();
  EXPECT_TRUE(takeCalls().empty());
  tuner.mWindow->showMinimized();
  EXPECT_EQ(takeCalls(), stopCalls("7"));
  tuner.showOrvaneWindow();
  EXPECT_FALSE(tuner.mWindow->isMinimized());
  EXPECT_EQ(takeCalls(), startCalls("7"));
}

TEST_F(ControllerWindowTest, HidesBothWindowsAtOnceAndStopsOnce) {
  item("hide").trigger();
  EXPECT_TRUE(tuner.mWindow->isMinimized());
  EXPECT_TRUE(tuner.mTuningMeterWindow->isMinimized());
  EXPECT_EQ(takeCalls(), stopCalls("7"));
  item("hide").trigger();
  EXPECT_TRUE(takeCalls().empty());
}

TEST_F(ControllerWindowTest, HidingLeavesAClosedWindowClosed) {
  tuner.mTuningMeterWindow->close();
  tuner.hide();
  EXPECT_FALSE(tuner.mTuningMeterWindow->isVisible());
}

TEST_F(ControllerWindowTest, ClosingTheOnlyWindowThatIsNotMinimisedStopsTheStreamAndDoesNotQuit) {
  tuner.mTuningMeterWindow->showMinimized();
  tuner.mWindow->close();
  EXPECT_EQ(takeCalls(), stopCalls("7"));
}

TEST_F(ControllerWindowTest, AClosedWindowThatComesBackStartsAHiddenStream) {
  tuner.mTuningMeterWindow->showMinimized();
  tuner.mWindow->close();
  takeCalls();
  tuner.showOrvaneWindow();
  EXPECT_TRUE(tuner.mTuningMeterWindow->isMinimized());
  EXPECT_EQ(takeCalls(), startCalls("7"));

  tuner.mTuningMeterWindow->showNormal();
  tuner.mTuningMeterWindow->close();
  tuner.mWindow->showMinimized();
  EXPECT_EQ(takeCalls(), stopCalls("7"));
  tuner.showTuningMeterWindow();
  EXPECT_EQ(takeCalls(), startCalls("7"));
}

TEST_F(ControllerWindowTest, OnlyClosingTheLastWindowQuits) {
  tuner.mWindow->close();
  EXPECT_TRUE(takeCalls().empty());
  tuner.mTuningMeterWindow->close();
  EXPECT_EQ(takeCalls(), Lines{"terminate"});
}

TEST_F(ControllerWindowTest, ClosingAMinimisedWindowAsTheLastOneQuits) {
  tuner.mTuningMeterWindow->close();
  tuner.mWindow->showMinimized();
  takeCalls();
  tuner.mWindow->close();
  EXPECT_EQ(takeCalls(), Lines{"terminate"});
}

TEST_F(ControllerWindowTest, ADeviceChosenWhileHiddenRunsOnlyOnceShownAgain) {
  rig.hardware.devices.push_back(microphone(8, "Line"));
  Controller &hidden = rig.launch();
  hidden.hide();
  takeCalls();
  hidden.mInputDevicePopUpButton->selectItemAtIndex(1);
  hidden.inputDevicePopupChanged();
  const auto starts = [](const Lines &calls) {
    return std::count_if(calls.begin(), calls.end(),
                         [](const std::string &call) { return call.starts_with("Start "); });
  };
  const auto stops = [](const Lines &calls) {
    return std::count_if(calls.begin(), calls.end(),
                         [](const std::string &call) { return call.starts_with("Stop "); });
  };
  const Lines changed = takeCalls();
  EXPECT_EQ(starts(changed), 2);
  EXPECT_EQ(stops(changed), 2);
  hidden.showOrvaneWindow();
  EXPECT_EQ(takeCalls(), startCalls("8"));
}

TEST_F(ControllerWindowTest, TheHelpPanelIsAWindowLikeTheOthers) {
  const ResourceFolder folder;
  folder.write("Help.ui", kHelpDescription);
  tuner.showHelp();
  tuner.mWindow->close();
  tuner.mTuningMeterWindow->close();
  EXPECT_TRUE(takeCalls().empty());
  Window *panel = HelpPanel::showHelpPanel(rig.system);
  ASSERT_NE(panel, nullptr);
  tuner.hide();
  EXPECT_TRUE(panel->isMinimized());
  EXPECT_EQ(takeCalls(), stopCalls("7"));
  panel->showNormal();
  EXPECT_EQ(takeCalls(), startCalls("7"));
  panel->close();
  EXPECT_EQ(takeCalls(), Lines{"terminate"});
}

TEST_F(ControllerWindowTest, TicksFollowTheFlagsWithoutAnyMenuBeingOpened) {
  for (const Window *window : {static_cast<Window *>(tuner.mWindow), tuner.mTuningMeterWindow}) {
    const auto *tune = window->findChild<QAction *>(QStringLiteral("iaSpeakTune"));
    EXPECT_FALSE(tune->isChecked());
    tuner.iaSpeakTune();
    EXPECT_TRUE(tune->isChecked());
    tuner.iaSpeakTune();
    EXPECT_FALSE(tune->isChecked());
  }
}

TEST_F(ControllerWindowTest, StartsWithTheTicksOfTheStoredFlags) {
  tuner.iaSpeakHertz();
  const Controller &restarted = rig.launch();
  EXPECT_TRUE(restarted.mWindow->findChild<QAction *>(QStringLiteral("iaSpeakHertz"))->isChecked());
  EXPECT_FALSE(restarted.mWindow->findChild<QAction *>(QStringLiteral("iaSpeakTune"))->isChecked());
}

TEST_F(ControllerWindowTest, NamesAPictureThatIsMissing) {
  const ResourceFolder folder;
  folder.remove("green28x28.svg");
  rig.launch();
  EXPECT_EQ(std::count(rig.hardware.calls.begin(), rig.hardware.calls.end(),
                       "log picture: cannot load green28x28"),
            1);
}

TEST_F(ControllerWindowTest, TypingIsNotEndedByAnotherWindowOrAMenu) {
  tuner.mReferencePitchText->setFocus();
  for (const Qt::FocusReason reason :
       {Qt::ActiveWindowFocusReason, Qt::MenuBarFocusReason, Qt::PopupFocusReason}) {
    type(*tuner.mReferencePitchText, QStringLiteral("4"));
    QFocusEvent leaves(QEvent::FocusOut, reason);
    QApplication::sendEvent(tuner.mReferencePitchText, &leaves);
    EXPECT_EQ(tuner.mReferencePitchText->stringValue(), QStringLiteral("4"));
    EXPECT_TRUE(takeCalls().empty());
  }
  QFocusEvent leaves(QEvent::FocusOut, Qt::TabFocusReason);
  QApplication::sendEvent(tuner.mReferencePitchText, &leaves);
  EXPECT_EQ(takeCalls(), Lines{"beep"});
}

TEST_F(ControllerWindowTest, BringsAClosedWindowBackWithTheKeyboard) {
  tuner.mWindow->close();
  EXPECT_FALSE(tuner.mWindow->isVisible());
  item("showOrvaneWindow").trigger();
  EXPECT_TRUE(tuner.mWindow->isVisible());
  EXPECT_EQ(windowWithKeyboard(), tuner.mWindow);
  tuner.mTuningMeterWindow->close();
  item("showTuningMeterWindow").trigger();
  EXPECT_TRUE(tuner.mTuningMeterWindow->isVisible());
  EXPECT_EQ(windowWithKeyboard(), tuner.mTuningMeterWindow);
  EXPECT_TRUE(takeCalls().empty());
}

TEST_F(ControllerWindowTest, ClosesTheWindowThatHasTheKeyboard) {
  tuner.showTuningMeterWindow();
  ASSERT_EQ(windowWithKeyboard(), tuner.mTuningMeterWindow);
  item("performClose").trigger();
  EXPECT_FALSE(tuner.mTuningMeterWindow->isVisible());
  EXPECT_TRUE(tuner.mWindow->isVisible());
  tuner.showOrvaneWindow();
  ASSERT_EQ(windowWithKeyboard(), tuner.mWindow);
  item("performClose").trigger();
  EXPECT_FALSE(tuner.mWindow->isVisible());
  EXPECT_EQ(takeCalls(), Lines{"terminate"});
}

TEST_F(ControllerWindowTest, BothWindowsHaveTheSameMenusWithItemsOfTheirOwn) {
  const std::vector<QAction *> items = itemsOf(*tuner.mWindow);
  const std::vector<QAction *> twins = itemsOf(*tuner.mTuningMeterWindow);
  ASSERT_EQ(items.size(), 12U);
  ASSERT_EQ(twins.size(), 12U);
  for (std::size_t i = 0; i < items.size(); ++i) {
    SCOPED_TRACE(items[i]->objectName().toStdString());
    EXPECT_NE(twins[i], items[i]);
    EXPECT_EQ(twins[i]->objectName(), items[i]->objectName());
    EXPECT_EQ(twins[i]->text(), items[i]->text());
    EXPECT_EQ(twins[i]->shortcut(), items[i]->shortcut());
    EXPECT_EQ(twins[i]->isCheckable(), items[i]->isCheckable());
    // The key of one must not be in the way of the other's.
    EXPECT_EQ(items[i]->shortcutContext(), Qt::WindowShortcut);
    EXPECT_EQ(twins[i]->shortcutContext(), Qt::WindowShortcut);
  }
}

TEST_F(ControllerWindowTest, AnItemOfTheNeedleWindowDoesWhatTheMainWindowsDoes) {
  tuner.mTuningMeterWindow->findChild<QAction *>(QStringLiteral("openSoundPreferences"))->trigger();
  EXPECT_EQ(takeCalls(), (Lines{"openSoundSettings", "showSoundInputPage"}));
  tuner.mTuningMeterWindow->findChild<QAction *>(QStringLiteral("iaSpeakTune"))->trigger();
  EXPECT_TRUE(tuner.mTuneSpeech);
  tuner.mTuningMeterWindow->findChild<QAction *>(QStringLiteral("terminate"))->trigger();
  EXPECT_EQ(takeCalls(), Lines{"terminate"});
}

TEST_F(ControllerWindowTest, NeverDisablesAMenuItem) {
  for (const Window *window : {static_cast<Window *>(tuner.mWindow), tuner.mTuningMeterWindow}) {
    for (QAction *action : itemsOf(*window)) {
      action->setEnabled(false);
      EXPECT_TRUE(tuner.validateMenuItem(*action)) << action->objectName().toStdString();
    }
    openMenusOf(*window);
    for (const QAction *action : itemsOf(*window))
      EXPECT_TRUE(action->isEnabled()) << action->objectName().toStdString();
  }
}

TEST_F(ControllerWindowTest, AnOpenMenuOfEitherWindowTicksWhatIsSpoken) {
  for (const Window *window : {static_cast<Window *>(tuner.mWindow), tuner.mTuningMeterWindow}) {
    const auto *tune = window->findChild<QAction *>(QStringLiteral("iaSpeakTune"));
    tuner.mTuneSpeech = true;
    openMenusOf(*window);
    EXPECT_TRUE(tune->isChecked());
    tuner.mTuneSpeech = false;
    openMenusOf(*window);
    EXPECT_FALSE(tune->isChecked());
  }
}

TEST_F(ControllerWindowTest, TicksWhatIsSpokenAndNothingElse) {
  for (const bool tune : {false, true}) {
    for (const bool hertz : {false, true}) {
      tuner.mTuneSpeech = tune;
      tuner.mHertzSpeech = hertz;
      for (QAction *action : itemsOf(*tuner.mWindow)) {
        tuner.validateMenuItem(*action);
        const bool ticked =
            (action == &item("iaSpeakTune") && tune) || (action == &item("iaSpeakHertz") && hertz);
        EXPECT_EQ(action->isChecked(), ticked) << action->objectName().toStdString();
      }
    }
  }
}

TEST_F(ControllerWindowTest, TheMenusCommandTheSystemAndTheSpeech) {
  item("terminate").trigger();
  EXPECT_EQ(takeCalls(), Lines{"terminate"});
  item("openSoundPreferences").trigger();
  EXPECT_EQ(takeCalls(), (Lines{"openSoundSettings", "showSoundInputPage"}));
  item("iaSpeakStatus").trigger();
  QApplication::processEvents();
  EXPECT_EQ(rig.system.spoken, Lines{"ay  , in tune, 440.0 hertz"});
  item("iaSpeakDetails").trigger();
  QApplication::processEvents();
  ASSERT_EQ(rig.system.spoken.size(), 2U);
  EXPECT_TRUE(rig.system.spoken.back().starts_with("ay   4, in tune, 440.0 hertz. Reference"));
  item("iaSpeakTune").trigger();
  EXPECT_TRUE(tuner.mTuneSpeech);
  item("iaSpeakHertz").trigger();
  EXPECT_TRUE(tuner.mHertzSpeech);
  item("iaSpeakTune").trigger();
  item("iaSpeakHertz").trigger();
  EXPECT_FALSE(tuner.mTuneSpeech);
  EXPECT_FALSE(tuner.mHertzSpeech);
}

TEST_F(ControllerWindowTest, TheMenusShowWhatThisProgramIs) {
  QCoreApplication::setApplicationVersion(QStringLiteral("4.2"));
  QString shown;
  QTimer::singleShot(0, qApp, [&shown] {
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    ASSERT_NE(box, nullptr);
    shown = box->windowTitle() + QLatin1Char('\n') + box->text();
    box->accept();
  });
  item("about").trigger();
  EXPECT_TRUE(shown.startsWith(QStringLiteral("About Orvane\n"))) << shown.toStdString();
  EXPECT_TRUE(shown.contains(QStringLiteral("Orvane 4.2"))) << shown.toStdString();
}

TEST_F(ControllerWindowTest, TheMenusShowTheHelpPanel) {
  const ResourceFolder resources;
  resources.write("Help.ui", kHelpDescription);
  item("showHelp").trigger();
  ASSERT_NE(windowWithKeyboard(), nullptr);
  EXPECT_EQ(windowWithKeyboard()->objectName(), "Help");
  EXPECT_TRUE(takeCalls().empty());
}

TEST_F(ControllerWindowTest, TheHelpPanelHasTheMenusTooAndReachesTheOtherWindows) {
  const ResourceFolder resources;
  resources.write("Help.ui", kHelpDescription);
  tuner.mTuneSpeech = true;
  item("showHelp").trigger();
  Window *panel = HelpPanel::showHelpPanel(rig.system);
  ASSERT_NE(panel, nullptr);
  const auto itemOfPanel = [panel](const char *name) { return panel->findChild<QAction *>(name); };
  ASSERT_NE(itemOfPanel("terminate"), nullptr);
  EXPECT_EQ(itemOfPanel("terminate")->shortcut(), QKeySequence(QStringLiteral("Ctrl+Q")));
  EXPECT_TRUE(itemOfPanel("iaSpeakTune")->isChecked());
  EXPECT_FALSE(itemOfPanel("iaSpeakHertz")->isChecked());
  itemOfPanel("iaSpeakHertz")->trigger();
  EXPECT_TRUE(tuner.mHertzSpeech);
  EXPECT_TRUE(item("iaSpeakHertz").isChecked());

  tuner.mWindow->close();
  tuner.mTuningMeterWindow->close();
  EXPECT_TRUE(takeCalls().empty());
  itemOfPanel("showOrvaneWindow")->trigger();
  EXPECT_TRUE(tuner.mWindow->isVisible());
  itemOfPanel("terminate")->trigger();
  EXPECT_EQ(takeCalls(), Lines{"terminate"});
}

TEST_F(ControllerWindowTest, TheButtonOpensTheSoundSettings) {
  tuner.openSoundPreferencesButton->click();
  EXPECT_EQ(takeCalls(), (Lines{"openSoundSettings", "showSoundInputPage"}));
}

}  // namespace
}  // namespace orvane::test

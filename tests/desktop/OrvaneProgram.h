// The tuner's window program on a desktop, and its main window as a person finds it. Controls are
// named as in the interface description, which also tells where they stand. Main thread only.
#pragma once

#include <QRect>
#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/desktop/AccessibleTree.h"
#include "tests/desktop/Desktop.h"
#include "tests/desktop/Input.h"
#include "tests/desktop/Windows.h"
#include "tests/servers/ChildProcess.h"

namespace orvane::test {

inline constexpr const char *kMainWindow = "Orvane";
inline constexpr const char *kMeterWindow = "Needle Meter";

class OrvaneProgram {
 public:
  OrvaneProgram(const Desktop &desktop, const AccessibleTree &tree,
                const std::vector<std::string> &arguments = {});

  // Waits until its main window can be used; false when that takes longer than 15 s.
  bool opens() const;
  std::string standardError() const;
  void signal(int number) const { mProcess.signal(number); }
  // Its exit status; -1 when a signal ended it, or when it had to be killed after 5 s.
  int wait() { return mProcess.wait(std::chrono::seconds(5)); }

  // The screen's pixels that a control takes; empty without a main window.
  QRect place(const std::string &control) const;
  Accessible object(const std::string &control) const;
  // What assistive programs find in the main window's content, in its order.
  std::vector<Accessible> controls() const { return contentView().children(); }
  // What assistive programs read of a text: for all but the note, what it shows.
  std::string text(const std::string &control) const { return object(control).text(); }
  // The number that a meter, a slider or a stepper shows.
  std::optional<double> value(const std::string &control) const { return object(control).value(); }
  // The title that a pop-up button shows, and those of all its items.
  std::string title(const std::string &popUp) const;
  std::vector<std::string> titles(const std::string &popUp) const;
  // The letter, the accidental (none for a natural note) and the octave: "B♭4".
  std::string note() const;

  void click(const std::string &control) const { mInput.click(place(control).center()); }
  // Opens a pop-up button and clicks on the item; false when it does not come to be seen.
  bool choose(const std::string &popUp, const std::string &title) const;
  // Opens a menu of the active window by the first letter of its title, and gives the item in it.
  // All titles without mnemonics.
  Accessible openMenu(const std::string &menu, const std::string &item) const;
  // Chooses it with the keys, too; false when there is none.
  bool chooseMenu(const std::string &menu, const std::string &item) const;
  // Replaces the text of a field and ends with Return.
  void enter(const std::string &field, const std::string &text) const;

  Accessible application() const { return mTree.application(kMainWindow); }

 private:
  Accessible contentView() const;
  Accessible shownMenu() const;

  const AccessibleTree &mTree;
  const Windows mWindows;
  const Input mInput;
  const std::string mLog;
  ChildProcess mProcess;
};

// The keys and values that the program stored for its next start; empty when it stored none.
std::map<std::string, std::string> storedSettings(const Desktop &desktop);

}  // namespace orvane::test

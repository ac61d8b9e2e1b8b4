// A desktop as an assistive program finds it: the objects that programs put on the accessibility
// bus. Every reading asks the program itself, waits two seconds at the most, and gives nothing (an
// empty text, 0, false) when the object is gone or has no such thing. Main thread only.
#pragma once

#include <QRect>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/desktop/Desktop.h"

typedef struct _GDBusConnection GDBusConnection;
typedef struct _GVariant GVariant;

namespace orvane::test {

// Of the bus's list of states, those that tests ask for.
enum class AccessibleState {
  kChecked = 4,
  kEditable = 7,
  kEnabled = 8,
  kFocusable = 11,
  kFocused = 12,
  kSelected = 23,
  kShowing = 25,
  kVisible = 30,
};

// Likewise of its list of relations.
enum class AccessibleRelation { kLabelFor = 1, kLabelledBy = 2 };

class Accessible {
 public:
  // Nothing.
  Accessible() = default;
  Accessible(std::shared_ptr<GDBusConnection> connection, std::string owner, std::string path);

  bool exists() const { return mConnection != nullptr; }

  std::string name() const;
  std::string description() const;
  // What kind of object it is, in the bus's English words: "push button", "text".
  std::string role() const;
  // The name its program knows it by.
  std::string identity() const;
  std::string text() const;
  std::optional<double> value() const;
  bool is(AccessibleState state) const;
  // Pixels from the top left of the screen.
  QRect extents() const;
  std::vector<Accessible> children() const;
  std::vector<Accessible> related(AccessibleRelation relation) const;
  std::vector<std::string> actions() const;

  // False when the object refuses.
  bool doAction(const std::string &action) const;
  bool grabFocus() const;
  bool setText(const std::string &text) const;
  bool setValue(double value) const;

  // The first of the objects inside, at any depth, of which that is true.
  Accessible find(const std::function<bool(const Accessible &)> &isWanted) const;
  Accessible findNamed(const std::string &name, const std::string &role = {}) const;

 private:
  using Reply = std::unique_ptr<GVariant, void (*)(GVariant *)>;

  // Takes the arguments over; they may be null.
  Reply call(const char *interface, const char *operation, GVariant *arguments) const;
  Reply property(const char *interface, const char *name) const;
  std::string textProperty(const char *name) const;
  // Those of a list of objects that are any.
  std::vector<Accessible> objects(GVariant *list) const;

  std::shared_ptr<GDBusConnection> mConnection;
  std::string mOwner;
  std::string mPath;
};

class AccessibleTree {
 public:
  // Throws std::runtime_error when the desktop has no accessibility bus.
  explicit AccessibleTree(const Desktop &desktop);

  std::vector<Accessible> applications() const;
  // Nothing when none of that name is there (yet).
  Accessible application(const std::string &name) const;

  struct Event {
    Accessible source;
    std::string kind;  // such as "PropertyChange accessible-value" and "TextChanged insert"
  };
  // What programs tell of changes in their objects from the first call on and for so long.
  std::vector<Event> eventsWithin(std::chrono::milliseconds time) const;

 private:
  std::shared_ptr<GDBusConnection> mConnection;
};

}  // namespace orvane::test

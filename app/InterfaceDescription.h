// Windows made from their descriptions: "resources:NAME.ui", with the tuner's own classes as
// custom widgets. Main thread.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>

#include <QAction>
#include <QWidget>

namespace orvane {

// A description that is missing or damaged, or lacks a field. what() names it: one line.
class InterfaceError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

class InterfaceDescription {
 public:
  // Loads the description. Throws InterfaceError.
  explicit InterfaceDescription(const QString &name);

  // The window that the description describes. Throws InterfaceError when it is of another class.
  template <typename Class>
  Class &root() const {
    auto *root = qobject_cast<Class *>(mRoot.get());
    if (root == nullptr)
      fail("is no " + className<Class>());
    return *root;
  }

  // Sets the field to the object of that name. Throws InterfaceError that names the field.
  template <typename Class>
  void connect(Class *&field, const char *name) const {
    field = mRoot->findChild<Class *>(QString::fromLatin1(name));
    if (field == nullptr)
      fail("has no " + className<Class>() + " named '" + name + "'");
  }

 private:
  template <typename Class>
  static std::string className() {
    const std::string name = Class::staticMetaObject.className();
    return name.substr(name.rfind(':') + 1);
  }
  [[noreturn]] void fail(const std::string &reason) const;

  QString mName;
  std::unique_ptr<QWidget> mRoot;
};

}  // namespace orvane

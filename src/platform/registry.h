// The classes root of the registry, per machine or per current user:
// where registration writes class, program and type-library keys, and
// where activation by name reads them. On Windows it is the system
// registry; elsewhere a text file in the registry export format per scope
// (see reg_file.h), found as follows:
//   per machine  <install prefix>/etc/parcelvane/classes.reg, keys under HKEY_CLASSES_ROOT
//   per user     $XDG_CONFIG_HOME/parcelvane/classes.reg (~/.config by default),
//                keys under HKEY_CURRENT_USER\Software\Classes
// and, when PARCELVANE_REGISTRY_DIR is set, $PARCELVANE_REGISTRY_DIR/machine
// and $PARCELVANE_REGISTRY_DIR/user instead of the two folders.
#ifndef PARCELVANE_SRC_PLATFORM_REGISTRY_H
#define PARCELVANE_SRC_PLATFORM_REGISTRY_H

#include <memory>
#include <string>
#include <string_view>

#include "parcelvane/platform.h"

namespace pv {

enum class RegistryScope { kMachine, kUser };

// The status of a registry file that does not parse (the platform's
// "configuration registry database is corrupt").
constexpr HRESULT kRegistryCorrupt = static_cast<HRESULT>(0x800703F1u);

// Key paths are relative to the classes root, with "\" between names; all
// text is UTF-8. Changes take effect at Commit: a writer that is dropped
// without it leaves the registry as it was (off Windows; the system
// registry takes each change at once).
class ClassesRoot {
 public:
  virtual ~ClassesRoot() = default;

  virtual HRESULT CreateKey(std::string_view key) = 0;
  // Sets a string value, creating the key; name "" is the default value.
  // A value with a CR, LF or NUL is refused (E_INVALIDARG).
  virtual HRESULT SetValue(std::string_view key, std::string_view name, std::string_view value) = 0;
  // S_FALSE when the key or the value is absent.
  virtual HRESULT GetValue(std::string_view key, std::string_view name, std::string* value) = 0;
  // Removes a key with all its subkeys; S_OK when it was absent too.
  virtual HRESULT DeleteTree(std::string_view key) = 0;
  // Removes a key unless it still has subkeys.
  virtual HRESULT DeleteKeyIfLeaf(std::string_view key) = 0;
  virtual HRESULT Commit() = 0;
};

// Opens the root of one scope. A writer holds the scope's lock until it is
// dropped, so two processes that register at once take turns. A reader of
// a scope that has no registry yet sees an empty one.
HRESULT OpenClassesRoot(RegistryScope scope, bool write, std::unique_ptr<ClassesRoot>* out);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_REGISTRY_H

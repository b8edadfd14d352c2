// A registry kept as text in the registry export format ("Windows Registry
// Editor Version 5.00", one "[key]" section per key, @= for the default
// value, "name"= for named values): where registration writes off Windows,
// so that a user can compare the file with an export made on Windows.
#ifndef PARCELVANE_SRC_PLATFORM_REG_FILE_H
#define PARCELVANE_SRC_PLATFORM_REG_FILE_H

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace pv {

class RegFile {
 public:
  // Reads an export. False, with a reason, when the text is not one; the
  // object is then unchanged.
  bool Parse(std::string_view text, std::string* error);
  // The export: keys in sorted order (a key before its subkeys), each key's
  // default value first, lines ending in CR LF. Equal contents give equal text.
  std::string Serialize() const;

  // Key paths are full ("HKEY_CLASSES_ROOT\CLSID\{...}") and compare without
  // regard to case; a key keeps the spelling it was created with. Creating
  // a key creates its ancestors.
  void CreateKey(std::string_view path);
  // Sets a string value (name "" is the default value), creating the key.
  void SetString(std::string_view path, std::string_view name, std::string_view value);
  // A string value, or false when the key or value is absent or not a string.
  bool GetString(std::string_view path, std::string_view name, std::string* value) const;
  bool HasKey(std::string_view path) const;
  bool HasSubkeys(std::string_view path) const;
  // Removes the key with all its subkeys; nothing when it is absent.
  void DeleteTree(std::string_view path);
  // The keys in file order, for inspection.
  std::vector<std::string> KeyPaths() const;
  bool empty() const { return keys_.empty(); }

 private:
  struct Value {
    std::string name;
    bool isString = true;
    std::string data;  // the text of a string; otherwise the value as written ("dword:00000001")
  };
  struct Key {
    std::string path;
    std::vector<Value> values;
  };
  using KeyMap = std::map<std::string, Key>;

  // Lower case, with "\" below every other byte, so that sorting puts
  // every key right before its subkeys.
  static std::string SortKey(std::string_view path);
  Key& EnsureKey(std::string_view path);
  void SetValue(std::string_view path, Value value);

  KeyMap keys_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_REG_FILE_H

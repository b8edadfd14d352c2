// Writes one JSON document, indented for reading, always valid: strings
// are escaped and any invalid UTF-8 in them becomes U+FFFD.
#ifndef PARCELVANE_TOOLS_JSON_WRITER_H
#define PARCELVANE_TOOLS_JSON_WRITER_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pvtool {

class JsonWriter {
 public:
  // `one_line`: no line breaks inside the document (JSON Lines).
  explicit JsonWriter(bool one_line = false) : one_line_(one_line) {}

  void BeginObject() { Open('{'); }
  void EndObject() { Close('}'); }
  void BeginArray() { Open('['); }
  void EndArray() { Close(']'); }

  // The name of the next member of the current object.
  void Key(std::string_view name);

  void String(std::string_view utf8);
  void Number(int64_t value);
  void Bool(bool value);
  void Null();

  // Shorthands for one member.
  void Member(std::string_view name, std::string_view utf8) { Key(name), String(utf8); }
  void Member(std::string_view name, const char* utf8) { Key(name), String(utf8); }
  void MemberNumber(std::string_view name, int64_t value) { Key(name), Number(value); }
  void MemberBool(std::string_view name, bool value) { Key(name), Bool(value); }

  // The document, ending in a line break once the outermost value is closed.
  const std::string& text() const { return out_; }

 private:
  void Open(char bracket);
  void Close(char bracket);
  void BeforeValue();
  void NewLine();
  void AppendQuoted(std::string_view utf8);

  std::string out_;
  std::vector<bool> has_items_;  // one entry per open object or array
  bool after_key_ = false;
  bool one_line_ = false;
};

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_JSON_WRITER_H

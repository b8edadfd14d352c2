// A strict JSON reader for the tests: checks that the tool's output is one
// valid JSON document and gives access to its values.
#ifndef PARCELVANE_TESTS_TOOLS_JSON_VALUE_H
#define PARCELVANE_TESTS_TOOLS_JSON_VALUE_H

#include <map>
#include <memory>
#include <string>
#include <vector>

namespace pvtool::test {

class JsonValue {
 public:
  enum class Kind { kNull, kBool, kNumber, kString, kArray, kObject };

  Kind kind() const { return kind_; }
  bool is_null() const { return kind_ == Kind::kNull; }
  bool boolean() const { return bool_; }
  double number() const { return number_; }
  const std::string& string() const { return string_; }
  const std::vector<JsonValue>& array() const { return array_; }
  size_t size() const { return kind_ == Kind::kArray ? array_.size() : object_.size(); }
  const JsonValue& operator[](size_t i) const;
  // The member `name`; a null value when absent.
  const JsonValue& operator[](const std::string& name) const;
  bool has(const std::string& name) const { return object_.count(name) != 0; }

 private:
  friend class JsonParser;
  Kind kind_ = Kind::kNull;
  bool bool_ = false;
  double number_ = 0;
  std::string string_;
  std::vector<JsonValue> array_;
  std::map<std::string, JsonValue> object_;
};

// Parses exactly one JSON document (white space around it allowed).
// Returns false, with a reason, for anything else.
bool ParseJson(const std::string& text, JsonValue* value, std::string* error);

}  // namespace pvtool::test

#endif  // PARCELVANE_TESTS_TOOLS_JSON_VALUE_H

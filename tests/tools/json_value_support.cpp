#include "tests/tools/json_value.h"

#include <cstdlib>

namespace pvtool::test {

const JsonValue& JsonValue::operator[](size_t i) const {
  static const JsonValue kNull;
  return i < array_.size() ? array_[i] : kNull;
}

const JsonValue& JsonValue::operator[](const std::string& name) const {
  static const JsonValue kNull;
  auto it = object_.find(name);
  return it == object_.end() ? kNull : it->second;
}

class JsonParser {
 public:
  explicit JsonParser(const std::string& text) : s_(text) {}

  bool Document(JsonValue* value, std::string* error) {
    SkipSpace();
    const bool ok = Value(value, 0) && (SkipSpace(), pos_ == s_.size());
    if (!ok) *error = error_.empty() ? "trailing text at " + std::to_string(pos_) : error_;
    return ok;
  }

 private:
  bool Fail(const std::string& what) {
    if (error_.empty()) error_ = what + " at " + std::to_string(pos_);
    return false;
  }
  void SkipSpace() {
    while (pos_ < s_.size() && (s_[pos_] == ' ' || s_[pos_] == '\n' || s_[pos_] == '\r' || s_[pos_] == '\t'))
      ++pos_;
  }
  bool Literal(const char* word) {
    const std::string w(word);
    if (s_.compare(pos_, w.size(), w) != 0) return Fail("bad literal");
    pos_ += w.size();
    return true;
  }

  bool Value(JsonValue* v, int depth) {
    if (depth > 64) return Fail("too deep");
    if (pos_ >= s_.size()) return Fail("unexpected end");
    const char c = s_[pos_];
    if (c == '{') return Object(v, depth);
    if (c == '[') return Array(v, depth);
    if (c == '"') return v->kind_ = JsonValue::Kind::kString, String(&v->string_);
    if (c == 't') return v->kind_ = JsonValue::Kind::kBool, v->bool_ = true, Literal("true");
    if (c == 'f') return v->kind_ = JsonValue::Kind::kBool, Literal("false");
    if (c == 'n') return Literal("null");
    return Number(v);
  }

  bool Number(JsonValue* v) {
    const size_t start = pos_;
    if (pos_ < s_.size() && s_[pos_] == '-') ++pos_;
    if (pos_ >= s_.size() || !isdigit(static_cast<unsigned char>(s_[pos_]))) return Fail("bad number");
    if (s_[pos_] == '0' && pos_ + 1 < s_.size() && isdigit(static_cast<unsigned char>(s_[pos_ + 1]))) {
      return Fail("leading zero");
    }
    while (pos_ < s_.size() && (isdigit(static_cast<unsigned char>(s_[pos_])) || s_[pos_] == '.' ||
                                s_[pos_] == 'e' || s_[pos_] == 'E' || s_[pos_] == '+' || s_[pos_] == '-')) {
      ++pos_;
    }
    v->kind_ = JsonValue::Kind::kNumber;
    v->number_ = std::strtod(s_.substr(start, pos_ - start).c_str(), nullptr);
    return true;
  }

  static void AppendUtf8(unsigned cp, std::string* out) {
    if (cp < 0x80) {
      out->push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }

  bool String(std::string* out) {
    ++pos_;  // the opening quote
    while (pos_ < s_.size()) {
      const auto c = static_cast<unsigned char>(s_[pos_++]);
      if (c == '"') return true;
      if (c < 0x20) return Fail("raw control character in a string");
      if (c != '\\') {
        out->push_back(static_cast<char>(c));
        continue;
      }
      if (pos_ >= s_.size()) break;
      const char e = s_[pos_++];
      switch (e) {
        case '"':
        case '\\':
        case '/':
          out->push_back(e);
          break;
        case 'b':
          out->push_back('\b');
          break;
        case 'f':
          out->push_back('\f');
          break;
        case 'n':
          out->push_back('\n');
          break;
        case 'r':
          out->push_back('\r');
          break;
        case 't':
          out->push_back('\t');
          break;
        case 'u': {
          if (pos_ + 4 > s_.size()) return Fail("short \\u escape");
          const unsigned cp = static_cast<unsigned>(std::strtoul(s_.substr(pos_, 4).c_str(), nullptr, 16));
          pos_ += 4;
          AppendUtf8(cp, out);
          break;
        }
        default:
          return Fail("bad escape");
      }
    }
    return Fail("unterminated string");
  }

  bool Array(JsonValue* v, int depth) {
    v->kind_ = JsonValue::Kind::kArray;
    ++pos_;
    SkipSpace();
    if (pos_ < s_.size() && s_[pos_] == ']') return ++pos_, true;
    for (;;) {
      v->array_.emplace_back();
      SkipSpace();
      if (!Value(&v->array_.back(), depth + 1)) return false;
      SkipSpace();
      if (pos_ < s_.size() && s_[pos_] == ',') {
        ++pos_;
        continue;
      }
      if (pos_ < s_.size() && s_[pos_] == ']') return ++pos_, true;
      return Fail("expected , or ]");
    }
  }

  bool Object(JsonValue* v, int depth) {
    v->kind_ = JsonValue::Kind::kObject;
    ++pos_;
    SkipSpace();
    if (pos_ < s_.size() && s_[pos_] == '}') return ++pos_, true;
    for (;;) {
      SkipSpace();
      if (pos_ >= s_.size() || s_[pos_] != '"') return Fail("expected a member name");
      std::string name;
      if (!String(&name)) return false;
      if (v->object_.count(name) != 0) return Fail("duplicate member " + name);
      SkipSpace();
      if (pos_ >= s_.size() || s_[pos_] != ':') return Fail("expected :");
      ++pos_;
      SkipSpace();
      if (!Value(&v->object_[name], depth + 1)) return false;
      SkipSpace();
      if (pos_ < s_.size() && s_[pos_] == ',') {
        ++pos_;
        continue;
      }
      if (pos_ < s_.size() && s_[pos_] == '}') return ++pos_, true;
      return Fail("expected , or }");
    }
  }

  const std::string& s_;
  size_t pos_ = 0;
  std::string error_;
};

bool ParseJson(const std::string& text, JsonValue* value, std::string* error) {
  *value = JsonValue();
  return JsonParser(text).Document(value, error);
}

}  // namespace pvtool::test

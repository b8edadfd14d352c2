#include "tools/json_writer.h"

#include "tools/utf.h"

namespace pvtool {

void JsonWriter::NewLine() {
  if (one_line_) return;
  out_.push_back('\n');
  out_.append(2 * has_items_.size(), ' ');
}

void JsonWriter::BeforeValue() {
  if (after_key_) {
    after_key_ = false;
    return;
  }
  if (has_items_.empty()) return;
  if (has_items_.back()) out_.push_back(',');
  has_items_.back() = true;
  NewLine();
}

void JsonWriter::Key(std::string_view name) {
  BeforeValue();
  AppendQuoted(name);
  out_.append(": ");
  after_key_ = true;
}

void JsonWriter::Open(char bracket) {
  BeforeValue();
  out_.push_back(bracket);
  has_items_.push_back(false);
}

void JsonWriter::Close(char bracket) {
  const bool had_items = has_items_.back();
  has_items_.pop_back();
  if (had_items) NewLine();
  out_.push_back(bracket);
  if (has_items_.empty()) out_.push_back('\n');
}

void JsonWriter::String(std::string_view utf8) {
  BeforeValue();
  AppendQuoted(utf8);
}

void JsonWriter::Number(int64_t value) {
  BeforeValue();
  out_.append(std::to_string(value));
}

void JsonWriter::Bool(bool value) {
  BeforeValue();
  out_.append(value ? "true" : "false");
}

void JsonWriter::Null() {
  BeforeValue();
  out_.append("null");
}

void JsonWriter::AppendQuoted(std::string_view utf8) {
  std::string repaired;
  if (!IsValidUtf8(utf8)) {
    repaired = Utf16ToUtf8(Utf8ToUtf16(utf8));
    utf8 = repaired;
  }
  static const char kHex[] = "0123456789abcdef";
  out_.push_back('"');
  for (char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"':
        out_.append("\\\"");
        continue;
      case '\\':
        out_.append("\\\\");
        continue;
      case '\n':
        out_.append("\\n");
        continue;
      case '\r':
        out_.append("\\r");
        continue;
      case '\t':
        out_.append("\\t");
        continue;
      default:
        break;
    }
    if (byte < 0x20 || byte == 0x7F) {
      out_.append("\\u00");
      out_.push_back(kHex[byte >> 4]);
      out_.push_back(kHex[byte & 0xF]);
      continue;
    }
    out_.push_back(c);
  }
  out_.push_back('"');
}

}  // namespace pvtool

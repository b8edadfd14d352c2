#include "src/platform/reg_file.h"

#include "src/platform/strings.h"

namespace pv {
namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kHeader4 = "REGEDIT4";

std::string Quote(std::string_view text) {
  std::string out = "\"";
  for (char c : text) {
    if (c == '\\' || c == '"') out += '\\';
    out += c;
  }
  out += '"';
  return out;
}

// A quoted string at the start of `text`: its unescaped content and the
// number of bytes it took, or false when it is not closed.
bool Unquote(std::string_view text, std::string* out, size_t* used) {
  if (text.empty() || text[0] != '"') return false;
  out->clear();
  for (size_t i = 1; i < text.size(); ++i) {
    char c = text[i];
    if (c == '\\' && i + 1 < text.size()) {
      *out += text[++i];
    } else if (c == '"') {
      *used = i + 1;
      return true;
    } else {
      *out += c;
    }
  }
  return false;
}

std::string_view TrimRight(std::string_view s) {
  while (!s.empty() && (s.back() == '\r' || s.back() == ' ' || s.back() == '\t')) s.remove_suffix(1);
  return s;
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) { return EqualsIgnoreCaseAscii(a, b); }

// A key path is names separated by single "\": none of them empty.
bool IsKeyPath(std::string_view path) {
  return !path.empty() && path.front() != '\\' && path.back() != '\\' &&
         path.find("\\\\") == std::string_view::npos;
}

}  // namespace

std::string RegFile::SortKey(std::string_view path) {
  std::string key;
  key.reserve(path.size());
  for (char c : path) key += c == '\\' ? '\x01' : ToLowerAscii(c);
  return key;
}

RegFile::Key& RegFile::EnsureKey(std::string_view path) {
  // Every ancestor exists with its key.
  for (size_t slash = path.find('\\'); slash != std::string_view::npos; slash = path.find('\\', slash + 1)) {
    std::string_view ancestor = path.substr(0, slash);
    auto [it, added] = keys_.try_emplace(SortKey(ancestor));
    if (added) it->second.path = std::string(ancestor);
  }
  auto [it, added] = keys_.try_emplace(SortKey(path));
  if (added) it->second.path = std::string(path);
  return it->second;
}

void RegFile::CreateKey(std::string_view path) { EnsureKey(path); }

void RegFile::SetValue(std::string_view path, Value value) {
  Key& key = EnsureKey(path);
  for (Value& v : key.values) {
    if (EqualsIgnoreCase(v.name, value.name)) {
      v.isString = value.isString;
      v.data = std::move(value.data);
      return;
    }
  }
  key.values.push_back(std::move(value));
}

void RegFile::SetString(std::string_view path, std::string_view name, std::string_view value) {
  SetValue(path, Value{std::string(name), true, std::string(value)});
}

bool RegFile::GetString(std::string_view path, std::string_view name, std::string* value) const {
  auto it = keys_.find(SortKey(path));
  if (it == keys_.end()) return false;
  for (const Value& v : it->second.values) {
    if (v.isString && EqualsIgnoreCase(v.name, name)) {
      *value = v.data;
      return true;
    }
  }
  return false;
}

bool RegFile::HasKey(std::string_view path) const { return keys_.count(SortKey(path)) != 0; }

bool RegFile::HasSubkeys(std::string_view path) const {
  std::string prefix = SortKey(path) + '\x01';
  auto it = keys_.lower_bound(prefix);
  return it != keys_.end() && it->first.compare(0, prefix.size(), prefix) == 0;
}

void RegFile::DeleteTree(std::string_view path) {
  std::string self = SortKey(path);
  keys_.erase(self);
  std::string prefix = self + '\x01';
  auto it = keys_.lower_bound(prefix);
  while (it != keys_.end() && it->first.compare(0, prefix.size(), prefix) == 0) it = keys_.erase(it);
}

std::vector<std::string> RegFile::KeyPaths() const {
  std::vector<std::string> paths;
  paths.reserve(keys_.size());
  for (const auto& entry : keys_) paths.push_back(entry.second.path);
  return paths;
}

std::string RegFile::Serialize() const {
  std::string out(kHeader);
  out += "\r\n\r\n";
  for (const auto& entry : keys_) {
    const Key& key = entry.second;
    out += '[' + key.path + "]\r\n";
    auto write = [&out](const Value& v) {
      out += v.name.empty() ? std::string("@") : Quote(v.name);
      out += '=';
      out += v.isString ? Quote(v.data) : v.data;
      out += "\r\n";
    };
    for (const Value& v : key.values) {
      if (v.name.empty()) write(v);
    }
    for (const Value& v : key.values) {
      if (!v.name.empty()) write(v);
    }
    out += "\r\n";
  }
  return out;
}

bool RegFile::Parse(std::string_view text, std::string* error) {
  if (text.substr(0, 3) == "\xEF\xBB\xBF") text.remove_prefix(3);
  RegFile parsed;
  std::string current;
  bool haveHeader = false;
  size_t lineNumber = 0;
  std::string pending;  // a value continued over lines ending in "\"
  std::string joined;
  auto fail = [&](const std::string& why) {
    *error = "line " + std::to_string(lineNumber) + ": " + why;
    return false;
  };
  while (!text.empty()) {
    size_t end = text.find('\n');
    std::string_view line = TrimRight(text.substr(0, end));
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    ++lineNumber;
    if (!pending.empty()) {
      std::string_view part = line;
      while (!part.empty() && (part.front() == ' ' || part.front() == '\t')) part.remove_prefix(1);
      pending += part;
      if (!pending.empty() && pending.back() == '\\') {
        pending.pop_back();
        continue;
      }
      joined = std::move(pending);
      pending.clear();
      line = TrimRight(joined);
    }
    if (!haveHeader) {
      if (line.empty()) continue;
      if (line != kHeader && line != kHeader4) return fail("not a registry export");
      haveHeader = true;
      continue;
    }
    if (line.empty() || line[0] == ';') continue;
    if (line[0] == '[') {
      if (line.back() != ']' || line.size() < 3) return fail("a key line without its closing bracket");
      std::string_view path = line.substr(1, line.size() - 2);
      bool deletion = path[0] == '-';
      if (deletion) path.remove_prefix(1);
      if (!IsKeyPath(path)) return fail("a key name that is empty");
      if (deletion) {
        parsed.DeleteTree(path);
        current.clear();
        continue;
      }
      current = std::string(path);
      parsed.CreateKey(current);
      continue;
    }
    if (current.empty()) return fail("a value outside a key");
    Value value;
    size_t used = 0;
    if (line[0] == '@') {
      used = 1;
    } else if (!Unquote(line, &value.name, &used)) {
      return fail("a value name that is not a quoted string");
    }
    if (used >= line.size() || line[used] != '=') return fail("a value without \"=\"");
    std::string_view data = line.substr(used + 1);
    if (!data.empty() && data[0] == '"') {
      size_t dataUsed = 0;
      if (!Unquote(data, &value.data, &dataUsed) || dataUsed != data.size()) {
        return fail("a string value that is not one quoted string");
      }
    } else if (!data.empty() && data.back() == '\\') {
      pending = std::string(line.substr(0, line.size() - 1));
      continue;
    } else if (data == "-") {
      continue;  // a deleted value
    } else if (data.empty()) {
      return fail("a value without data");
    } else {
      value.isString = false;
      value.data = std::string(data);
    }
    parsed.SetValue(current, std::move(value));
  }
  if (!pending.empty()) return fail("a value continued past the end of the file");
  if (!haveHeader) {
    *error = "empty file";
    return false;
  }
  *this = std::move(parsed);
  return true;
}

}  // namespace pv

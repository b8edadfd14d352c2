// parcelvane extract: every attachment into a directory, never outside it
// and never over an existing file.
#include <cstdio>
#include <set>
#include <system_error>

#include "tools/commands.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/json_writer.h"
#include "tools/safe_name.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

struct Written {
  std::string original_name;
  std::string path;
  uint64_t size = 0;
};

// The directory to write into, created when missing; an empty path for
// the current directory, so that the names printed carry no "./".
fs::path PrepareDirectory(const std::string& dir) {
  if (dir.empty()) return fs::path();
  const fs::path path = PathFromUtf8(dir);
  std::error_code error;
  if (fs::is_directory(path, error)) return path;
  if (fs::exists(path, error)) throw ToolError(kExitWriteFailed, dir + ": not a directory");
  fs::create_directories(path, error);
  if (error) throw ToolError(kExitWriteFailed, "cannot create " + dir + ": " + error.message());
  return path;
}

// The target of `name` in `dir`; throws if it would not be a direct child
// of `dir` (SafeFileName guarantees it; this is the last line of defence).
fs::path ChildOf(const fs::path& dir, const std::string& name) {
  const fs::path child = PathFromUtf8(name);
  if (child.has_root_path() || child.has_parent_path() || child.filename() != child || name == "." || name == "..") {
    throw ToolError(kExitWriteFailed, "refusing the unsafe file name " + name);
  }
  return dir / child;
}

// Writes `bytes` under `name` or, when that is taken (by an older file or
// by an attachment of this run), under the first free numbered name.
Written WriteAttachment(const fs::path& dir, const std::string& name, const std::string& bytes, bool force,
                        std::set<std::string>* used) {
  constexpr unsigned kMaxNumber = 100000;
  for (unsigned number = 0; number < kMaxNumber; ++number) {
    const std::string candidate = number == 0 ? name : NumberedName(name, number);
    if (used->count(candidate) != 0) continue;
    const fs::path target = ChildOf(dir, candidate);
    if (WriteFileAtomically(target, bytes, force) == WriteResult::kWritten) {
      used->insert(candidate);
      return {name, PathToUtf8(target), bytes.size()};
    }
  }
  throw ToolError(kExitWriteFailed, "no free file name for " + name);
}

std::string Report(const std::vector<Written>& written, const std::vector<std::string>& names) {
  std::string out;
  for (size_t i = 0; i < written.size(); ++i) {
    out += "wrote " + TerminalSafe(written[i].path) + " (" + std::to_string(written[i].size) + " bytes";
    if (PathToUtf8(PathFromUtf8(written[i].path).filename()) != names[i]) {
      out += ", attachment \"" + TerminalSafe(names[i]) + "\"";
    }
    out += ")\n";
  }
  return out;
}

std::string JsonReport(const std::vector<Written>& written, const std::vector<std::string>& names) {
  JsonWriter json;
  json.BeginArray();
  for (size_t i = 0; i < written.size(); ++i) {
    json.BeginObject();
    json.Member("attachment", names[i]);
    json.Member("path", written[i].path);
    json.MemberNumber("size", static_cast<int64_t>(written[i].size));
    json.EndObject();
  }
  json.EndArray();
  return json.text();
}

}  // namespace

int RunExtract(const Args& args) {
  ParsedArgs parsed;
  const std::vector<OptionDef> options = {
      {"dir", 'd', true, false}, {"force", '\0', false, false}, {"json", '\0', false, false}};
  if (!ParseCommand("extract", args, options, true, &parsed)) return 0;
  const std::string file = SingleInput(parsed, "extract");
  const MessageView message = LoadMessage(file, LoadOptionsOf(parsed));
  const PartTree tree = message.Tree(false);
  PrintWarnings(SourceName(file), StructureWarnings(tree.parts));
  const std::vector<AttachmentInfo>& attachments = tree.attachments;
  if (attachments.empty() && !parsed.Has("json")) {
    std::fputs(("parcelvane: " + SourceName(file) + ": no attachments\n").c_str(), stderr);
    return 0;
  }
  const fs::path dir = PrepareDirectory(parsed.Get("dir"));
  std::set<std::string> used;
  std::vector<Written> written;
  std::vector<std::string> names;
  for (const AttachmentInfo& attachment : attachments) {
    const std::string bytes = DecodedBytes(attachment.part.get());
    written.push_back(WriteAttachment(dir, SafeFileName(attachment.name), bytes, parsed.Has("force"), &used));
    names.push_back(attachment.name);
  }
  WriteOut(parsed.Has("json") ? JsonReport(written, names) : Report(written, names));
  return 0;
}

}  // namespace pvtool

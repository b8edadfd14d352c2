// parcelvane extract: every attachment into a directory, never outside it
// and never over an existing file.
#include <cstdio>

#include "tools/attachment_files.h"
#include "tools/commands.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/json_writer.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

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
  AttachmentDirectory dir(parsed.Get("dir"), parsed.Has("force"));
  std::vector<Written> written;
  std::vector<std::string> names;
  for (const AttachmentInfo& attachment : attachments) {
    const std::string bytes = DecodedBytes(attachment.part.get());
    written.push_back(dir.Write(attachment.name, bytes));
    names.push_back(attachment.name);
  }
  WriteOut(parsed.Has("json") ? JsonReport(written, names) : Report(written, names));
  return 0;
}

}  // namespace pvtool

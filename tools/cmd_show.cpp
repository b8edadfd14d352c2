// parcelvane show: a summary of one message, for a person or as JSON.
#include <algorithm>

#include "tools/commands.h"
#include "tools/file_io.h"
#include "tools/json_writer.h"
#include "tools/mail_text.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

struct Summary {
  std::string from, to, subject, date;
  std::string sender_name, sender_address;
  std::vector<AddressInfo> recipients;
  bool mime = false;
  std::vector<PartInfo> parts;
  uint64_t body_size = 0;
  std::vector<AttachmentInfo> attachments;
  std::vector<std::string> warnings;
};

// The decoded field as written, unless it holds a group: then the entries
// one by one, so that a group reads as its name and its members.
std::string AddressLine(const MessageView& message, const char* field, std::vector<AddressInfo>* entries) {
  *entries = message.Addresses(field);
  return HasGroup(*entries) ? AddressText(*entries) : message.DecodedField(field);
}

Summary Summarize(const MessageView& message) {
  Summary s;
  std::vector<AddressInfo> senders;
  s.from = AddressLine(message, "From", &senders);
  s.to = AddressLine(message, "To", &s.recipients);
  s.subject = message.Subject();
  s.date = UnfoldValue(message.DecodedField("Date"));
  const MailboxInfo sender = message.Sender();
  s.sender_name = sender.name;
  s.sender_address = sender.address;
  s.mime = message.IsMime();
  PartTree tree = message.Tree(true);
  if (s.mime) {
    s.parts = std::move(tree.parts);
  } else {
    s.body_size = message.PlainBodySize();
  }
  s.attachments = std::move(tree.attachments);
  s.warnings = StructureWarnings(s.parts);
  return s;
}

std::string Size(uint64_t bytes) { return std::to_string(bytes) + " B"; }

// Indentation stops at kMaxIndent levels, so that a deep tree prints in
// linear space; deeper parts carry their depth as a number.
constexpr int kMaxIndent = 32;

std::string PartLine(const PartInfo& part) {
  std::string indent(2 * static_cast<size_t>(std::min(part.depth, kMaxIndent)), ' ');
  if (part.depth > kMaxIndent) indent += "[" + std::to_string(part.depth) + "] ";
  std::string line = PadRight(indent + TerminalSafe(part.content_type), 32);
  line += "  " + PadRight(part.transfer_encoding.empty() ? "-" : TerminalSafe(part.transfer_encoding), 18);
  line += "  " + PadRight(part.has_raw_size ? Size(part.raw_size) + " raw" : "? raw", 14);
  if (part.has_decoded_size) line += "  " + PadRight(Size(part.decoded_size) + " decoded", 18);
  if (part.attachment) line += "  attachment \"" + TerminalSafe(part.name) + "\"";
  while (!line.empty() && line.back() == ' ') line.pop_back();
  return line + "\n";
}

std::string HumanSummary(const Summary& s) {
  std::string out;
  out += "From:    " + TerminalSafe(s.from) + "\n";
  out += "To:      " + TerminalSafe(s.to) + "\n";
  out += "Subject: " + TerminalSafe(s.subject) + "\n";
  if (!s.date.empty()) out += "Date:    " + TerminalSafe(s.date) + "\n";
  out += "\n";
  if (!s.mime) {
    out += "Plain message (no MIME parts), body " + Size(s.body_size) + "\n";
    return out;
  }
  out += "Parts:\n";
  for (const PartInfo& part : s.parts) out += "  " + PartLine(part);
  if (!s.attachments.empty()) {
    out += "\nAttachments: " + std::to_string(s.attachments.size()) + "\n";
  }
  return out;
}

void MaybeString(JsonWriter* json, const char* key, const std::string& value) {
  json->Key(key);
  if (value.empty()) {
    json->Null();
  } else {
    json->String(value);
  }
}

void MaybeNumber(JsonWriter* json, const char* key, bool known, uint64_t value) {
  json->Key(key);
  if (known) {
    json->Number(static_cast<int64_t>(value));
  } else {
    json->Null();
  }
}

std::string JsonSummary(const Summary& s) {
  JsonWriter json;
  json.BeginObject();
  json.Member("from", s.from);
  json.Key("sender");
  json.BeginObject();
  json.Member("name", s.sender_name);
  json.Member("address", s.sender_address);
  json.EndObject();
  json.Member("to", s.to);
  json.Key("recipients");
  json.BeginArray();
  for (const AddressInfo& entry : s.recipients) {
    // A group's members carry its name; an empty group is its name alone.
    const std::vector<MailboxInfo> alone = {MailboxInfo()};
    for (const MailboxInfo& mailbox : entry.group&& entry.mailboxes.empty() ? alone : entry.mailboxes) {
      json.BeginObject();
      json.Member("name", mailbox.name);
      json.Member("address", mailbox.address);
      if (entry.group) json.Member("group", entry.group_name);
      json.EndObject();
    }
  }
  json.EndArray();
  json.Member("subject", s.subject);
  MaybeString(&json, "date", s.date);
  json.MemberBool("mime", s.mime);
  if (!s.mime) json.MemberNumber("body_size", static_cast<int64_t>(s.body_size));
  json.Key("parts");
  json.BeginArray();
  for (const PartInfo& part : s.parts) {
    json.BeginObject();
    json.MemberNumber("depth", part.depth);
    json.Member("content_type", part.content_type);
    MaybeString(&json, "transfer_encoding", part.transfer_encoding);
    MaybeNumber(&json, "size", part.has_raw_size, part.raw_size);
    MaybeNumber(&json, "decoded_size", part.has_decoded_size, part.decoded_size);
    json.MemberBool("attachment", part.attachment);
    json.Key("name");
    if (part.attachment) {
      json.String(part.name);
    } else {
      json.Null();
    }
    json.MemberNumber("children", part.children);
    json.EndObject();
  }
  json.EndArray();
  json.Key("attachments");
  json.BeginArray();
  for (const AttachmentInfo& attachment : s.attachments) {
    json.BeginObject();
    json.Member("name", attachment.name);
    json.Member("content_type", attachment.content_type);
    Ref<IEMSDataObject> decoded;
    const bool has_size = attachment.part->get_DecodedBinary(decoded.put()) == S_OK && decoded;
    json.MemberNumber("size", has_size ? static_cast<int64_t>(SpanLength(decoded.get())) : 0);
    json.EndObject();
  }
  json.EndArray();
  json.Key("warnings");
  json.BeginArray();
  for (const std::string& warning : s.warnings) json.String(warning);
  json.EndArray();
  json.EndObject();
  return json.text();
}

}  // namespace

int RunShow(const Args& args) {
  ParsedArgs parsed;
  if (!ParseCommand("show", args, {{"json", '\0', false, false}}, true, &parsed)) return 0;
  const std::string file = SingleInput(parsed, "show");
  const MessageView message = LoadMessage(file, LoadOptionsOf(parsed));
  const Summary summary = Summarize(message);
  PrintWarnings(SourceName(file), summary.warnings);
  WriteOut(parsed.Has("json") ? JsonSummary(summary) : HumanSummary(summary));
  return 0;
}

}  // namespace pvtool

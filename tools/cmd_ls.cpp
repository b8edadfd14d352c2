// parcelvane ls: one line per message of an mbox file or a directory of
// message files, in one pass over the mailbox.
#include <cstdio>
#include <functional>
#include <system_error>

#include "tools/commands.h"
#include "tools/console.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/json_writer.h"
#include "tools/mail_text.h"
#include "tools/mailbox_walk.h"
#include "tools/mbox_reader.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

struct Entry {
  uint64_t index = 0;
  std::string date, sender, subject;
  uint64_t size = 0;
  int attachments = 0;
  std::string problem;                // why the message could not be read, or ""
  std::vector<std::string> warnings;  // what its part tree does not show
  std::string path;                   // for a directory
  uint64_t offset = 0;                // for an mbox file
};

// Reads one message into `entry`; a message the tool cannot read is kept
// in the list with the reason.
void Describe(std::string bytes, const LoadOptions& options, Entry* entry) {
  entry->size = bytes.size();
  try {
    std::string prepared = PrepareMessageBytes(std::move(bytes), options, "message");
    Ref<IEMSMessageParser> parsed = ParseMessage(prepared);
    const MessageView message(std::move(parsed), std::move(prepared));
    entry->date = ShortDate(message.RawField("Date"));
    const MailboxInfo sender = message.Sender();
    entry->sender = sender.name.empty() ? sender.address : sender.name;
    entry->subject = message.Subject();
    const PartTree tree = message.Tree(false);
    entry->attachments = static_cast<int>(tree.attachments.size());
    entry->warnings = StructureWarnings(tree.parts);
  } catch (const ToolError& error) {
    const std::string text = error.what();
    const size_t colon = text.find(": ");
    entry->problem = colon == std::string::npos ? text : text.substr(colon + 2);
  }
}

class Listing {
 public:
  Listing(bool json, bool terminal) : json_(json), terminal_(terminal) {
    if (json_) {
      json_writer_.BeginArray();
    } else if (terminal_) {
      WriteOut(std::string("     #  ") + PadRight("date", 16) + "  " + PadRight("from", 24) + "  " +
               PadRight("subject", 40) + "  " + PadRight("     size", 9) + "  att\n");
    }
  }

  void Add(const Entry& e) {
    ++count_;
    PrintWarnings(e.path.empty() ? "message " + std::to_string(e.index) : e.path, e.warnings);
    if (json_) return AddJson(e);
    char tail[48];
    std::snprintf(tail, sizeof tail, "  %9llu  %3d\n", static_cast<unsigned long long>(e.size),
                  e.attachments);
    char index[24];
    std::snprintf(index, sizeof index, "%6llu  ", static_cast<unsigned long long>(e.index));
    const std::string subject = e.problem.empty() ? e.subject : "(" + e.problem + ")";
    WriteOut(std::string(index) + FitColumn(TerminalSafe(e.date), 16) + "  " +
             FitColumn(TerminalSafe(e.sender), 24) + "  " + FitColumn(TerminalSafe(subject), 40) + tail);
  }

  void Finish() {
    if (json_) {
      json_writer_.EndArray();
      WriteOut(json_writer_.text());
    }
  }

  uint64_t count() const { return count_; }

 private:
  void AddJson(const Entry& e) {
    JsonWriter& j = json_writer_;
    j.BeginObject();
    j.MemberNumber("index", static_cast<int64_t>(e.index));
    j.Member("date", e.date);
    j.Member("sender", e.sender);
    j.Member("subject", e.subject);
    j.MemberNumber("size", static_cast<int64_t>(e.size));
    j.MemberNumber("attachments", e.attachments);
    if (!e.path.empty()) {
      j.Member("path", e.path);
    } else {
      j.MemberNumber("offset", static_cast<int64_t>(e.offset));
    }
    if (!e.problem.empty()) j.Member("problem", e.problem);
    j.EndObject();
  }

  bool json_;
  bool terminal_;
  JsonWriter json_writer_;
  uint64_t count_ = 0;
};

void ListMbox(const std::string& file, const LoadOptions& options, Listing* listing) {
  std::FILE* in = stdin;
  uint64_t total = 0;
  if (file == "-") {
    SetBinaryStdin();
  } else {
    const fs::path path = PathFromUtf8(file);
    std::error_code error;
    total = fs::file_size(path, error);
    in = OpenForReading(path, file);
  }
  struct Closer {
    std::FILE* f;
    ~Closer() {
      if (f != stdin) std::fclose(f);
    }
  } closer{in};
  MboxReader reader([in](char* buffer, size_t capacity) { return std::fread(buffer, 1, capacity, in); });
  ProgressBar progress(IsTerminal(stderr), total);
  MboxMessage message;
  uint64_t index = 0;
  while (reader.Next(&message)) {
    Entry entry;
    entry.index = ++index;
    entry.offset = message.offset;
    Describe(std::move(message.bytes), options, &entry);
    listing->Add(entry);
    progress.Update(reader.bytes_read(), index);
  }
  progress.Finish();
  if (std::ferror(in)) throw ToolError(kExitUnreadable, SourceName(file) + ": read error");
  if (reader.not_mbox()) {
    throw ToolError(kExitNotMessage,
                    SourceName(file) + ": not an mbox file (its first line does not start with \"From \")");
  }
}

void ListDirectory(const fs::path& dir, const LoadOptions& options, bool follow, Listing* listing) {
  WalkOptions walk_options;
  walk_options.follow = follow;
  const WalkResult walk = MessageFiles(dir, walk_options);
  ReportSkippedLinks(walk);
  const std::vector<fs::path>& files = walk.files;
  ProgressBar progress(IsTerminal(stderr), files.size());
  uint64_t index = 0;
  for (const fs::path& file : files) {
    Entry entry;
    entry.index = ++index;
    entry.path = PathToUtf8(file);
    try {
      Describe(ReadWholeFile(file), options, &entry);
    } catch (const ToolError&) {
      entry.problem = "cannot be read";
    }
    listing->Add(entry);
    progress.Update(index, index);
  }
  progress.Finish();
}

}  // namespace

int RunLs(const Args& args) {
  ParsedArgs parsed;
  if (!ParseCommand("ls", args, {{"json", '\0', false, false}, {"follow", '\0', false, false}}, true,
                    &parsed)) {
    return 0;
  }
  const std::string mailbox = SingleInput(parsed, "ls", "MAILBOX");
  const LoadOptions options = LoadOptionsOf(parsed);
  Listing listing(parsed.Has("json"), IsTerminal(stdout));
  std::error_code error;
  const fs::path path = PathFromUtf8(mailbox);
  if (mailbox != "-" && fs::is_directory(path, error)) {
    ListDirectory(path, options, parsed.Has("follow"), &listing);
  } else {
    if (mailbox != "-" && !fs::exists(path, error))
      throw ToolError(kExitUnreadable, mailbox + ": no such file");
    ListMbox(mailbox, options, &listing);
  }
  listing.Finish();
  return 0;
}

}  // namespace pvtool

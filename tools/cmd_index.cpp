// parcelvane index: one JSON object per message (JSON Lines) for every
// message of the mbox files, maildirs and directories given, parsed on
// every core and written in input order.
#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <system_error>
#include <thread>

#include "tools/attachment_files.h"
#include "tools/commands.h"
#include "tools/console.h"
#include "tools/exit_codes.h"
#include "tools/file_io.h"
#include "tools/json_writer.h"
#include "tools/mail_text.h"
#include "tools/mailbox_walk.h"
#include "tools/mbox_reader.h"
#include "tools/ordered_pipeline.h"
#include "tools/sha256.h"
#include "tools/utf.h"

namespace pvtool {
namespace {

constexpr size_t kTextPreview = 200;  // code points of the text body

struct IndexTask {
  std::string source;
  uint64_t offset = 0;  // of the message in its file
  std::string bytes;
};

struct FoundAttachment {
  std::string name;
  std::string bytes;
};

// Messages go to the threads in batches, so that handing work over costs
// little next to the work.
struct IndexBatch {
  std::vector<IndexTask> messages;
  size_t bytes = 0;
};
constexpr size_t kBatchMessages = 256;
constexpr size_t kBatchBytes = 1 << 20;

struct IndexResult {
  std::string lines;                   // one JSON object and a line break per message
  std::vector<FoundAttachment> files;  // kept only for --extract
};

struct AttachmentSummary {
  std::string name, content_type, sha256;
  uint64_t size = 0;
};

struct Record {
  std::string message_id, date, from, to, cc, subject, text;
  bool has_text = false;
  std::vector<AttachmentSummary> attachments;
  std::string problem;
};

Record Read(IndexTask& task, const LoadOptions& load, std::vector<FoundAttachment>* files) {
  Record r;
  try {
    const std::string prepared = PrepareMessageBytes(std::move(task.bytes), load, task.source);
    const MessageView message(ParseMessage(prepared));
    r.message_id = UnfoldValue(message.RawField("Message-ID"));
    r.date = IsoDate(message.RawField("Date"));
    r.from = message.DecodedField("From");
    r.to = message.DecodedField("To");
    r.cc = message.DecodedField("Cc");
    r.subject = message.Subject();
    for (const AttachmentInfo& attachment : message.Attachments()) {
      std::string bytes = DecodedBytes(attachment.part.get());
      r.attachments.push_back({attachment.name, attachment.content_type, Sha256Hex(bytes), bytes.size()});
      if (files != nullptr) files->push_back({attachment.name, std::move(bytes)});
    }
    std::string text;
    r.has_text = message.TextBody(&text);
    if (r.has_text) r.text = std::string(Utf8FirstCodePoints(text, kTextPreview));
  } catch (const ToolError& error) {
    const std::string what = error.what();
    const size_t colon = what.find(": ");
    r.problem = colon == std::string::npos ? what : what.substr(colon + 2);
  }
  return r;
}

std::string JsonLine(const IndexTask& task, const Record& r) {
  JsonWriter j(true);
  j.BeginObject();
  j.Member("source", task.source);
  j.MemberNumber("offset", static_cast<int64_t>(task.offset));
  if (!r.problem.empty()) {
    j.Member("problem", r.problem);
    j.EndObject();
    return j.text();
  }
  j.Member("message_id", r.message_id);
  j.Member("date", r.date);
  j.Member("from", r.from);
  j.Member("to", r.to);
  j.Member("cc", r.cc);
  j.Member("subject", r.subject);
  j.Key("attachments");
  j.BeginArray();
  for (const AttachmentSummary& a : r.attachments) {
    j.BeginObject();
    j.Member("name", a.name);
    j.Member("content_type", a.content_type);
    j.MemberNumber("size", static_cast<int64_t>(a.size));
    j.Member("sha256", a.sha256);
    j.EndObject();
  }
  j.EndArray();
  j.Key("text");
  if (r.has_text) {
    j.String(r.text);
  } else {
    j.Null();
  }
  j.EndObject();
  return j.text();
}

// One input: a file of the walk or one given by name ("-": standard input).
struct Input {
  std::string name;  // as given, or the path found in a directory
  uint64_t size = 0;
};

class Indexer {
 public:
  Indexer(unsigned threads, const LoadOptions& load, const std::string& extract_dir)
      : load_(load),
        pipeline_(
            threads, 2 * static_cast<size_t>(threads) + 2,
            [this](IndexBatch& batch) { return Describe(batch); },
            [this](IndexResult& result) { Emit(result); }) {
    if (!extract_dir.empty()) directory_.emplace(extract_dir, false);
  }

  void Run(const std::vector<Input>& inputs, uint64_t total) {
    progress_.emplace(IsTerminal(stderr), total);
    for (const Input& input : inputs) {
      if (input.name == "-") {
        SetBinaryStdin();
        ReadMbox(stdin, input.name);
      } else {
        ReadFile(input);
      }
      done_bytes_ += input.size;
    }
    Flush();
    pipeline_.Finish();
    progress_->Finish();
  }

 private:
  IndexResult Describe(IndexBatch& batch) {
    IndexResult result;
    for (IndexTask& task : batch.messages) {
      const Record record = Read(task, load_, directory_ ? &result.files : nullptr);
      result.lines += JsonLine(task, record);
    }
    return result;
  }

  // On the caller's thread, in input order: so the numbered names of
  // extracted files do not depend on the threads.
  void Emit(IndexResult& result) {
    WriteOut(result.lines);
    for (const FoundAttachment& file : result.files) directory_->Write(file.name, file.bytes);
  }

  void Push(IndexTask task, uint64_t done) {
    batch_.bytes += task.bytes.size();
    batch_.messages.push_back(std::move(task));
    if (batch_.messages.size() >= kBatchMessages || batch_.bytes >= kBatchBytes) Flush();
    progress_->Update(done, ++messages_);
  }

  void Flush() {
    if (batch_.messages.empty()) return;
    pipeline_.Push(std::move(batch_));
    batch_ = IndexBatch();
  }

  // An mbox file (its first line starts with "From ") or one message.
  void ReadFile(const Input& input) {
    std::FILE* in = OpenForReading(PathFromUtf8(input.name), input.name);
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> closer(in, &std::fclose);
    char start[5] = {};
    const size_t got = std::fread(start, 1, sizeof start, in);
    if (got == sizeof start && std::string_view(start, got) == "From " && std::fseek(in, 0, SEEK_SET) == 0) {
      ReadMbox(in, input.name);
      return;
    }
    std::string bytes(start, got);
    char buffer[1 << 16];
    for (size_t n; (n = std::fread(buffer, 1, sizeof buffer, in)) > 0;) bytes.append(buffer, n);
    if (std::ferror(in)) throw ToolError(kExitUnreadable, input.name + ": read error");
    Push({input.name, 0, std::move(bytes)}, done_bytes_ + input.size);
  }

  void ReadMbox(std::FILE* in, const std::string& name) {
    MboxReader reader([in](char* buffer, size_t capacity) { return std::fread(buffer, 1, capacity, in); });
    MboxMessage message;
    while (reader.Next(&message)) {
      Push({name, message.offset, std::move(message.bytes)}, done_bytes_ + reader.bytes_read());
    }
    if (std::ferror(in)) throw ToolError(kExitUnreadable, SourceName(name) + ": read error");
    if (reader.not_mbox()) throw ToolError(kExitNotMessage, SourceName(name) + ": not an mbox file");
  }

  LoadOptions load_;
  std::optional<AttachmentDirectory> directory_;
  std::optional<ProgressBar> progress_;
  OrderedPipeline<IndexBatch, IndexResult> pipeline_;
  IndexBatch batch_;
  uint64_t done_bytes_ = 0;
  uint64_t messages_ = 0;
};

// The files to read, in order: files as given, directories walked
// (recursively, maildirs included).
std::vector<Input> Inputs(const std::vector<std::string>& paths, bool follow, uint64_t* total) {
  std::vector<Input> inputs;
  WalkOptions walk_options;
  walk_options.follow = follow;
  walk_options.recursive = true;
  for (const std::string& name : paths) {
    std::error_code error;
    const fs::path path = PathFromUtf8(name);
    if (name != "-" && fs::is_directory(path, error)) {
      const WalkResult walk = MessageFiles(path, walk_options);
      ReportSkippedLinks(walk);
      for (const fs::path& file : walk.files) inputs.push_back({PathToUtf8(file), 0});
    } else if (name != "-" && !fs::exists(path, error)) {
      throw ToolError(kExitUnreadable, name + ": no such file");
    } else {
      inputs.push_back({name, 0});
    }
  }
  *total = 0;
  for (Input& input : inputs) {
    std::error_code error;
    if (input.name != "-") input.size = fs::file_size(PathFromUtf8(input.name), error);
    *total += error ? 0 : input.size;
  }
  return inputs;
}

unsigned Threads(const ParsedArgs& parsed) {
  if (!parsed.Has("jobs")) return std::max(1u, std::thread::hardware_concurrency());
  const std::string text = parsed.Get("jobs");
  unsigned value = 0;
  bool valid = !text.empty() && text.size() <= 4;
  for (const char c : text) valid = valid && c >= '0' && c <= '9';
  if (valid) value = static_cast<unsigned>(std::stoul(text));
  if (!valid || value == 0 || value > 1024) {
    throw ToolError(kExitUsage, "index: -j needs a number of threads from 1 to 1024, got \"" + text + "\"");
  }
  return value;
}

}  // namespace

int RunIndex(const Args& args) {
  ParsedArgs parsed;
  const std::vector<OptionDef> options = {
      {"jobs", 'j', true, false}, {"extract", '\0', true, false}, {"follow", '\0', false, false}};
  if (!ParseCommand("index", args, options, true, &parsed)) return 0;
  if (parsed.positional().empty()) throw ToolError(kExitUsage, "index: give at least one MAILBOX");
  const unsigned threads = Threads(parsed);
  uint64_t total = 0;
  const std::vector<Input> inputs = Inputs(parsed.positional(), parsed.Has("follow"), &total);
  Indexer indexer(threads, LoadOptionsOf(parsed), parsed.Get("extract"));
  indexer.Run(inputs, total);
  return 0;
}

}  // namespace pvtool

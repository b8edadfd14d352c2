#include "tools/help.h"

#ifndef PARCELVANE_VERSION
#define PARCELVANE_VERSION "unknown"
#endif

namespace pvtool {
namespace {

constexpr const char* kLineEnds =
    "Line ends: the library finds a message's structure only at CR LF line ends,\n"
    "while files on Linux usually end their lines with a bare LF. Every bare LF\n"
    "of the input is therefore turned into CR LF before parsing; --no-crlf\n"
    "reads the input exactly as it is.\n"
    "\n"
    "Before the first header field, a UTF-8 byte order mark, an mbox separator\n"
    "line (\"From ...\") and blank lines or lines of blanks (as in files saved\n"
    "from web mail) are skipped. A first line indented by blanks is read as a\n"
    "header field when it is one; otherwise the input is not a message.\n";

constexpr const char* kExitCodes =
    "Exit codes:\n"
    "  0  success\n"
    "  1  the message has no such body (text, html)\n"
    "  2  usage: unknown option, missing or extra argument\n"
    "  3  the input cannot be read (missing, unreadable, a directory)\n"
    "  4  the input is not a message (or MAILBOX is not an mbox file)\n"
    "  5  an output cannot be written (nothing is left half written)\n"
    "  6  the library refused an operation\n";

std::string Show() {
  return "Usage: parcelvane show [--json] [--no-crlf] FILE\n"
         "\n"
         "A summary of the message in FILE (\"-\" for standard input): the decoded\n"
         "From, To, Subject and Date, then the part tree indented by depth, one line\n"
         "per part: content type, transfer encoding, size as stored and decoded,\n"
         "and for attachments the attachment name. Indentation stops at 32 levels;\n"
         "deeper parts show their depth as \"[33]\". A multipart found only in the\n"
         "parsed tree (not in the input) shows \"? raw\".\n"
         "\n"
         "An attachment is a part the library flags as one, or a leaf part with a\n"
         "file name, a uuencoded one, or one whose type is not text/*.\n"
         "\n"
         "An address group shows as its name and members (\"Team: a, b;\"); an\n"
         "empty group (\"undisclosed-recipients:;\") as its name alone. In JSON a\n"
         "group's members carry a \"group\" key, and an empty group is one entry\n"
         "with that key and an empty name and address.\n"
         "\n"
         "A multipart with no closing delimiter loses its last part when parsed,\n"
         "and a part whose header no empty line ends is dropped; show, extract\n"
         "and ls say so on standard error (\"multipart/mixed at depth 1 has no\n"
         "closing delimiter: its last 1,234 bytes are not shown\"), and the JSON\n"
         "document lists it under \"warnings\".\n"
         "\n"
         "  --json      print the same as one JSON document\n"
         "  --no-crlf   do not turn bare LF line ends into CR LF\n";
}

std::string Headers() {
  return "Usage: parcelvane headers [--raw] [--no-crlf] FILE\n"
         "\n"
         "Every header field of the message and of its root part, one line per\n"
         "occurrence: the name and the decoded text (parameters included).\n"
         "\n"
         "  --raw       print the values as they stand in the message, still\n"
         "              encoded and folded\n"
         "  --no-crlf   do not turn bare LF line ends into CR LF\n";
}

std::string Body(const char* which, const char* what) {
  return std::string("Usage: parcelvane ") + which + " [--crlf-out] [--no-crlf] FILE\n\n" + "The " + what +
         " body of the message, decoded, on standard output in UTF-8.\n"
         "Exits with 1 when the message has no such body.\n"
         "\n"
         "  --crlf-out  keep CR LF line ends in the output (default: LF)\n"
         "  --no-crlf   do not turn bare LF line ends into CR LF on input\n";
}

std::string Extract() {
  return "Usage: parcelvane extract [-d DIR] [--force] [--json] [--no-crlf] FILE\n"
         "\n"
         "Writes every attachment of the message into DIR (default: the current\n"
         "directory, created when missing) under its attachment name, and prints\n"
         "what it wrote. Names are made safe first: directory parts, \"..\",\n"
         "control characters, characters Windows refuses and invisible direction\n"
         "marks become \"_\", a leading dot becomes \"_\", device names (CON, NUL,\n"
         "COM1, ...) get a \"_\" in front, and long names are shortened. A file is\n"
         "never overwritten: when the name is taken, a number is added\n"
         "(report-1.pdf). Two attachments of the same name are both written.\n"
         "\n"
         "The attachments are those show lists: the parts the library flags, and\n"
         "the leaf parts with a file name, uuencoded ones and those whose type is\n"
         "not text/*.\n"
         "\n"
         "  -d, --dir DIR  where to write\n"
         "  --force        overwrite files that existed before this run\n"
         "  --json         print what was written as a JSON document\n"
         "  --no-crlf      do not turn bare LF line ends into CR LF\n";
}

std::string Compose() {
  return "Usage: parcelvane compose [options]\n"
         "\n"
         "Builds a message and writes it (CR LF line ends) to standard output or\n"
         "to OUT. Text is UTF-8 and is encoded as the message needs it: header\n"
         "text as encoded words, bodies and attachment names in UTF-8.\n"
         "Text from the options is always data, never header syntax: display\n"
         "names, the subject and file names are encoded whenever their plain form\n"
         "would not read back the same (line breaks and quotes included), and an\n"
         "address, --date or --header value holding a line break or another\n"
         "control character is refused (exit 2), as is an address holding a\n"
         "blank, non-ASCII text or one of < > \" , ; \\.\n"
         "\n"
         "  --from ADDR         sender, \"Name <address>\" or \"address\"\n"
         "  --to ADDR           recipient (repeatable)\n"
         "  --cc ADDR           copy recipient (repeatable)\n"
         "  --subject TEXT      subject\n"
         "  --date TEXT         Date field (default: now, in UTC)\n"
         "  --header 'N: V'     any other header field (repeatable)\n"
         "  --text TEXT         plain-text body\n"
         "  --text-file F       plain-text body from a UTF-8 file\n"
         "  --html-file F       HTML body from a UTF-8 file\n"
         "  --attach FILE       attach a file under its file name (repeatable)\n"
         "  -o, --output OUT    where to write (default: standard output)\n";
}

std::string Ls() {
  return "Usage: parcelvane ls [--json] [--follow] [--no-crlf] MAILBOX\n"
         "\n"
         "One line per message of MAILBOX: index, date, sender, subject, size in\n"
         "bytes and number of attachments. MAILBOX is an mbox file (\"-\" for\n"
         "standard input) or a directory of message files; for a maildir the\n"
         "files of cur/ and new/ are listed. On a terminal a run longer than half\n"
         "a second shows a progress bar on standard error (the environment\n"
         "variable PARCELVANE_PROGRESS_DELAY_MS sets that delay).\n"
         "\n"
         "A symbolic link out of the directory (cur/3 -> /etc/shadow) is not read:\n"
         "it is reported on standard error and left out.\n"
         "\n"
         "  --json      print the list as one JSON document\n"
         "  --follow    read symbolic links out of the directory too\n"
         "  --no-crlf   do not turn bare LF line ends into CR LF\n";
}

std::string Index() {
  return "Usage: parcelvane index [-j N] [--extract DIR] [--follow] [--no-crlf] MAILBOX...\n"
         "\n"
         "One JSON object per line (JSON Lines) for every message of the mbox files,\n"
         "message files, maildirs and directories given (directories recursively;\n"
         "a file whose first line starts with \"From \" is read as an mbox file, \"-\"\n"
         "is an mbox file on standard input): source and byte offset, message_id,\n"
         "date (ISO 8601 when it parses), from, to, cc and subject (decoded, groups\n"
         "as written), attachments (name, content_type, size, sha256) and the first\n"
         "200 characters of the text body (null when there is none). A message that\n"
         "cannot be read gets source, offset and problem only.\n"
         "\n"
         "Messages are parsed on N threads and written in input order; mbox files\n"
         "are streamed, so memory stays bounded whatever their size. Each file's\n"
         "lines depend on that file only: to split a large archive across machines,\n"
         "run one index per file or directory (with any job runner) and concatenate\n"
         "the outputs in the same order. On a terminal a progress bar with messages\n"
         "per second and the time left appears on standard error. A symbolic link\n"
         "out of a directory is not read unless --follow is given.\n"
         "\n"
         "  -j, --jobs N     threads (default: the number of cores)\n"
         "  --extract DIR    also write every attachment into DIR as extract does\n"
         "                   (safe names, numbered when taken, never outside DIR)\n"
         "  --follow         read symbolic links out of the directories too\n"
         "  --no-crlf        do not turn bare LF line ends into CR LF\n";
}

std::string Roundtrip() {
  return "Usage: parcelvane roundtrip [-o OUT] [--no-crlf] FILE\n"
         "\n"
         "Parses the message and assembles it again from the parsed objects, and\n"
         "writes the result (CR LF line ends) to standard output or to OUT.\n"
         "\n"
         "  -o, --output OUT  where to write\n"
         "  --no-crlf         do not turn bare LF line ends into CR LF\n";
}

}  // namespace

std::string ToolHelp() {
  return std::string(
             "Usage: parcelvane COMMAND [options] [FILE]\n"
             "\n"
             "Reads, extracts and composes Internet mail messages.\n"
             "\n"
             "Commands:\n"
             "  show FILE        summary: sender, recipients, subject, date, part tree\n"
             "  headers FILE     every header field, decoded (--raw: as stored)\n"
             "  text FILE        the plain-text body\n"
             "  html FILE        the HTML body\n"
             "  extract FILE     write the attachments to a directory, safely\n"
             "  compose          build a message from options\n"
             "  ls MAILBOX       one line per message of an mbox file or a maildir\n"
             "  index MAILBOX... one JSON line per message, on every core\n"
             "  roundtrip FILE   parse and assemble again\n"
             "\n"
             "FILE may be \"-\" for standard input. \"parcelvane COMMAND --help\" shows\n"
             "a command's options.\n"
             "\n"
             "  -h, --help       show this help\n"
             "  --version        show the version\n"
             "\n") +
         kLineEnds + "\n" + kExitCodes;
}

std::string CommandHelp(std::string_view command) {
  std::string text;
  if (command == "show")
    text = Show();
  else if (command == "headers")
    text = Headers();
  else if (command == "text")
    text = Body("text", "plain-text");
  else if (command == "html")
    text = Body("html", "HTML");
  else if (command == "extract")
    text = Extract();
  else if (command == "compose")
    text = Compose();
  else if (command == "ls")
    text = Ls();
  else if (command == "index")
    text = Index();
  else if (command == "roundtrip")
    text = Roundtrip();
  else
    return std::string();
  if (command != "compose") text += std::string("\n") + kLineEnds;
  return text + "\n" + kExitCodes;
}

std::string VersionText() { return std::string("parcelvane ") + PARCELVANE_VERSION + "\n"; }

}  // namespace pvtool

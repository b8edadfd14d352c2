// compose with hostile values: every value from the user reads back through
// the library as the same text, in the same fields and parts, or is
// refused with a usage error naming its option.
#ifdef PARCELVANE_TOOL_PATH

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tools/compose.h"
#include "tools/exit_codes.h"
#include "tools/message_view.h"

namespace pvtool {
namespace {

const std::string kDate = "Tue, 01 Jul 2025 10:52:37 +0000";

// The values: line breaks alone and with a field behind them, quotes,
// backslashes, NUL, a boundary-looking line, encoded-word look-alikes,
// parameter syntax, blanks where folding would lose them, controls,
// invalid UTF-8, direction overrides and long text.
std::vector<std::string> HostileValues() {
  return {
      "\r",
      "\n",
      "\r\n",
      "a\r\nBcc: evil@example.net",
      "a\nBcc: evil@example.net",
      "a\rBcc: evil@example.net",
      "a\r\n\r\nbody text",
      "a\r\n folded",
      "\"",
      "x\"y",
      "\"quoted\"",
      "x.txt\"; name=\"evil.exe",
      "\\",
      "back\\slash",
      "trailing\\",
      "\\\"",
      std::string("nul\0inside", 10),
      std::string("\0", 1),
      "\r\n------=_NextPart_000_0000_00000000.00000000--\r\n",
      "\r\n--boundary\r\nContent-Type: text/html\r\n\r\n<b>x</b>",
      "=?utf-8?B?ZXZpbA==?=",
      "a =?utf-8?Q?x?= b",
      "semi;colon",
      "name*=utf-8''evil.exe",
      "percent %41 and 'apostrophes'",
      " leading blank",
      "trailing blank ",
      "two  blanks",
      "\ttab",
      "<angle@brackets.example>",
      "comma, list",
      "ctrl\x01\x1B[31mred",
      "del\x7F",
      "next line \xC2\x85 (C1)",
      "\xFF\xFE",
      "a\xC3(b",
      "\xC0\xAF overlong",
      "\xED\xA0\x80 surrogate",
      "report\xE2\x80\xAE"
      "fdp.exe",
      "\xE2\x80\xAB"
      "embedded right-to-left\xE2\x80\xAC",
      "Gr\xC3\xBC\xC3\x9F"
      "e \xE2\x98\x83 \xE4\xBD\xA0\xE5\xA5\xBD \xF0\x9F\x98\x80",
      std::string(10000, 'a'),
      [] {
        std::string s;
        while (s.size() < 10000) s += "ab ";
        return s;
      }(),
      [] {
        std::string s;
        for (int i = 0; i < 10000; ++i) s += "\xC3\xA9";
        return s;
      }(),
      [] {
        std::string s;
        for (int i = 0; i < 1000; ++i) s += "\"\\\r\n;=?";
        return s;
      }(),
  };
}

bool IsUtf8WithoutNul(const std::string& s) { return IsValidUtf8(s) && s.find('\0') == std::string::npos; }

// Header text of the message: what an option may carry into a field.
bool FitsOneLine(const std::string& s) {
  if (!IsUtf8WithoutNul(s)) return false;
  for (const char c : s) {
    const auto b = static_cast<unsigned char>(c);
    if ((b < 0x20 && c != '\t') || b == 0x7F) return false;
  }
  return true;
}

bool FitsAddress(const std::string& s) {
  if (!FitsOneLine(s)) return false;
  for (const char c : s) {
    if (c == ' ' || c == '\t' || static_cast<unsigned char>(c) >= 0x80) return false;
    if (std::string("<>\",;\\").find(c) != std::string::npos) return false;
  }
  return true;
}

std::string Quoted(const std::string& name) {
  std::string out = "\"";
  for (const char c : name) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + "\"";
}

ComposeRequest Request(const std::vector<std::string>& args) {
  return ReadComposeRequest(ParseArgs(args, ComposeOptions()));
}

// The option a refused request names, or "" when it was accepted.
std::string RefusedOption(const std::vector<std::string>& args) {
  try {
    Request(args);
  } catch (const ToolError& error) {
    EXPECT_EQ(error.code(), kExitUsage) << error.what();
    const std::string text = error.what();
    const size_t start = text.find("--");
    return start == std::string::npos ? "?" : text.substr(start, text.find(' ', start) - start);
  }
  return "";
}

std::vector<std::string> FieldNames(IEMSMessageParameters* list) {
  std::vector<std::string> names;
  LONG count = 0;
  list->get_ParamCount(&count);
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMessageParameter> field;
    if (FAILED(list->get_Parameter(i, field.put())) || !field) continue;
    Bstr name;
    field->get_Name(name.put());
    names.push_back(name.utf8());
  }
  return names;
}

// The field names of the message and of every part, depth first: two
// messages of the same shape have the same fields and parts.
std::vector<std::string> Shape(IEMSMessageParser* message) {
  Ref<IEMSMessageParameters> headers;
  message->get_Headers(headers.put());
  std::vector<std::string> shape = FieldNames(headers.get());
  std::vector<Ref<IEMSMimePart>> stack;
  Ref<IEMSMimePart> root;
  if (message->get_MimePart(root.put()) == S_OK && root) stack.push_back(root);
  while (!stack.empty()) {
    Ref<IEMSMimePart> part = stack.back();
    stack.pop_back();
    Ref<IEMSMessageParameters> part_headers;
    part->get_Headers(part_headers.put());
    shape.push_back("[part]");
    for (std::string& name : FieldNames(part_headers.get())) shape.push_back(std::move(name));
    Ref<IEMSMimeParts> children;
    LONG count = 0;
    if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
    for (LONG i = count - 1; i >= 0; --i) {
      Ref<IEMSMimePart> child;
      if (SUCCEEDED(children->get_Part(i, child.put())) && child) stack.push_back(child);
    }
  }
  return shape;
}

U16String ParameterValue(IEMSMimePart* part, const char* field_name, const char* parameter) {
  Ref<IEMSMessageParameter> field;
  Ref<IEMSMimeAttribute> attribute;
  if (FAILED(part->FindHeader(Bstr(field_name).get(), field.put())) || !field) return u"<no field>";
  if (field->FindAttribute(Bstr(parameter).get(), attribute.put()) != S_OK || !attribute) return u"<none>";
  Bstr value;
  attribute->get_DecodedValue(value.put());
  return value.wide();
}

struct Parsed {
  explicit Parsed(const std::string& bytes) : message(ParseMessage(bytes)) {}
  MessageView message;
  U16String Get(HRESULT (IEMSMessageParser::*getter)(BSTR*)) const {
    Bstr value;
    (message.get()->*getter)(value.put());
    return value.wide();
  }
};

std::vector<std::string> BaseArgs(const std::string& name, const std::string& subject) {
  return {"--date",    kDate,
          "--from",    Quoted(name) + " <a@example.org>",
          "--to",      Quoted(name) + " <b@example.org>",
          "--subject", subject,
          "--text",    "body"};
}

std::string ComposeWith(const std::vector<std::string>& args, const std::string& attachment_name) {
  ComposeRequest request = Request(args);
  request.attachments.push_back({attachment_name, "first"});
  request.attachments.push_back({"second.txt", ""});
  return BuildMessage(request);
}

// The name a file name reads back as: not UTF-8 and NUL become U+FFFD.
U16String ExpectedFileName(const std::string& name) {
  U16String wide = Utf8ToUtf16(name);
  for (char16_t& c : wide) {
    if (c == 0) c = 0xFFFD;
  }
  return wide;
}

TEST(ComposeHostile, TheTableHoldsAtLeastThirtyValues) { EXPECT_GE(HostileValues().size(), 30u); }

TEST(ComposeHostile, SubjectsAndDisplayNamesReadBackAsGiven) {
  const Parsed baseline(ComposeWith(BaseArgs("Plain Name", "plain subject"), "plain.bin"));
  const std::vector<std::string> shape = Shape(baseline.message.get());
  ASSERT_EQ(shape, (std::vector<std::string>{
                       "Date", "From", "To", "Subject", "MIME-Version", "[part]", "Content-Type", "[part]",
                       "Content-Type", "Content-Transfer-Encoding", "[part]", "Content-Type",
                       "Content-Disposition", "Content-Transfer-Encoding", "[part]", "Content-Type",
                       "Content-Disposition", "Content-Transfer-Encoding"}));
  for (const std::string& value : HostileValues()) {
    SCOPED_TRACE(testing::PrintToString(value.substr(0, 80)));
    if (!IsUtf8WithoutNul(value)) {
      EXPECT_EQ(RefusedOption({"--subject", value}), "--subject");
      EXPECT_EQ(RefusedOption({"--from", Quoted(value) + " <a@example.org>"}), "--from");
      EXPECT_EQ(RefusedOption({"--to", Quoted(value) + " <a@example.org>"}), "--to");
      continue;
    }
    const std::string bytes = ComposeWith(BaseArgs(value, value), "plain.bin");
    const Parsed parsed(bytes);
    EXPECT_EQ(Shape(parsed.message.get()), shape);
    EXPECT_EQ(parsed.Get(&IEMSMessageParser::get_Subject), Utf8ToUtf16(value));
    EXPECT_EQ(parsed.Get(&IEMSMessageParser::get_SenderName), Utf8ToUtf16(value));
    EXPECT_EQ(parsed.Get(&IEMSMessageParser::get_SenderEmail), u"a@example.org");
    EXPECT_EQ(parsed.Get(&IEMSMessageParser::get_RecipientName), Utf8ToUtf16(value));
    EXPECT_EQ(parsed.Get(&IEMSMessageParser::get_RecipientEmail), u"b@example.org");
  }
}

TEST(ComposeHostile, AttachmentNamesReadBackAsGivenInBothParameters) {
  const Parsed baseline(ComposeWith(BaseArgs("Plain Name", "plain subject"), "plain.bin"));
  const std::vector<std::string> shape = Shape(baseline.message.get());
  for (const std::string& value : HostileValues()) {
    SCOPED_TRACE(testing::PrintToString(value.substr(0, 80)));
    const Parsed parsed(ComposeWith(BaseArgs("Plain Name", "plain subject"), value));
    EXPECT_EQ(Shape(parsed.message.get()), shape);
    const std::vector<AttachmentInfo> attachments = parsed.message.Attachments();
    ASSERT_EQ(attachments.size(), 2u);
    IEMSMimePart* part = attachments[0].part.get();
    EXPECT_EQ(ParameterValue(part, "Content-Disposition", "filename"), ExpectedFileName(value));
    EXPECT_EQ(ParameterValue(part, "Content-Type", "name"), ExpectedFileName(value));
    EXPECT_EQ(DecodedBytes(part), "first");
    EXPECT_EQ(ParameterValue(attachments[1].part.get(), "Content-Disposition", "filename"), u"second.txt");
    EXPECT_EQ(DecodedBytes(attachments[1].part.get()), "");
  }
}

TEST(ComposeHostile, AddressesDatesAndHeaderValuesAreRefusedOrKeptWhole) {
  for (const std::string& value : HostileValues()) {
    SCOPED_TRACE(testing::PrintToString(value.substr(0, 80)));
    const std::string address = "a" + value + "@example.org";
    if (!FitsAddress(address)) {
      EXPECT_EQ(RefusedOption({"--to", address}), "--to");
      EXPECT_EQ(RefusedOption({"--cc", "Name <" + address + ">"}), "--cc");
      EXPECT_EQ(RefusedOption({"--from", address}), "--from");
    } else {
      ComposeRequest request = Request({"--date", kDate, "--to", address});
      const Parsed parsed(BuildMessage(request));
      EXPECT_EQ(parsed.Get(&IEMSMessageParser::get_RecipientEmail), Utf8ToUtf16(address));
      EXPECT_EQ(Shape(parsed.message.get()), (std::vector<std::string>{"Date", "To"}));
    }
    if (!FitsOneLine(value)) {
      EXPECT_EQ(RefusedOption({"--date", value}), "--date");
      EXPECT_EQ(RefusedOption({"--header", "X-Test: " + value}), "--header");
    } else {
      const Parsed parsed(BuildMessage(Request({"--date", kDate, "--header", "X-Test: " + value})));
      EXPECT_EQ(Shape(parsed.message.get()), (std::vector<std::string>{"Date", "X-Test"}));
    }
  }
}

TEST(ComposeHostile, EncodedHeaderLinesStayShort) {
  // Long values are folded into encoded words: the tool's lines stay within
  // 78 characters, the library's folding of display names within 80. A
  // file name short enough for one RFC 2231 line stays on it.
  for (const std::string& value : HostileValues()) {
    if (!IsUtf8WithoutNul(value)) continue;
    SCOPED_TRACE(testing::PrintToString(value.substr(0, 80)));
    const std::string bytes = ComposeWith(BaseArgs(value, value), value);
    size_t start = 0;
    bool in_header = true;
    for (size_t end; (end = bytes.find("\r\n", start)) != std::string::npos; start = end + 2) {
      std::string line = bytes.substr(start, end - start);
      if (line.empty()) in_header = false;
      if (line.compare(0, 2, "--") == 0) in_header = true;
      if (!in_header) continue;
      // The library writes the address after a display name's last word.
      const size_t address = line.rfind("\" <");
      const bool names =
          address != std::string::npos || line.compare(0, 5, "From:") == 0 || line.compare(0, 3, "To:") == 0;
      if (address != std::string::npos && line.back() == '>') line.erase(address + 1);
      const size_t limit = line.compare(0, 11, "\tfilename*=") == 0 ? 998 : names ? 80 : 78;
      ASSERT_LE(line.size(), limit) << line.substr(0, 100);
    }
  }
}

}  // namespace
}  // namespace pvtool

#endif

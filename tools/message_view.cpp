#include "tools/message_view.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "tools/exit_codes.h"
#include "tools/line_ends.h"
#include "tools/mail_text.h"

namespace pvtool {
namespace {

// The occurrences of a joined field view ("\r\n\r\n" separates them).
std::vector<std::string> SplitOccurrences(const std::string& joined) {
  std::vector<std::string> pieces;
  size_t start = 0;
  for (;;) {
    const size_t separator = joined.find("\r\n\r\n", start);
    pieces.push_back(joined.substr(start, separator == std::string::npos ? std::string::npos : separator - start));
    if (separator == std::string::npos) break;
    start = separator + 4;
  }
  return pieces;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string Trimmed(std::string text) { return UnfoldValue(text); }

// The parameters of a field as "; name=\"value\"" text, decoded.
std::string DecodedParameters(IEMSMessageParameter* field) {
  Ref<IEMSMimeAttributes> attributes;
  if (FAILED(field->get_Attributes(attributes.put())) || !attributes) return std::string();
  LONG count = 0;
  attributes->get_AttributesCount(&count);
  std::string text;
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMimeAttribute> attribute;
    if (FAILED(attributes->get_Attribute(i, attribute.put())) || !attribute) continue;
    Bstr name, value;
    attribute->get_Name(name.put());
    attribute->get_DecodedValue(value.put());
    text += "; " + name.utf8() + "=\"" + DisplayText(value) + "\"";
  }
  return text;
}

bool StartsWithContent(const std::string& name) {
  return name.size() >= 8 && Lower(name.substr(0, 8)) == "content-";
}

PartInfo DescribePart(IEMSMimePart* part, int depth) {
  PartInfo info;
  info.depth = depth;
  Bstr type;
  part->get_MimeContentTypeString(type.put());
  info.content_type = type.get() == nullptr || type.wide().empty() ? "text/plain" : Lower(type.utf8());

  Ref<IEMSMessageParameter> encoding;
  if (SUCCEEDED(part->FindHeader(Bstr("Content-Transfer-Encoding").get(), encoding.put())) && encoding) {
    Bstr value;
    encoding->get_DecodedData(value.put());
    info.transfer_encoding = Lower(Trimmed(value.utf8()));
  }

  Ref<IEMSMimeParts> children;
  LONG count = 0;
  if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
  info.children = count;

  Ref<IEMSDataObject> body;
  if (SUCCEEDED(part->get_BodyObject(body.put())) && body) info.raw_size = SpanLength(body.get());
  if (count == 0) {
    Ref<IEMSDataObject> decoded;
    if (part->get_DecodedBinary(decoded.put()) == S_OK && decoded) {
      info.has_decoded_size = true;
      info.decoded_size = SpanLength(decoded.get());
    }
  }

  LONG flag = 0;
  part->get_IsAttachPart(&flag);
  info.attachment = flag != 0;
  if (info.attachment) {
    Bstr name;
    part->get_AttachName(name.put());
    info.name = DisplayText(name);
  }
  return info;
}

}  // namespace

std::string DisplayText(const Bstr& text) { return Utf16ToUtf8(RepairRawUtf8(text.wide())); }

std::string PrepareMessageBytes(std::string bytes, const LoadOptions& options, const std::string& source) {
  // Files saved by some editors open with a UTF-8 byte order mark.
  if (bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
  if (bytes.compare(0, 5, "From ") == 0) {
    const size_t line_end = bytes.find('\n');
    bytes.erase(0, line_end == std::string::npos ? bytes.size() : line_end + 1);
  }
  if (options.crlf) bytes = BareLfToCrLf(bytes);
  constexpr uint64_t kLargest = 0xFFFFFFFFull;
  if (bytes.size() > kLargest) throw ToolError(kExitNotMessage, source + ": larger than 4 GiB, too large for a message");
  const std::string reason = NotAMessageReason(bytes);
  if (!reason.empty()) throw ToolError(kExitNotMessage, source + ": not a message: it " + reason);
  return bytes;
}

Ref<IEMSMessageParser> ParseMessage(const std::string& prepared) {
  Ref<IEMSMessageParser> message = CreateObject<IEMSMessageParser>(CLSID_EMSMessageParser, "creating a message");
  Ref<IEMSDataObject> data = MakeData(prepared);
  Check(message->ParseObject(data.get()), "parsing the message");
  return message;
}

bool MessageView::IsMime() const { return message_->IsMimeMessage() == S_OK; }

std::string MessageView::Subject() const {
  Bstr subject;
  message_->get_Subject(subject.put());
  return DisplayText(subject);
}

std::string MessageView::DecodedField(const char* name) const {
  Ref<IEMSMessageParameter> field;
  if (FAILED(message_->FindHeader(Bstr(name).get(), field.put())) || !field) return std::string();
  Bstr value;
  field->get_DecodedData(value.put());
  std::string joined;
  for (const std::string& piece : SplitOccurrences(DisplayText(value))) {
    if (piece.empty()) continue;
    if (!joined.empty()) joined += ", ";
    joined += piece;
  }
  return joined;
}

std::string MessageView::RawField(const char* name) const {
  Bstr value;
  message_->get_HeaderString(Bstr(name).get(), value.put());
  return value.utf8();
}

std::string MessageView::SenderName() const {
  Bstr value;
  message_->get_SenderName(value.put());
  return DisplayText(value);
}

std::string MessageView::SenderAddress() const {
  Bstr value;
  message_->get_SenderEmail(value.put());
  return DisplayText(value);
}

std::vector<std::pair<std::string, std::string>> MessageView::Mailboxes(const char* field_name) const {
  // The library's mailbox list keeps "Joe <j@x>, Ann <a@y>" as one piece,
  // so the tool splits the field itself and lets the library read each
  // mailbox (decoding its name).
  std::vector<std::pair<std::string, std::string>> mailboxes;
  for (const std::string& piece : SplitAddressList(UnfoldValue(RawField(field_name)))) {
    Ref<IEMSHeaderMailboxes> list =
        CreateObject<IEMSHeaderMailboxes>(CLSID_EMSHeaderMailboxes, "creating a mailbox list");
    if (FAILED(list->ParseMailboxes(Bstr(piece).get(), 1))) continue;
    Bstr name, address;
    list->get_MailboxName(0, name.put());
    list->get_MailboxAddress(0, address.put());
    if (address.wide().empty() && name.wide().empty()) continue;
    mailboxes.emplace_back(DisplayText(name), DisplayText(address));
  }
  return mailboxes;
}

std::vector<HeaderLine> MessageView::AllHeaders(bool raw) const {
  std::vector<HeaderLine> lines;
  Ref<IEMSMessageParameters> list;
  if (FAILED(message_->get_AllHeaders(list.put())) || !list) return lines;
  LONG count = 0;
  list->get_ParamCount(&count);
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMessageParameter> field;
    if (FAILED(list->get_Parameter(i, field.put())) || !field) continue;
    Bstr name, value;
    field->get_Name(name.put());
    const std::string field_name = name.utf8();
    if (raw) {
      field->get_RawData(value.put());
      for (const std::string& piece : SplitOccurrences(value.utf8())) lines.push_back({field_name, piece});
      continue;
    }
    field->get_DecodedData(value.put());
    std::vector<std::string> pieces = SplitOccurrences(DisplayText(value));
    if (StartsWithContent(field_name) && !pieces.empty()) pieces.back() += DecodedParameters(field.get());
    for (std::string& piece : pieces) lines.push_back({field_name, std::move(piece)});
  }
  return lines;
}

std::vector<PartInfo> MessageView::Parts() const {
  std::vector<PartInfo> parts;
  Ref<IEMSMimePart> root;
  if (message_->get_MimePart(root.put()) != S_OK || !root) return parts;
  // Depth first with an explicit stack: the input decides how deep a tree is.
  std::vector<std::pair<Ref<IEMSMimePart>, int>> stack;
  stack.emplace_back(root, 0);
  while (!stack.empty()) {
    auto [part, depth] = std::move(stack.back());
    stack.pop_back();
    parts.push_back(DescribePart(part.get(), depth));
    Ref<IEMSMimeParts> children;
    if (parts.back().children == 0 || FAILED(part->get_MimeParts(children.put())) || !children) continue;
    for (LONG i = parts.back().children - 1; i >= 0; --i) {
      Ref<IEMSMimePart> child;
      if (SUCCEEDED(children->get_Part(i, child.put())) && child) stack.emplace_back(child, depth + 1);
    }
  }
  return parts;
}

uint64_t MessageView::PlainBodySize() const {
  Ref<IEMSDataObject> body;
  if (FAILED(message_->get_BodyObject(body.put())) || !body) return 0;
  return SpanLength(body.get());
}

std::vector<AttachmentInfo> MessageView::Attachments() const {
  std::vector<AttachmentInfo> attachments;
  Ref<IEMSMimeParts> list;
  if (message_->get_AttachParts(list.put()) != S_OK || !list) return attachments;
  LONG count = 0;
  list->get_PartsCount(&count);
  for (LONG i = 0; i < count; ++i) {
    AttachmentInfo info;
    if (FAILED(list->get_Part(i, info.part.put())) || !info.part) continue;
    Bstr name, type;
    info.part->get_AttachName(name.put());
    info.part->get_MimeContentTypeString(type.put());
    info.name = DisplayText(name);
    info.content_type = type.get() == nullptr || type.wide().empty() ? "text/plain" : Lower(type.utf8());
    attachments.push_back(std::move(info));
  }
  return attachments;
}

int MessageView::AttachmentCount() const {
  Ref<IEMSMimeParts> list;
  if (message_->get_AttachParts(list.put()) != S_OK || !list) return 0;
  LONG count = 0;
  list->get_PartsCount(&count);
  return count;
}

bool MessageView::TextBody(std::string* utf8) const {
  Bstr text;
  if (message_->get_TextBody(text.put()) != S_OK) return false;
  *utf8 = DisplayText(text);
  return true;
}

bool MessageView::HtmlBody(std::string* utf8) const {
  Bstr text;
  if (message_->get_HTMLBody(text.put()) != S_OK) return false;
  *utf8 = DisplayText(text);
  return true;
}

std::string MessageView::Assemble() const {
  Ref<IEMSDataObject> data;
  Check(message_->AssembleObject(data.put()), "assembling the message");
  return SpanBytes(data.get());
}

std::string DecodedBytes(IEMSMimePart* part) {
  Ref<IEMSDataObject> decoded;
  if (part->get_DecodedBinary(decoded.put()) != S_OK || !decoded) return std::string();
  return SpanBytes(decoded.get());
}

}  // namespace pvtool

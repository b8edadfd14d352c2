#include "tools/message_view.h"

#include <algorithm>
#include <cctype>
#include <utility>

#include "tools/exit_codes.h"
#include "tools/line_ends.h"
#include "tools/mail_text.h"
#include "tools/part_layout.h"

namespace pvtool {
namespace {

// The occurrences of a joined field view ("\r\n\r\n" separates them).
std::vector<std::string> SplitOccurrences(const std::string& joined) {
  std::vector<std::string> pieces;
  size_t start = 0;
  for (;;) {
    const size_t separator = joined.find("\r\n\r\n", start);
    pieces.push_back(
        joined.substr(start, separator == std::string::npos ? std::string::npos : separator - start));
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

// Whether a header field of `part` has a parameter named `name`, and its
// decoded (or `raw`) value.
bool FindParameter(IEMSMimePart* part, const char* field_name, std::string_view name, std::string* value,
                   bool raw = false) {
  Ref<IEMSMimeAttribute> attribute = FindPartParameter(part, field_name, name);
  if (!attribute) return false;
  Bstr text;
  if (raw) {
    attribute->get_RawValue(text.put());
  } else {
    attribute->get_DecodedValue(text.put());
  }
  *value = text.utf8();
  return true;
}

// What the tree walk reads of one part; a multipart's size comes from the
// layout (asking the library for it assembles the subtree).
PartInfo DescribePart(IEMSMimePart* part, int depth, bool decoded_sizes) {
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
  if (count > 0) return info;

  Ref<IEMSDataObject> body;
  if (SUCCEEDED(part->get_BodyObject(body.put())) && body) info.raw_size = SpanLength(body.get());
  info.has_raw_size = true;
  Ref<IEMSDataObject> decoded;
  if (decoded_sizes && part->get_DecodedBinary(decoded.put()) == S_OK && decoded) {
    info.has_decoded_size = true;
    info.decoded_size = SpanLength(decoded.get());
  }
  LONG flag = 0;
  part->get_IsAttachPart(&flag);
  std::string file_name;
  const bool named = FindParameter(part, "Content-Disposition", "filename", &file_name) ||
                     FindParameter(part, "Content-Type", "name", &file_name);
  info.attachment = IsAttachment(info, flag != 0, named);
  if (info.attachment) {
    Bstr name;
    part->get_AttachName(name.put());
    info.name = DisplayText(name);
  }
  return info;
}

}  // namespace

std::string DisplayText(const Bstr& text) { return Utf16ToUtf8(RepairRawUtf8(text.wide())); }

std::string_view PrepareMessageView(std::string_view bytes, const LoadOptions& options,
                                    const std::string& source, std::string* converted) {
  // Files saved by some editors open with a UTF-8 byte order mark.
  size_t start = bytes.substr(0, 3) == "\xEF\xBB\xBF" ? 3 : 0;
  // Files saved from web mail and some archives open with blank lines. A
  // message without header fields, as the library writes one, opens with
  // the blank line that ends its empty header: "\r\n\r\n" and text that is
  // no header field.
  const std::string_view rest = bytes.substr(start);
  const size_t blanks = LeadingBlankBytes(rest);
  const bool empty_header = (rest.substr(0, 4) == "\r\n\r\n" || rest.substr(0, 2) == "\n\n") &&
                            blanks < rest.size() && !NotAMessageReason(rest.substr(blanks)).empty();
  if (!empty_header) start += blanks;
  if (!empty_header && bytes.substr(start, 5) == "From ") {
    const size_t line_end = bytes.find('\n', start);
    start = line_end == std::string_view::npos ? bytes.size() : line_end + 1;
    start += LeadingBlankBytes(bytes.substr(start));
  }
  bytes.remove_prefix(start);
  if (options.crlf && HasBareLf(bytes)) {
    *converted = BareLfToCrLf(bytes);
    bytes = *converted;
  }
  constexpr uint64_t kLargest = 0xFFFFFFFFull;
  if (bytes.size() > kLargest)
    throw ToolError(kExitNotMessage, source + ": larger than 4 GiB, too large for a message");
  const std::string reason = empty_header ? std::string() : NotAMessageReason(bytes);
  if (!reason.empty()) throw ToolError(kExitNotMessage, source + ": not a message: it " + reason);
  return bytes;
}

std::string PrepareMessageBytes(std::string bytes, const LoadOptions& options, const std::string& source) {
  std::string converted;
  const std::string_view prepared = PrepareMessageView(bytes, options, source, &converted);
  if (prepared.data() == converted.data() && !converted.empty()) return converted;
  if (prepared.size() == bytes.size()) return bytes;
  return std::string(prepared);
}

Ref<IEMSMessageParser> ParseMessageOver(std::string_view prepared, std::shared_ptr<const void> owner) {
  Ref<IEMSMessageParser> message =
      CreateObject<IEMSMessageParser>(CLSID_EMSMessageParser, "creating a message");
  // The data object holds its own reference to the owner until the last
  // body that shares the bytes is gone.
  auto* keep = new std::shared_ptr<const void>(std::move(owner));
  Ref<IEMSDataObject> data;
  const HRESULT hr = PvCreateDataObjectOver(
      prepared.data(), static_cast<ULONG>(prepared.size()),
      [](void* context) { delete static_cast<std::shared_ptr<const void>*>(context); }, keep, data.put());
  if (FAILED(hr)) delete keep;
  Check(hr, "creating a data object");
  Check(message->ParseObject(data.get()), "parsing the message");
  return message;
}

MessageView::MessageView(Ref<IEMSMessageParser> message, std::string bytes) : message_(std::move(message)) {
  auto owned = std::make_shared<const std::string>(std::move(bytes));
  bytes_ = *owned;
  owner_ = std::move(owned);
}

Ref<IEMSMessageParser> ParseMessage(const std::string& prepared) {
  Ref<IEMSMessageParser> message =
      CreateObject<IEMSMessageParser>(CLSID_EMSMessageParser, "creating a message");
  Ref<IEMSDataObject> data = MakeData(prepared);
  Check(message->ParseObject(data.get()), "parsing the message");
  return message;
}

bool MessageView::IsMime() const { return message_->IsMimeMessage() == S_OK; }

std::string MessageView::Subject() const {
  Bstr subject;
  message_->get_Subject(subject.put());
  // The library joins repeated fields; a reader shows the first, as other
  // mail readers do (`headers` lists them all).
  return SplitOccurrences(DisplayText(subject)).front();
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

std::vector<AddressInfo> MessageView::Addresses(const char* field_name) const {
  // The library's mailbox list keeps "Joe <j@x>, Ann <a@y>" as one piece
  // and knows no groups, so the tool splits the field itself and lets the
  // library read each mailbox (decoding its name).
  std::vector<AddressInfo> entries;
  Ref<IEMSHeaderMailboxes> list =
      CreateObject<IEMSHeaderMailboxes>(CLSID_EMSHeaderMailboxes, "creating a mailbox list");
  auto read = [&](const std::string& piece, MailboxInfo* mailbox) {
    Bstr name, address;
    if (FAILED(list->ParseMailboxes(Bstr(piece).get(), 1))) return false;
    list->get_MailboxName(0, name.put());
    list->get_MailboxAddress(0, address.put());
    mailbox->name = DisplayText(name);
    mailbox->address = DisplayText(address);
    return !mailbox->name.empty() || !mailbox->address.empty();
  };
  for (const AddressPieces& pieces : SplitAddressList(UnfoldValue(RawField(field_name)))) {
    AddressInfo entry;
    entry.group = pieces.group;
    if (pieces.group) {
      // A group name is a phrase: read it as the name of a mailbox.
      MailboxInfo named;
      if (read(pieces.group_name + " <group@invalid>", &named)) entry.group_name = named.name;
      if (entry.group_name.empty()) entry.group_name = pieces.group_name;
    }
    for (const std::string& piece : pieces.members) {
      MailboxInfo mailbox;
      if (read(piece, &mailbox)) entry.mailboxes.push_back(std::move(mailbox));
    }
    if (entry.group || !entry.mailboxes.empty()) entries.push_back(std::move(entry));
  }
  return entries;
}

MailboxInfo MessageView::Sender() const {
  const std::vector<AddressInfo> from = Addresses("From");
  if (!HasGroup(from)) return {SenderName(), SenderAddress()};
  if (from[0].mailboxes.empty()) return {from[0].group_name, std::string()};
  return from[0].mailboxes[0];
}

std::vector<HeaderLine> MessageView::AllHeaders(bool raw) const {
  std::vector<HeaderLine> lines;
  Ref<IEMSMessageParameters> list;
  if (FAILED(message_->get_AllHeaders(list.put())) || !list) return lines;
  ForEachField(list.get(), [&](IEMSMessageParameter* field) {
    Bstr name, value;
    field->get_Name(name.put());
    const std::string field_name = name.utf8();
    if (raw) {
      field->get_RawData(value.put());
      for (const std::string& piece : SplitOccurrences(value.utf8())) lines.push_back({field_name, piece});
      return;
    }
    field->get_DecodedData(value.put());
    std::vector<std::string> pieces = SplitOccurrences(DisplayText(value));
    if (StartsWithContent(field_name) && !pieces.empty()) pieces.back() += DecodedParameters(field);
    for (std::string& piece : pieces) lines.push_back({field_name, std::move(piece)});
  });
  return lines;
}

PartTree MessageView::Tree(bool decoded_sizes) const {
  PartTree tree;
  Ref<IEMSMimePart> root;
  if (message_->get_MimePart(root.put()) != S_OK || !root) return tree;
  // Depth first with an explicit stack: the input decides how deep a tree is.
  std::vector<LayoutPart> layout;
  std::vector<std::pair<Ref<IEMSMimePart>, int>> stack;
  stack.emplace_back(root, 0);
  while (!stack.empty()) {
    auto [part, depth] = std::move(stack.back());
    stack.pop_back();
    tree.parts.push_back(DescribePart(part.get(), depth, decoded_sizes));
    const PartInfo& info = tree.parts.back();
    LayoutPart shape{info.children, std::string()};
    if (info.content_type.compare(0, 10, "multipart/") == 0) {
      // The library splits at the raw value, still folded or RFC 2231 coded.
      FindParameter(part.get(), "Content-Type", "boundary", &shape.boundary, true);
    }
    layout.push_back(std::move(shape));
    if (info.attachment) tree.attachments.push_back({info.name, info.content_type, part});
    Ref<IEMSMimeParts> children;
    if (info.children == 0 || FAILED(part->get_MimeParts(children.put())) || !children) continue;
    for (LONG i = info.children - 1; i >= 0; --i) {
      Ref<IEMSMimePart> child;
      if (SUCCEEDED(children->get_Part(i, child.put())) && child) stack.emplace_back(child, depth + 1);
    }
  }
  const std::vector<PartRegion> regions = LayOutParts(bytes_, layout);
  for (size_t i = 0; i < regions.size(); ++i) {
    PartInfo& info = tree.parts[i];
    info.unclosed = regions[i].unclosed;
    info.unshown = regions[i].unshown;
    info.headerless = regions[i].headerless;
    info.headerless_bytes = regions[i].headerless_bytes;
    if (info.children > 0 && regions[i].known) {
      info.has_raw_size = true;
      info.raw_size = regions[i].body_size;
    }
  }
  return tree;
}

uint64_t MessageView::PlainBodySize() const {
  Ref<IEMSDataObject> body;
  if (FAILED(message_->get_BodyObject(body.put())) || !body) return 0;
  return SpanLength(body.get());
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

bool IsAttachment(const PartInfo& part, bool flagged, bool has_file_name) {
  if (flagged) return true;
  if (part.children > 0 || part.content_type.compare(0, 10, "multipart/") == 0) return false;
  return has_file_name || part.transfer_encoding == "x-uuencode" ||
         part.content_type.compare(0, 5, "text/") != 0;
}

std::vector<std::string> StructureWarnings(const std::vector<PartInfo>& parts) {
  std::vector<std::string> warnings;
  for (const PartInfo& part : parts) {
    const std::string where = part.content_type + " at depth " + std::to_string(part.depth);
    if (part.headerless > 0) {
      warnings.push_back(where + " has " + GroupedNumber(static_cast<uint64_t>(part.headerless)) +
                         (part.headerless == 1 ? " part" : " parts") +
                         " with no empty line after the header: " + GroupedNumber(part.headerless_bytes) +
                         " bytes are not shown");
    }
    if (!part.unclosed) continue;
    warnings.push_back(where + " has no closing delimiter: its last " + GroupedNumber(part.unshown) +
                       " bytes are not shown");
  }
  return warnings;
}

bool HasGroup(const std::vector<AddressInfo>& entries) {
  return std::any_of(entries.begin(), entries.end(), [](const AddressInfo& e) { return e.group; });
}

std::string AddressText(const std::vector<AddressInfo>& entries) {
  std::string text;
  bool closed = false;  // the last entry ended with the ";" of its group
  for (const AddressInfo& entry : entries) {
    if (!text.empty()) text += closed ? " " : ", ";
    closed = entry.group && !entry.mailboxes.empty();
    std::string members;
    for (const MailboxInfo& mailbox : entry.mailboxes) {
      if (!members.empty()) members += ", ";
      members += mailbox.name.empty() ? mailbox.address : mailbox.name + " <" + mailbox.address + ">";
    }
    if (!entry.group) {
      text += members;
    } else if (entry.mailboxes.empty()) {
      text += entry.group_name;
    } else {
      text += entry.group_name + ": " + members + ";";
    }
  }
  return text;
}

std::string DecodedBytes(IEMSMimePart* part) {
  Ref<IEMSDataObject> decoded;
  if (part->get_DecodedBinary(decoded.put()) != S_OK || !decoded) return std::string();
  return SpanBytes(decoded.get());
}

Ref<IEMSMimeAttribute> FindPartParameter(IEMSMimePart* part, const char* field_name, std::string_view name) {
  Ref<IEMSMessageParameter> field;
  if (FAILED(part->FindHeader(Bstr(field_name).get(), field.put())) || !field) return {};
  Ref<IEMSMimeAttributes> attributes;
  if (FAILED(field->get_Attributes(attributes.put())) || !attributes) return {};
  LONG count = 0;
  attributes->get_AttributesCount(&count);
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMimeAttribute> attribute;
    Bstr attribute_name;
    if (FAILED(attributes->get_Attribute(i, attribute.put())) || !attribute) continue;
    attribute->get_Name(attribute_name.put());
    if (attribute_name.utf8() == name) return attribute;
  }
  return {};
}

}  // namespace pvtool

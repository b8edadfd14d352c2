// A parsed message as the tool shows it: loading the bytes into the
// library's message object and reading back headers, parts and bodies,
// all as UTF-8.
#ifndef PARCELVANE_TOOLS_MESSAGE_VIEW_H
#define PARCELVANE_TOOLS_MESSAGE_VIEW_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "tools/com.h"

namespace pvtool {

struct LoadOptions {
  // Turn bare LF line ends into CR LF before parsing (the default).
  bool crlf = true;
};

// Prepares raw input for the parser: drops a UTF-8 byte order mark, an
// mbox separator line and blank lines that open it (see LeadingBlankBytes),
// converts line ends as asked, and checks that it can be a message at all. Throws ToolError(kExitNotMessage)
// naming `source`.
std::string PrepareMessageBytes(std::string bytes, const LoadOptions& options, const std::string& source);
// The same without a copy where nothing changes: a view into `input`, or
// into `*converted` when line ends had to be converted.
std::string_view PrepareMessageView(std::string_view input, const LoadOptions& options,
                                    const std::string& source, std::string* converted);

// A message object parsed from prepared bytes.
Ref<IEMSMessageParser> ParseMessage(const std::string& prepared);
// The same over bytes that `owner` keeps alive: the message's data object
// refers to them without a copy and holds `owner` while it does.
Ref<IEMSMessageParser> ParseMessageOver(std::string_view prepared, std::shared_ptr<const void> owner);

struct HeaderLine {
  std::string name;
  std::string value;  // one occurrence; decoded or raw
};

struct PartInfo {
  int depth = 0;
  std::string content_type;       // "text/plain" when the part has no Content-Type
  std::string transfer_encoding;  // as written, lower case; "" when absent
  bool has_raw_size = false;      // false for a multipart not found in the input
  uint64_t raw_size = 0;          // body bytes as they stand in the message
  bool has_decoded_size = false;  // leaves only
  uint64_t decoded_size = 0;
  bool attachment = false;  // an attachment as the command sees it (see IsAttachment)
  std::string name;         // the attachment name, for attachments
  int children = 0;
  bool unclosed = false;  // a multipart with no closing delimiter
  uint64_t unshown = 0;   // then: the bytes after its last delimiter line
  int headerless = 0;     // parts dropped because no empty line ends their header
  uint64_t headerless_bytes = 0;
};

struct AttachmentInfo {
  std::string name;
  std::string content_type;
  Ref<IEMSMimePart> part;
};

// A mailbox of an address field, decoded.
struct MailboxInfo {
  std::string name;
  std::string address;
};

// One entry of an address field: a mailbox, or a group with its mailboxes.
struct AddressInfo {
  bool group = false;
  std::string group_name;
  std::vector<MailboxInfo> mailboxes;  // one for a mailbox; none for an empty group
};

// The part tree of a message, depth first, with what the command derives
// from it.
struct PartTree {
  std::vector<PartInfo> parts;
  std::vector<AttachmentInfo> attachments;
};

class MessageView {
 public:
  // `bytes`: what the message was parsed from, for finding its multiparts
  // (without them a multipart's size is not known).
  explicit MessageView(Ref<IEMSMessageParser> message, std::string bytes = std::string());
  // The same over bytes that `owner` keeps alive.
  MessageView(Ref<IEMSMessageParser> message, std::string_view bytes, std::shared_ptr<const void> owner)
      : message_(std::move(message)), owner_(std::move(owner)), bytes_(bytes) {}

  IEMSMessageParser* get() const { return message_.get(); }

  bool IsMime() const;
  std::string Subject() const;  // the first Subject field, decoded
  // A header field of the message's own list, decoded ("" when absent);
  // several occurrences are joined with ", ".
  std::string DecodedField(const char* name) const;
  std::string RawField(const char* name) const;
  std::string SenderName() const;
  std::string SenderAddress() const;
  // The sender as the library gives it, unless From holds a group (the
  // library reads "Team: a@x;" as a mailbox named "Team: a"): then the
  // group's first member, or for an empty group its name.
  MailboxInfo Sender() const;
  // The entries of an address field, groups included.
  std::vector<AddressInfo> Addresses(const char* field) const;

  // Every field of the message and of its root part, one entry per
  // occurrence, in order.
  std::vector<HeaderLine> AllHeaders(bool raw) const;

  // The part tree, depth first, children in order, and the attachments in
  // it; empty for a plain message. Decoding every leaf for its size is
  // left out unless `decoded_sizes`.
  PartTree Tree(bool decoded_sizes) const;
  std::vector<PartInfo> Parts() const { return Tree(true).parts; }
  // The size of a plain message's body.
  uint64_t PlainBodySize() const;

  // The attachments of the part tree, in order.
  std::vector<AttachmentInfo> Attachments() const { return Tree(false).attachments; }
  int AttachmentCount() const { return static_cast<int>(Attachments().size()); }

  // The text or HTML body as UTF-8; false when the message has none.
  bool TextBody(std::string* utf8) const;
  bool HtmlBody(std::string* utf8) const;

  // The assembled message.
  std::string Assemble() const;

 private:
  Ref<IEMSMessageParser> message_;
  std::shared_ptr<const void> owner_;
  std::string_view bytes_;
};

// A part is an attachment for the command when the library flags it, or it
// is a leaf with a file name, an x-uuencode leaf or a leaf whose type is not
// text: what a person reading the part tree takes for one.
bool IsAttachment(const PartInfo& part, bool flagged, bool has_file_name);

// What a reader of the part tree should know that it does not show: the
// multiparts with no closing delimiter, whose last part the library drops
// ("multipart/mixed at depth 1 has no closing delimiter: its last 1,234
// bytes are not shown").
std::vector<std::string> StructureWarnings(const std::vector<PartInfo>& parts);

// "Name <address>", or the address alone; a group as "Team: a, b;" and an
// empty group as its name alone; entries joined by ", " (by " " after the
// ";" of a group).
std::string AddressText(const std::vector<AddressInfo>& entries);
bool HasGroup(const std::vector<AddressInfo>& entries);

// The decoded bytes of one part.
std::string DecodedBytes(IEMSMimePart* part);

// Text read from the library, made ready for UTF-8 output (raw 8-bit text
// repaired, see RepairRawUtf8).
std::string DisplayText(const Bstr& text);

// The parameter `name` of the field `field_name` of `part`, or null. Names
// compare case-sensitively, as in the library.
Ref<IEMSMimeAttribute> FindPartParameter(IEMSMimePart* part, const char* field_name, std::string_view name);

// Calls `each` with every field of `list` in order, skipping entries that
// cannot be read.
template <class Each>
void ForEachField(IEMSMessageParameters* list, Each each) {
  LONG count = 0;
  list->get_ParamCount(&count);
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMessageParameter> field;
    if (FAILED(list->get_Parameter(i, field.put())) || !field) continue;
    each(field.get());
  }
}

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_MESSAGE_VIEW_H

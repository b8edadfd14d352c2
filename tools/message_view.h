// A parsed message as the tool shows it: loading the bytes into the
// library's message object and reading back headers, parts and bodies,
// all as UTF-8.
#ifndef PARCELVANE_TOOLS_MESSAGE_VIEW_H
#define PARCELVANE_TOOLS_MESSAGE_VIEW_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/com.h"

namespace pvtool {

struct LoadOptions {
  // Turn bare LF line ends into CR LF before parsing (the default).
  bool crlf = true;
};

// Prepares raw input for the parser: drops a UTF-8 byte order mark and an
// mbox separator line that open it, converts line ends as asked, and checks that it can be a
// message at all. Throws ToolError(kExitNotMessage) naming `source`.
std::string PrepareMessageBytes(std::string bytes, const LoadOptions& options, const std::string& source);

// A message object parsed from prepared bytes.
Ref<IEMSMessageParser> ParseMessage(const std::string& prepared);

struct HeaderLine {
  std::string name;
  std::string value;  // one occurrence; decoded or raw
};

struct PartInfo {
  int depth = 0;
  std::string content_type;       // "text/plain" when the part has no Content-Type
  std::string transfer_encoding;  // as written, lower case; "" when absent
  uint64_t raw_size = 0;          // body bytes as they stand in the message
  bool has_decoded_size = false;  // leaves only
  uint64_t decoded_size = 0;
  bool attachment = false;        // the part's attachment flag
  std::string name;               // the attachment name, for attachments
  int children = 0;
};

struct AttachmentInfo {
  std::string name;
  std::string content_type;
  Ref<IEMSMimePart> part;
};

class MessageView {
 public:
  explicit MessageView(Ref<IEMSMessageParser> message) : message_(std::move(message)) {}

  IEMSMessageParser* get() const { return message_.get(); }

  bool IsMime() const;
  std::string Subject() const;
  // A header field of the message's own list, decoded ("" when absent);
  // several occurrences are joined with ", ".
  std::string DecodedField(const char* name) const;
  std::string RawField(const char* name) const;
  std::string SenderName() const;
  std::string SenderAddress() const;
  // The mailboxes of an address field, each as {name, address}.
  std::vector<std::pair<std::string, std::string>> Mailboxes(const char* field) const;

  // Every field of the message and of its root part, one entry per
  // occurrence, in order.
  std::vector<HeaderLine> AllHeaders(bool raw) const;

  // The part tree, depth first, children in order; empty for a plain message.
  std::vector<PartInfo> Parts() const;
  // The size of a plain message's body.
  uint64_t PlainBodySize() const;

  // The message's attachment list.
  std::vector<AttachmentInfo> Attachments() const;
  int AttachmentCount() const;

  // The text or HTML body as UTF-8; false when the message has none.
  bool TextBody(std::string* utf8) const;
  bool HtmlBody(std::string* utf8) const;

  // The assembled message.
  std::string Assemble() const;

 private:
  Ref<IEMSMessageParser> message_;
};

// The decoded bytes of one part.
std::string DecodedBytes(IEMSMimePart* part);

// Text read from the library, made ready for UTF-8 output (raw 8-bit text
// repaired, see RepairRawUtf8).
std::string DisplayText(const Bstr& text);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_MESSAGE_VIEW_H

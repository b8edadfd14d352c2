// The pieces of composing a message that the command and the Python package
// share: every value from the caller is written so that it reads back as
// the same text and never as header syntax. Failures of the library throw
// ToolError(kExitLibraryFailed).
#ifndef PARCELVANE_TOOLS_COMPOSE_PARTS_H
#define PARCELVANE_TOOLS_COMPOSE_PARTS_H

#include <string>
#include <utility>
#include <vector>

#include "tools/com.h"

namespace pvtool {

// {display name, address} pairs, UTF-8.
using AddressList = std::vector<std::pair<std::string, std::string>>;

// An address field of the given mailboxes; display names as encoded words
// whenever their plain form would not read back the same.
void AddMailboxes(IEMSMessageParser* message, const char* field_name, const AddressList& addresses);

// The subject, as encoded words whenever its plain form would not read
// back the same.
void SetSubject(IEMSMessageParser* message, const std::string& subject);

// Attaches `bytes` under the file name `name` (UTF-8, no NUL), typed
// `content_type`, or by the name's extension when that is empty. The name
// is written as RFC 2231 values or encoded words as it needs.
void AddAttachment(IEMSMessageParser* message, const std::string& name, const std::string& bytes,
                   const std::string& content_type);

// "MIME-Version: 1.0" on a MIME message that has none.
void EnsureMimeVersion(IEMSMessageParser* message);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_COMPOSE_PARTS_H

// The command's own text handling on any input: line ends, UTF-8 and
// UTF-16, safe file names, dates, addresses, the message check and the
// layout of multiparts, alone and on the library's tree of the input.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

#include "tools/json_writer.h"
#include "tools/line_ends.h"
#include "tools/exit_codes.h"
#include "tools/mail_text.h"
#include "tools/message_view.h"
#include "tools/part_layout.h"
#include "tools/safe_name.h"
#include "tools/utf.h"

namespace {

void Require(bool condition) {
  if (!condition) std::abort();
}

void CheckSafeName(const std::string& input) {
  const std::string name = pvtool::SafeFileName(input);
  Require(!name.empty() && name.size() <= pvtool::kMaxSafeNameBytes);
  Require(name != "." && name != ".." && name[0] != '.');
  Require(pvtool::IsValidUtf8(name));
  for (unsigned char c : name) Require(c >= 0x20 && c != 0x7F && c != '/' && c != '\\' && c != ':');
  Require(pvtool::SafeFileName(name) == name);
}

// A tree of up to eight parts whose shape comes from the first bytes
// (children counts need not add up), laid out over the whole input.
void CheckLayout(const std::string& input) {
  std::vector<pvtool::LayoutPart> parts;
  for (size_t i = 0; i < input.size() && i < 8; ++i) {
    const unsigned char c = static_cast<unsigned char>(input[i]);
    parts.push_back(
        {c % 4, (c & 4) != 0 ? std::string(1 + c / 64, static_cast<char>('a' + i % 3)) : std::string()});
  }
  const std::vector<pvtool::PartRegion> regions = pvtool::LayOutParts(input, parts);
  Require(regions.size() == parts.size());
  for (const pvtool::PartRegion& region : regions) {
    Require(region.body_size <= input.size() && region.unshown <= input.size());
    Require(region.known || (region.body_size == 0 && !region.unclosed));
  }
}

// The input read as the command reads a message: the part tree, its
// layout in the bytes and the warnings, on the library's own tree.
void CheckMessage(const std::string& input) {
  try {
    const std::string prepared = pvtool::PrepareMessageBytes(input, pvtool::LoadOptions(), "input");
    pvtool::Ref<IEMSMessageParser> parsed = pvtool::ParseMessage(prepared);
    const pvtool::MessageView message(std::move(parsed), prepared);
    const pvtool::PartTree tree = message.Tree(false);
    for (const pvtool::PartInfo& part : tree.parts)
      Require(!part.unclosed || part.unshown <= prepared.size());
    pvtool::StructureWarnings(tree.parts);
    pvtool::AddressText(message.Addresses("To"));
    message.Sender();
  } catch (const pvtool::ToolError&) {
    // Not a message, or the library refused it: the command says so.
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string input(reinterpret_cast<const char*>(data), size);

  const std::string crlf = pvtool::BareLfToCrLf(input);
  Require(!pvtool::HasBareLf(crlf));
  Require(pvtool::BareLfToCrLf(crlf) == crlf);
  Require(pvtool::CrLfToLf(input).size() <= input.size());

  const pvtool::U16String wide = pvtool::Utf8ToUtf16(input);
  const std::string back = pvtool::Utf16ToUtf8(wide);
  Require(pvtool::IsValidUtf8(back));
  if (pvtool::IsValidUtf8(input)) Require(back == input);
  Require(pvtool::IsValidUtf8(pvtool::Utf16ToUtf8(pvtool::RepairRawUtf8(wide))));
  Require(pvtool::IsValidUtf8(pvtool::TerminalSafe(input)));
  Require(pvtool::CodePointCount(pvtool::FitColumn(back, 20)) == 20);

  CheckSafeName(input);
  pvtool::ShortDate(input);
  pvtool::SplitAddress(input);
  for (const pvtool::AddressPieces& entry : pvtool::SplitAddressList(input)) {
    Require(entry.group || entry.members.size() == 1);
  }
  pvtool::NotAMessageReason(input);
  Require(pvtool::LeadingBlankBytes(input) <= input.size());
  CheckLayout(input);
  CheckMessage(input);

  pvtool::JsonWriter json;
  json.BeginArray();
  json.String(input);
  json.EndArray();
  Require(pvtool::IsValidUtf8(json.text()));
  return 0;
}

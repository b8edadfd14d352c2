// The command's own text handling on any input: line ends, UTF-8 and
// UTF-16, safe file names, dates, addresses and the message check.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "tools/json_writer.h"
#include "tools/line_ends.h"
#include "tools/mail_text.h"
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
  pvtool::NotAMessageReason(input);

  pvtool::JsonWriter json;
  json.BeginArray();
  json.String(input);
  json.EndArray();
  Require(pvtool::IsValidUtf8(json.text()));
  return 0;
}

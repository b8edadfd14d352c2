// One header field under any text: the setters of the three views and the
// content-type operations. What must hold: RawData put then get gives the
// text back (for names that do not begin with "Content-"); UnfoldedData put
// only inserts "\r\n" before blanks; the unfolded view holds no line break
// but its separators; DecodedData put then get gives the text back; a clone
// reads as its field (for names that do not begin with "Content-").
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "src/headers/header_text.h"
#include "src/headers/message_parameter.h"
#include "src/platform/codepage.h"

namespace {

void Check(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "field property broken: %s\n", what);
  std::abort();
}

std::string Narrow(const pv::Bstr& text) { return pv::WideToAnsi(text.view()); }

// Whether `folded` is `text` with "\r\n" inserted in front of blanks only.
bool IsFoldOf(const std::string& folded, const std::string& text) {
  size_t i = 0;
  for (size_t j = 0; j < folded.size();) {
    if (i < text.size() && folded[j] == text[i]) {
      ++i;
      ++j;
      continue;
    }
    if (folded.compare(j, 2, "\r\n") != 0 || j + 2 >= folded.size()) return false;
    if (folded[j + 2] != ' ' && folded[j + 2] != '\t') return false;
    j += 2;
  }
  return i == text.size();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  if (size == 0) return 0;
  static const char* const kNames[] = {
      "Subject", "X-A-Rather-Long-Field-Name-For-Folding", "Content-Type", "Content-Disposition", "", "To"};
  const char* name = kNames[data[0] % (sizeof kNames / sizeof kNames[0])];
  std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
  bool content = IsContentFieldName(name);

  ComPtr<MessageParameter> field;
  if (FAILED(MakeObject(&field))) return 0;
  Bstr nameText(AnsiToWide(name));
  Bstr wide(AnsiToWide(text));
  if (nameText.is_null() || wide.is_null()) return 0;
  field->put_Name(nameText.get());
  ComPtr<IEMSContentType> type;
  ComPtr<IEMSContentDisposition> disposition;
  field->QueryInterface(IID_IEMSContentType, type.put_void());
  field->QueryInterface(IID_IEMSContentDisposition, disposition.put_void());
  Bstr out;

  // RawData round trip.
  Check(field->put_RawData(wide.get()) == S_OK, "RawData put status");
  Check(field->get_RawData(out.put()) == S_OK, "RawData get status");
  if (!content) Check(Narrow(out) == text, "RawData round trip");
  Check(field->AssembleHeader(out.put()) == S_OK, "AssembleHeader status");

  // The unfolded view: line breaks only in the separators.
  Check(field->get_UnfoldedData(out.put()) == S_OK, "UnfoldedData get status");
  std::string unfolded = Narrow(out);
  for (size_t at; (at = unfolded.find("\r\n\r\n")) != std::string::npos;) unfolded.erase(at, 4);
  Check(unfolded.find_first_of("\r\n") == std::string::npos, "unfolded view holds a line break");

  // Folding only inserts line breaks in front of blanks.
  Check(field->put_UnfoldedData(wide.get()) == S_OK, "UnfoldedData put status");
  Check(field->get_RawData(out.put()) == S_OK, "RawData get status");
  if (text.find_first_of("\r\n") == std::string::npos && !content) {
    Check(IsFoldOf(Narrow(out), text), "fold inserts only line breaks before blanks");
  }

  // DecodedData keeps the caller's text.
  Check(field->put_DecodedData(wide.get()) == S_OK, "DecodedData put status");
  Check(field->get_DecodedData(out.put()) == S_OK, "DecodedData get status");
  Check(out.view() == wide.view(), "DecodedData round trip");
  Check(field->get_RawData(out.put()) == S_OK, "RawData after DecodedData put");

  // Parsing the text as a line, the content state and the clone.
  field->ParseHeader(wide.get());
  type->ParseContentType(wide.get());
  type->put_ContentType(wide.get());
  disposition->ParseDisposition(wide.get());
  Check(type->AssembleContentType(out.put()) == S_OK, "AssembleContentType status");
  Check(disposition->AssembleDisposition(out.put()) == S_OK, "AssembleDisposition status");
  Check(field->AssembleHeader(out.put()) == S_OK, "AssembleHeader status");
  ComPtr<IEMSMessageParameter> clone;
  Check(field->Clone(clone.put()) == S_OK && clone, "Clone status");
  Bstr cloneRaw;
  Check(field->get_RawData(out.put()) == S_OK && clone->get_RawData(cloneRaw.put()) == S_OK,
        "RawData get status");
  Bstr parsedName;
  field->get_Name(parsedName.put());  // the parse may have renamed the field
  if (!IsContentFieldName(Narrow(parsedName)))
    Check(out.view() == cloneRaw.view(), "the clone reads as the field");
  ComPtr<IEMSHeaderMailboxes> mailboxes;
  if (SUCCEEDED(field->get_HeaderMailboxes(mailboxes.put())) && mailboxes) {
    Check(mailboxes->get_DecodedMailboxes(out.put()) == S_OK, "DecodedMailboxes status");
    Check(mailboxes->AssembleMailboxes(out.put()) == S_OK, "AssembleMailboxes status");
  }
  field->AddChainHeader(clone.get());
  Check(field->get_UnfoldedData(out.put()) == S_OK, "UnfoldedData of a chained field");
  return 0;
}

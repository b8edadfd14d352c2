// Parses any bytes as a message (through ParseObject or FullMessage put,
// chosen by the first byte), reads it through every getter, assembles it
// and parses the assembly again; then composes on it through the body and
// attachment setters and assembles once more. Checked: parsing a byte
// array always succeeds, and a message that stays plain assembles to its
// header text, the blank line and the body bytes exactly as they were.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "parcelvane/parcelvane.h"
#include "src/data/data_access.h"
#include "src/platform/codepage.h"
#include "src/com/class_instance.h"

namespace {

using pv::Bstr;
using pv::ComPtr;

void Check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "message_fuzz: %s\n", what);
    std::abort();
  }
}

Bstr Wide(std::string_view ascii) { return Bstr(pv::WidenAscii(ascii)); }

std::string Bytes(IEMSDataObject* object) {
  pv::DataBytes bytes;
  if (object == nullptr || FAILED(pv::ReadDataBytes(object, &bytes))) return std::string();
  return std::string(bytes.Span());
}

void ReadString(HRESULT (STDMETHODCALLTYPE IEMSMessageParser::*getter)(BSTR*), IEMSMessageParser* message) {
  Bstr value;
  (message->*getter)(value.put());
}

void ReadNumber(HRESULT (STDMETHODCALLTYPE IEMSMessageParser::*getter)(LONG*), IEMSMessageParser* message) {
  LONG value = 0;
  Check((message->*getter)(&value) == S_OK, "number getter");
}

// Every getter of the message, and the part-tree lookups.
void ReadEverything(IEMSMessageParser* message) {
  ReadString(&IEMSMessageParser::get_FullMessage, message);
  ReadString(&IEMSMessageParser::get_Subject, message);
  ReadString(&IEMSMessageParser::get_SenderName, message);
  ReadString(&IEMSMessageParser::get_SenderEmail, message);
  ReadString(&IEMSMessageParser::get_RecipientName, message);
  ReadString(&IEMSMessageParser::get_RecipientEmail, message);
  ReadString(&IEMSMessageParser::get_Body, message);
  ReadString(&IEMSMessageParser::get_TextBody, message);
  ReadString(&IEMSMessageParser::get_HTMLBody, message);
  ReadString(&IEMSMessageParser::get_AllHeadersString, message);
  ReadNumber(&IEMSMessageParser::get_DefaultCodePage, message);
  ReadNumber(&IEMSMessageParser::get_DefaultEncoding, message);
  ReadNumber(&IEMSMessageParser::get_TextCodePage, message);
  ReadNumber(&IEMSMessageParser::get_HtmlCodePage, message);
  ReadNumber(&IEMSMessageParser::get_TextEncoding, message);
  ReadNumber(&IEMSMessageParser::get_HtmlEncoding, message);
  ReadNumber(&IEMSMessageParser::get_AttachEncoding, message);
  ReadNumber(&IEMSMessageParser::get_AttachHeaderEncoding, message);
  {
    Bstr value;
    Bstr name = Wide("Content-Type");
    message->get_HeaderString(name.get(), value.put());
  }
  ULONG size = 0;
  message->get_Size(&size);
  message->IsMimeMessage();
  ComPtr<IEMSDataObject> object;
  message->get_StoredMessageObject(object.put());
  message->get_BodyObject(object.put());
  ComPtr<IEMSMessageParameters> list;
  message->get_Headers(list.put());
  message->get_AllHeaders(list.put());
  message->get_MimeHeaders(list.put());
  ComPtr<IEMSMimePart> part;
  message->get_MimePart(part.put());
  ComPtr<IEMSMimeParts> parts;
  message->get_AttachParts(parts.put());
  for (LONG subtype : {1, 8, 10, 18}) message->FindPartBySubType(subtype, part.put());
  ComPtr<IEMSMessageParameter> field;
  Bstr name = Wide("Content-Disposition");
  message->FindMimeHeader(name.get(), field.put());
  message->FindHeader(name.get(), field.put());
  // Decode every attachment.
  LONG count = 0;
  if (parts) parts->get_PartsCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimePart> attachment;
    parts->get_Part(i, attachment.put());
    if (!attachment) continue;
    ComPtr<IEMSDataObject> decoded;
    attachment->get_DecodedBinary(decoded.put());
    Bstr attachName;
    attachment->get_AttachName(attachName.put());
  }
}

ComPtr<IEMSMessageParser> NewMessage() {
  ComPtr<IEMSMessageParser> message;
  Check(SUCCEEDED(pv::CreateClassInstance(CLSID_EMSMessageParser, &message)), "create message");
  return message;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const bool asString = (data[0] & 1) != 0;
  std::string input(reinterpret_cast<const char*>(data + 1), size - 1);

  ComPtr<IEMSMessageParser> message = NewMessage();
  ComPtr<IEMSDataObject> source;
  if (asString) {
    Bstr text(pv::AnsiToWide(input));
    HRESULT hr = message->put_FullMessage(text.get());
    Check(hr == (input.empty() ? E_FAIL : S_OK), "FullMessage put");
    message->get_StoredMessageObject(source.put());
    input = Bytes(source.get());  // what the ANSI page made of the text
  } else {
    Check(SUCCEEDED(pv::MakeDataObject(input, &source)), "data object");
    Check(message->ParseObject(source.get()) == S_OK, "ParseObject");
  }
  ReadEverything(message.get());

  ComPtr<IEMSDataObject> assembled;
  Check(message->AssembleObject(assembled.put()) == S_OK && assembled, "AssembleObject");
  std::string out = Bytes(assembled.get());
  // A plain message writes its body bytes back unchanged after the blank line.
  ComPtr<IEMSDataObject> body;
  message->get_BodyObject(body.put());
  if (message->IsMimeMessage() != S_OK && body) {
    size_t separator = input.find("\r\n\r\n");
    Check(separator != std::string::npos, "plain body without a blank line");
    std::string tail = "\r\n" + input.substr(separator + 4);
    Check(out.size() >= tail.size() && out.compare(out.size() - tail.size(), tail.size(), tail) == 0,
          "plain body changed by assembly");
  }

  ComPtr<IEMSMessageParser> again = NewMessage();
  Check(again->ParseObject(assembled.get()) == S_OK, "parse of the assembly");
  ReadEverything(again.get());

  // Compose on the parsed message.
  std::string_view head(input.data(), input.size() < 64 ? input.size() : 64);
  Bstr text(pv::AnsiToWide(head));
  message->put_TextBody(text.get());
  message->put_HTMLBody(text.get());
  message->put_Subject(text.get());
  message->put_RecipientName(text.get());
  ComPtr<IEMSDataObject> attachment;
  Check(SUCCEEDED(pv::MakeDataObject(std::string(head), &attachment)), "attachment data");
  message->put_AttachEncoding(static_cast<LONG>(data[0] >> 1) % 5);
  Bstr fileName = Wide("dir/report.pdf");
  message->AddAttach(fileName.get(), attachment.get());
  message->AddAttach(text.get(), attachment.get());
  ReadEverything(message.get());
  assembled = nullptr;
  Check(message->AssembleObject(assembled.put()) == S_OK, "AssembleObject after composing");
  ComPtr<IEMSMessageParser> composed = NewMessage();
  Check(composed->ParseObject(assembled.get()) == S_OK, "parse of the composed message");
  ReadEverything(composed.get());
  return 0;
}

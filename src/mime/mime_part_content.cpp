// A part's content rather than its structure: making it an attachment,
// naming it, its decoded bytes and text, and its content type.
#include <algorithm>
#include <string>
#include <utility>

#include "src/data/data_access.h"
#include "src/data/data_object.h"
#include "src/headers/content_type_codes.h"
#include "src/mime/mime_part.h"
#include "src/mime/mime_part_fields.h"
#include "src/mime/part_decoder.h"
#include "src/mime/part_encoder.h"
#include "src/platform/codepage.h"
#include "src/platform/content_types.h"
#include "src/platform/split_path.h"

namespace pv {
namespace {

// A file name as attachments use it: the base name and the extension (with
// its "."), drive and directory dropped. An extension holding a blank is
// not one: it goes back on the end of the base name. A component too long
// for the runtime's buffers empties everything, as the runtime does.
struct FileName {
  WString base;
  WString extension;
};

FileName SplitFileName(WStringView path) {
  PathParts parts;
  SplitPath(path, &parts);
  FileName name{std::move(parts.name), std::move(parts.extension)};
  if (name.extension.find(u' ') != WString::npos) {
    name.base += name.extension;
    name.extension.clear();
  }
  return name;
}

// The characters a name taken from the content type's "name" parameter may
// not keep: they would make it a path or a pattern.
bool IsUnsafeInName(OLECHAR c) {
  switch (c) {
    case u'<':
    case u'>':
    case u':':
    case u'"':
    case u'/':
    case u'\\':
    case u'|':
    case u'*':
    case u'?':
      return true;
    default:
      return c < 32;
  }
}

Bstr AsciiBstr(const char* text) { return Bstr(WidenAscii(text)); }

// The decoded value of a field's parameter; false when there is none.
bool ParameterValue(IEMSMessageParameter* field, const char* name, bool decoded, WString* value) {
  Bstr key = AsciiBstr(name);
  ComPtr<IEMSMimeAttribute> attribute;
  if (FAILED(field->FindAttribute(key.get(), attribute.put())) || !attribute) return false;
  Bstr text;
  HRESULT hr = decoded ? attribute->get_DecodedValue(text.put()) : attribute->get_RawValue(text.put());
  if (FAILED(hr)) return false;
  *value = WString(text.view());
  return true;
}

// The byte array of CreateDataArray for UTF-16 text converted with a code
// page, with its statuses (an empty text is a failure).
HRESULT BytesOfText(BSTR text, LONG codePage, ComPtr<IEMSDataObject>* out) {
  ComPtr<DataObject> data;
  HRESULT hr = MakeObject(&data);
  if (FAILED(hr)) return hr;
  const UINT length = SysStringLen(text);
  VARIANT array;
  VariantInit(&array);
  array.vt = VT_ARRAY | VT_UI2;
  array.parray = SafeArrayCreateVector(VT_UI2, 0, length);
  if (array.parray == nullptr) return E_OUTOFMEMORY;
  if (length != 0) std::copy(text, text + length, static_cast<OLECHAR*>(array.parray->pvData));
  hr = data->CreateDataArray(array, codePage);
  VariantClear(&array);
  if (FAILED(hr)) return hr;
  *out = ComPtr<IEMSDataObject>(data.get());
  return S_OK;
}

}  // namespace

// ---------------------------------------------------------------- attachments
HRESULT MimePart::DoCreateAttach(BSTR bszName, IEMSDataObject* pObject, LONG bEmbedded, BSTR bszContentId,
                                 BSTR bszContentLoc, BSTR bszContentType) {
  if (pObject == nullptr) return E_POINTER;
  FileName file = SplitFileName(View(bszName));
  const WString name = file.base + file.extension;
  WString contentType(View(bszContentType));
  if (contentType.empty() && !ContentTypeOfExtension(file.extension, &contentType)) {
    contentType = WidenAscii("application/octet-stream");
  }

  ComPtr<IEMSMessageParameter> type;
  HRESULT hr = CreateField(fields(), "Content-Type", &type);
  if (FAILED(hr)) return hr;
  Bstr nameKey = AsciiBstr("name");
  ComPtr<IEMSMimeAttribute> nameParameter;
  type->CreateAttribute(nameKey.get(), nameParameter.put());
  if (nameParameter) nameParameter->put_DecodedValue(Bstr(name).get());
  ComPtr<IEMSMimeAttributes> parameters;
  Bstr assembled;
  if (SUCCEEDED(type->get_Attributes(parameters.put())) && parameters) {
    parameters->AssembleAttributes(assembled.put());
  }
  type->put_RawData(Bstr(contentType + WString(assembled.view())).get());

  // An embedded object is inline: it gets no disposition.
  if (bEmbedded == 0) {
    ComPtr<IEMSMessageParameter> disposition;
    hr = CreateField(fields(), "Content-Disposition", &disposition);
    if (FAILED(hr)) return hr;
    ComPtr<IEMSContentDisposition> state;
    if (SUCCEEDED(disposition.As(&state)) && state) state->put_FileName(Bstr(name).get());
  }
  const std::pair<const char*, BSTR> optional[] = {{"Content-ID", bszContentId},
                                                   {"Content-Location", bszContentLoc}};
  for (const auto& [fieldName, value] : optional) {
    if (View(value).empty()) continue;
    ComPtr<IEMSMessageParameter> field;
    hr = CreateField(fields(), fieldName, &field);
    if (FAILED(hr)) return hr;
    field->put_DecodedData(value);  // as given: no angle brackets are added
  }

  hr = put_DecodedBinary(pObject);
  if (FAILED(hr)) return hr;
  attach_ = 1;
  return S_OK;
}

HRESULT MimePart::GetAttachName(BSTR* pVal) {
  WString name;
  ComPtr<IEMSMessageParameter> disposition = headers_->Find("Content-Disposition").object();
  ComPtr<IEMSContentDisposition> state;
  if (disposition && SUCCEEDED(disposition.As(&state)) && state) {
    Bstr fileName;
    if (SUCCEEDED(state->get_FileName(fileName.put()))) name = WString(fileName.view());
  }
  if (name.empty()) {
    if (ComPtr<IEMSMessageParameter> description = headers_->Find("Content-Description").object()) {
      Bstr text;
      if (SUCCEEDED(description->get_DecodedData(text.put()))) name = WString(text.view());
    }
  }
  if (name.empty()) {
    ComPtr<IEMSMessageParameter> type = headers_->Find("Content-Type").object();
    if (!type || !ParameterValue(type.get(), "name", true, &name)) {
      name = WidenAscii("NoName");
    } else {
      for (OLECHAR& c : name) {
        if (IsUnsafeInName(c)) c = u'_';
      }
    }
  }

  FileName file = SplitFileName(name);
  if (file.extension.empty()) {
    LONG type = kTypeText;
    LONG subtype = kSubtypePlain;
    PartContentCodes(fields(), &type, &subtype);
    if (type == kTypeMessage) {
      file.extension = WidenAscii(".eml");
    } else {
      Bstr contentType;
      get_MimeContentTypeString(contentType.put());
      if (contentType.is_null() || !ExtensionOfContentType(contentType.view(), &file.extension) ||
          file.extension.empty()) {
        file.extension = WidenAscii(".att");
      }
    }
    if (file.extension.front() != u'.') file.extension.insert(file.extension.begin(), u'.');
  }
  return ReturnBstr(file.base + file.extension, pVal);
}

// ---------------------------------------------------------------- decoded content
// The bytes are stored as the body, then encoded by DefaultEncoding; with
// uuencode the "begin" line names no file.
HRESULT MimePart::PutDecodedBinary(IEMSDataObject* pVal) {
  if (pVal == nullptr) return E_POINTER;
  HRESULT hr = put_BodyObject(pVal);
  if (FAILED(hr)) return hr;
  ComPtr<PartEncoder> encoder;
  hr = MakeObject(&encoder);
  if (FAILED(hr)) return hr;
  return encoder->EncodePart(this, nullptr);
}

// A multipart part whose body is built from its children has no body of
// its own to decode.
HRESULT MimePart::GetDecodedBinary(IEMSDataObject** ppVal) {
  if (!body_) return S_FALSE;
  ComPtr<PartDecoder> decoder;
  if (FAILED(MakeObject(&decoder))) return E_FAIL;
  ComPtr<IEMSDataObject> decoded;
  decoder->DecodePart(this, decoded.put());
  if (!decoded) return S_FALSE;
  *ppVal = decoded.detach();
  return S_OK;
}

HRESULT MimePart::PutDecodedBody(BSTR newVal) {
  ComPtr<IEMSDataObject> bytes;
  HRESULT hr = BytesOfText(newVal, defaultCodePage_, &bytes);
  if (FAILED(hr)) return hr;

  ComPtr<IEMSMessageParameter> type;
  hr = CreateField(fields(), "Content-Type", &type);
  if (FAILED(hr)) return hr;
  if (hr == S_OK) {  // a new field; an existing one keeps its type
    ComPtr<IEMSContentType> content;
    if (SUCCEEDED(type.As(&content)) && content) content->put_ContentType(AsciiBstr("text/plain").get());
  }
  Bstr charsetName;
  ComPtr<IEMSHeaderCharset> charset;
  if (SUCCEEDED(type->get_HeaderCharset(charset.put())) && charset) {
    charset->CodePageToCharset(defaultCodePage_, charsetName.put());
  }
  Bstr key = AsciiBstr("charset");
  ComPtr<IEMSMimeAttribute> parameter;
  type->CreateAttribute(key.get(), parameter.put());
  if (parameter) parameter->put_RawValue(charsetName.get());

  return put_DecodedBinary(bytes.get());
}

HRESULT MimePart::GetDecodedBody(BSTR* pVal) {
  if (attach_ != 0) return S_FALSE;  // attachments have no text body
  ComPtr<IEMSDataObject> decoded;
  HRESULT hr = get_DecodedBinary(decoded.put());
  if (FAILED(hr)) return hr;
  if (!decoded) return S_FALSE;
  DataBytes bytes;
  if (FAILED(ReadDataBytes(decoded.get(), &bytes))) return S_FALSE;

  LONG codePage = defaultCodePage_;
  ComPtr<IEMSMessageParameter> type = headers_->Find("Content-Type").object();
  WString charsetName;
  if (type && ParameterValue(type.get(), "charset", false, &charsetName)) {
    ComPtr<IEMSHeaderCharset> charset;
    Bstr name(charsetName);
    LONG mapped = -1;
    if (SUCCEEDED(type->get_HeaderCharset(charset.put())) && charset)
      charset->CharsetToCodePage(name.get(), &mapped);
    codePage = mapped;
  }
  // A charset the table does not know reads as the part's code page, and
  // a page that cannot convert at all as the ANSI page: text is never lost.
  WString text;
  if (!ToWide(static_cast<UINT>(codePage), bytes.Span(), &text) &&
      !ToWide(static_cast<UINT>(defaultCodePage_), bytes.Span(), &text)) {
    text = AnsiToWide(bytes.Span());
  }
  return ReturnBstr(text, pVal);
}

// ---------------------------------------------------------------- content type
HRESULT MimePart::GetMimeType(LONG* pVal) {
  LONG subtype = 0;
  PartContentCodes(fields(), pVal, &subtype);
  return S_OK;
}

HRESULT MimePart::GetMimeSubType(LONG* pVal) {
  LONG type = 0;
  PartContentCodes(fields(), &type, pVal);
  return S_OK;
}

HRESULT MimePart::GetMimeContentTypeString(BSTR* pVal) {
  ComPtr<IEMSMessageParameter> type = headers_->Find("Content-Type").object();
  if (!type) return S_OK;  // left unset
  ComPtr<IEMSContentType> content;
  if (FAILED(type.As(&content)) || !content) return S_OK;
  return content->get_ContentType(pVal);
}

}  // namespace pv

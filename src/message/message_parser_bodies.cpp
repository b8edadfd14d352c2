// The message's body as text, its text and HTML bodies (which restructure
// the message when the wanted part is missing), its attachments, and the
// part-tree operations forwarded to the root part. The code page each path
// uses differs on purpose, as do the statuses.
#include <unordered_set>
#include <vector>

#include "src/headers/content_type_codes.h"
#include "src/message/message_parser.h"
#include "src/message/message_parser_util.h"
#include "src/mime/mime_part_fields.h"
#include "src/platform/codepage.h"
#include "src/platform/content_types.h"
#include "src/platform/split_path.h"
#include "src/com/class_instance.h"

namespace pv {
namespace {

// The file name of an attachment path: name and extension without drive
// and directory, and the extension (with its dot) to look its type up by.
// An "extension" holding a blank belongs to the name and is not looked up.
void SplitAttachName(WStringView path, WString* name, WString* extension) {
  PathParts parts;
  SplitPath(path, &parts);  // a component too long leaves every part empty
  *name = parts.name + parts.extension;
  bool blank = parts.extension.find(OLECHAR(' ')) != WString::npos;
  *extension = blank ? WString() : parts.extension;
}

bool HasUnitAbove128(WStringView text) {
  for (OLECHAR unit : text) {
    if (static_cast<uint32_t>(unit) > 128) return true;
  }
  return false;
}

HRESULT SetRawData(IEMSMessageParameter* field, WStringView text) {
  Bstr value(text);
  if (value.is_null()) return E_OUTOFMEMORY;
  return field->put_RawData(value.get());
}

// A new field `name` on `part`, or null.
ComPtr<IEMSMessageParameter> CreatePartField(IEMSMimePart* part, std::string_view name) {
  ComPtr<IEMSMessageParameter> field;
  Bstr wide = FixedName(name);
  if (FAILED(part->CreateHeader(wide.get(), field.put()))) field = nullptr;
  return field;
}

}  // namespace

// ---------------------------------------------------------------- content codes of the root
void MessageParser::RootContentCodes(LONG* type, LONG* subtype) {
  *type = kTypeText;
  *subtype = kSubtypePlain;
  if (IsMimeMessage() != S_OK) return;
  TypeCodesOf(root_->FindField("Content-Type"), type, subtype);
}

// ---------------------------------------------------------------- forwards to the root part
HRESULT MessageParser::DoRemovePart(IEMSMimePart* pPart) {
  if (pPart == nullptr) return E_POINTER;
  if (IsMimeMessage() != S_OK) return E_FAIL;
  if (pPart == root_.get()) {
    root_ = nullptr;  // neither a root part nor a plain body now
    return S_OK;
  }
  return root_.get()->RemovePart(pPart);
}

HRESULT MessageParser::DoFindPart(BSTR bszCntType, LONG nLevel, IEMSMimePart** ppPart) {
  if (bszCntType == nullptr) return E_POINTER;
  if (IsMimeMessage() != S_OK) return E_FAIL;
  return root_.get()->FindPart(bszCntType, nLevel, ppPart);
}

HRESULT MessageParser::DoFindParentPart(IEMSMimePart* pPart, IEMSMimePart** ppPart) {
  if (pPart == nullptr) return E_POINTER;
  if (IsMimeMessage() != S_OK) return E_FAIL;
  if (pPart == root_.get()) return S_FALSE;  // the root has no parent
  return root_.get()->FindParentPart(pPart, ppPart);
}

// A multipart root searches its tree; a single part root is the answer
// when its subtype (never its type) matches and it is not an attachment.
HRESULT MessageParser::FindPartBySubType(LONG nSubType, IEMSMimePart** ppPart) {
  if (IsMimeMessage() != S_OK) return E_FAIL;
  return Guard([&] {
    LONG type = kTypeText;
    LONG subtype = kSubtypePlain;
    TypeCodesOf(root_->FindField("Content-Type"), &type, &subtype);
    if (type == kTypeMultipart)
      return SUCCEEDED(root_.get()->FindPartBySubType(nSubType, ppPart)) ? S_OK : E_FAIL;
    if (subtype != nSubType) return E_FAIL;
    if (HasAttachmentDisposition(*root_.access())) return E_FAIL;
    if (ppPart != nullptr) root_.object().CopyTo(ppPart);
    return S_OK;
  });
}

// On a plain message the result is a single "text/plain" root holding the
// plain body, whatever subtype was asked for.
HRESULT MessageParser::DoConvertToMultipart(LONG nSubType) {
  if (!plainBody_) return root_ ? root_.get()->ConvertToMultipart(nSubType) : S_FALSE;
  ComPtr<IEMSMimePart> root;
  if (FAILED(CreateClassInstance(CLSID_EMSMimePart, &root))) return E_FAIL;
  if (!CreateContentType(root.get(), "text/plain")) return E_FAIL;
  root->put_DefaultCodePage(defaultCodePage_);
  root->put_DefaultEncoding(defaultEncoding_);
  root->put_BodyObject(plainBody_.get());
  root_.Reset(root);
  plainBody_ = nullptr;
  return S_OK;
}

// A root that is not multipart of the preferred subtype is converted first,
// so a multipart root of another subtype is wrapped once more.
HRESULT MessageParser::DoAddPart(LONG nPrefSubType, IEMSMimePart* pPart) {
  if (pPart == nullptr) return E_POINTER;
  if (!plainBody_ && !root_) {
    root_.Reset(pPart);
    return S_OK;
  }
  LONG type = kTypeText;
  LONG subtype = kSubtypePlain;
  RootContentCodes(&type, &subtype);
  if (type != kTypeMultipart || subtype != nPrefSubType) {
    const bool wasPlain = static_cast<bool>(plainBody_);
    ConvertToMultipart(nPrefSubType);
    // A plain message first becomes a single "text/plain" part, whose
    // children are never written; converting that part as well gives the
    // new part a multipart container, so the message keeps it when it is
    // assembled.
    if (wasPlain && root_) {
      RootContentCodes(&type, &subtype);
      if (type != kTypeMultipart || subtype != nPrefSubType) ConvertToMultipart(nPrefSubType);
    }
  }
  if (IsMimeMessage() != S_OK) return E_FAIL;
  ComPtr<IEMSMimeParts> children;
  if (FAILED(root_.get()->get_MimeParts(children.put())) || !children) return E_FAIL;
  return SUCCEEDED(children->AddPart(pPart)) ? S_OK : E_FAIL;
}

// ---------------------------------------------------------------- attachments
HRESULT MessageParser::DoAddAttach(BSTR bszName, IEMSDataObject* pObject) {
  if (pObject == nullptr) return E_FAIL;
  WString name;
  WString extension;
  SplitAttachName(View(bszName), &name, &extension);

  if (HasUnitAbove128(name) && attachHeaderEncoding_ != kHeaderEncodingNone) {
    ComPtr<IEMSHeaderCharset> charset;
    if (FAILED(CreateClassInstance(CLSID_EMSHeaderCharset, &charset))) return S_OK;
    // An attachment to be uuencoded gets B where Q was asked for.
    bool uuencode = attachEncoding_ == kTransferUuencode && attachHeaderEncoding_ == kHeaderEncodingQ;
    charset->put_DefaultEncoding(uuencode ? kHeaderEncodingB : attachHeaderEncoding_);
    charset->put_DefaultCodePage(static_cast<LONG>(AnsiCodePage()));
    Bstr headerName = FixedName("filename=\"\"");
    charset->put_HeaderName(headerName.get());
    Bstr plain(name);
    Bstr encoded;
    if (SUCCEEDED(charset->AssembleHeader(plain.get(), encoded.put())) && !encoded.is_null()) {
      name = WString(encoded.view());
    }
  }

  ComPtr<IEMSMimePart> attachment;
  if (FAILED(CreateClassInstance(CLSID_EMSMimePart, &attachment))) return E_FAIL;
  if (name.empty()) {
    if (ComPtr<IEMSMessageParameter> field = CreatePartField(attachment.get(), "Content-Disposition")) {
      SetRawData(field.get(), WidenAscii("attachment"));
    }
  } else {
    WString type;
    if (extension.empty() || !ContentTypeOfExtension(extension, &type) || type.empty()) {
      type = WidenAscii("application/octet-stream");
    }
    if (ComPtr<IEMSMessageParameter> field = CreatePartField(attachment.get(), "Content-Type")) {
      SetRawData(field.get(), type + WidenAscii(";\r\n"));
    }
    if (ComPtr<IEMSMessageParameter> field = CreatePartField(attachment.get(), "Content-Disposition")) {
      SetRawData(field.get(), WidenAscii("attachment;\r\n\tfilename=\"") + name + WidenAscii("\""));
    }
  }
  attachment->put_IsAttachPart(1);
  attachment->put_DefaultEncoding(attachEncoding_);
  if (FAILED(attachment->put_DecodedBinary(pObject))) return E_FAIL;
  return SUCCEEDED(AddPart(kSubtypeMixed, attachment.get())) ? S_OK : E_FAIL;
}

// The flagged leaves of the tree, depth first with children in list order;
// parts with children are never listed. A part met a second time (the same
// object in two lists, or a list that holds its own ancestor) is not walked
// again, so the walk ends on any shape a caller can build.
HRESULT MessageParser::get_AttachParts(IEMSMimeParts** ppVal) {
  if (plainBody_) return S_FALSE;
  return Guard([&] {
    ComPtr<IEMSMimeParts> list;
    HRESULT hr = CreateClassInstance(CLSID_EMSMimeParts, &list);
    if (FAILED(hr)) return hr;
    std::vector<ComPtr<IEMSMimePart>> pending;
    std::unordered_set<IEMSMimePart*> seen;
    if (root_) pending.push_back(root_.object());
    while (!pending.empty()) {
      ComPtr<IEMSMimePart> part = std::move(pending.back());
      pending.pop_back();
      if (!seen.insert(part.get()).second) continue;
      ComPtr<IEMSMimeParts> children;
      LONG count = 0;
      if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
      if (count > 0) {
        for (LONG i = count; i-- > 0;) {
          ComPtr<IEMSMimePart> child;
          children->get_Part(i, child.put());
          if (child) pending.push_back(std::move(child));
        }
        continue;
      }
      LONG flag = 0;
      part->get_IsAttachPart(&flag);
      if (flag != 0) list->AddPart(part.get());
    }
    LONG listed = 0;
    list->get_PartsCount(&listed);
    if (listed > 0 && ppVal != nullptr) *ppVal = list.detach();
    return S_OK;
  });
}

// ---------------------------------------------------------------- the body as text
// The body as it stands, still transfer-encoded, in the ANSI code page.
HRESULT MessageParser::GetBody(BSTR* pVal) {
  ComPtr<IEMSDataObject> body;
  get_BodyObject(body.put());
  DataBytes bytes;
  return ReturnCodePageText(kCodePageAnsi, SpanOf(body.get(), &bytes), pVal);
}

HRESULT MessageParser::PutBody(BSTR newVal) {
  if (newVal == nullptr) return E_FAIL;
  ComPtr<IEMSDataObject> data;
  if (FAILED(DataObjectFromText(View(newVal), &data)) || !data) return E_FAIL;
  return put_BodyObject(data.get());
}

// ---------------------------------------------------------------- text and HTML bodies
HRESULT MessageParser::DecodedBodyOfSubtype(LONG subtype, LONG codePage, BSTR* pVal) {
  ComPtr<IEMSMimePart> part;
  if (FAILED(FindPartBySubType(subtype, part.put())) || !part) return S_FALSE;
  part->put_DefaultCodePage(codePage);
  part->get_DecodedBody(pVal);
  return S_OK;
}

// A plain body is read in the text code page; a text part is decoded with
// the default code page (not the text code page) as its fallback.
HRESULT MessageParser::GetTextBody(BSTR* pVal) {
  if (!plainBody_) return DecodedBodyOfSubtype(kSubtypePlain, defaultCodePage_, pVal);
  DataBytes bytes;
  return ReturnCodePageText(static_cast<UINT>(textCodePage_), SpanOf(plainBody_.get(), &bytes), pVal);
}

HRESULT MessageParser::GetHTMLBody(BSTR* pVal) {
  if (plainBody_) return S_FALSE;  // a plain message has no HTML body
  return DecodedBodyOfSubtype(kSubtypeHtml, htmlCodePage_, pVal);
}

HRESULT MessageParser::PutTextBody(BSTR newVal) {
  return ReplaceBodyText(newVal, kSubtypePlain, "text/plain", textCodePage_, textCodePage_, textEncoding_);
}

// An existing HTML part is re-encoded with the text code page, not the HTML
// code page; only a new HTML part gets the HTML code page.
HRESULT MessageParser::PutHTMLBody(BSTR newVal) {
  return ReplaceBodyText(newVal, kSubtypeHtml, "text/html", textCodePage_, htmlCodePage_, htmlEncoding_);
}

// Sets the body part of `subtype`, making it when there is none: a plain
// message becomes a single-part message holding only the new text (the old
// plain body is dropped), and a root of another kind becomes multipart
// "alternative" with the new part appended. A part that cannot be made
// leaves the message as it is, with S_OK.
HRESULT MessageParser::ReplaceBodyText(BSTR value, LONG subtype, std::string_view contentType,
                                       LONG existingCodePage, LONG newCodePage, LONG newEncoding) {
  if (!plainBody_) {
    ComPtr<IEMSMimePart> existing;
    if (SUCCEEDED(FindPartBySubType(subtype, existing.put())) && existing) {
      existing->put_DefaultCodePage(existingCodePage);
      existing->put_DecodedBody(value);
      return S_OK;
    }
  }
  ComPtr<IEMSMimePart> part;
  if (FAILED(CreateClassInstance(CLSID_EMSMimePart, &part))) return S_OK;
  Bstr versionName = FixedName("MIME-Version");
  ComPtr<IEMSMessageParameter> version;
  if (headers_.get()->CreateParameter(versionName.get(), version.put()) == S_OK && version) {
    Bstr one = FixedName("1.0");
    version->put_UnfoldedData(one.get());  // an existing field is left as it is
  }
  if (!CreateContentType(part.get(), contentType)) return S_OK;
  part->put_DefaultCodePage(newCodePage);
  part->put_DefaultEncoding(newEncoding);
  part->put_DecodedBody(value);
  if (plainBody_) {
    root_.Reset(part);
    plainBody_ = nullptr;
    return S_OK;
  }
  if (!root_) {
    root_.Reset(part);
    return S_OK;
  }
  LONG type = kTypeText;
  LONG rootSubtype = kSubtypePlain;
  TypeCodesOf(root_->FindField("Content-Type"), &type, &rootSubtype);
  if (type != kTypeMultipart) root_.get()->ConvertToMultipart(kSubtypeAlternative);
  ComPtr<IEMSMimeParts> children;
  if (SUCCEEDED(root_.get()->get_MimeParts(children.put())) && children) children->AddPart(part.get());
  return S_OK;
}

}  // namespace pv

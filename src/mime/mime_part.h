// EMSMimePart: one MIME entity. A header list, a body held as a span of a
// shared byte buffer (never copied), and an ordered list of child parts.
//
// The part's operations are spread over files by concern:
//   mime_part.cpp          state, properties, parsing entry points
//   mime_part_parse.cpp    parsing a span into a tree (PartTreeParser)
//   mime_part_assemble.cpp writing a tree back into bytes (PartTreeWriter)
//   mime_part_search.cpp   header access, searches, restructuring
//   mime_part_content.cpp  attachments, decoded content, content types
//
// Nesting depth is the input's to choose, so nothing here recurses once per
// level: parsing, writing and searching walk the tree with work lists of
// their own.
#ifndef PARCELVANE_SRC_MIME_MIME_PART_H
#define PARCELVANE_SRC_MIME_MIME_PART_H

#include "src/com/com_object.h"
#include "src/mime/part_access.h"
#include "src/com/stored_property.h"

namespace pv {

class MimePart final : public ComObject<MimePart, IEMSMimePart>, public PartAccess {
 public:
  explicit MimePart(IUnknown* outer);
  // Makes the header list and the child list.
  HRESULT FinalConstruct() override;

  // IEMSMimePart in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParsePartObject(IEMSDataObject* pObject);
  HRESULT PutBodyObject(IEMSDataObject* pVal);
  HRESULT GetBodyObject(IEMSDataObject** ppVal);
  HRESULT GetHeaders(IEMSMessageParameters** ppVal);
  HRESULT PutHeaders(IEMSMessageParameters* pVal);
  HRESULT GetMimeParts(IEMSMimeParts** ppVal);
  HRESULT PutMimeParts(IEMSMimeParts* pVal);
  HRESULT DoAssemblePartObject(IEMSDataObject** ppVal);
  HRESULT DoCreateHeader(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoFindHeader(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoRemovePart(IEMSMimePart* pPart);
  HRESULT DoFindPart(BSTR bszCntType, LONG nLevel, IEMSMimePart** ppPart);
  HRESULT DoFindParentPart(IEMSMimePart* pPart, IEMSMimePart** ppPart);
  HRESULT DoFindPartBySubType(LONG nSubType, IEMSMimePart** ppPart);
  HRESULT DoConvertToMultipart(LONG nSubType);
  HRESULT DoCreateAttach(BSTR bszName, IEMSDataObject* pObject, LONG bEmbedded, BSTR bszContentId,
                         BSTR bszContentLoc, BSTR bszContentType);
  HRESULT PutDecodedBinary(IEMSDataObject* pVal);
  HRESULT GetDecodedBinary(IEMSDataObject** ppVal);
  HRESULT PutDecodedBody(BSTR newVal);
  HRESULT GetDecodedBody(BSTR* pVal);
  HRESULT GetAttachName(BSTR* pVal);
  HRESULT GetMimeType(LONG* pVal);
  HRESULT GetMimeSubType(LONG* pVal);
  HRESULT GetMimeContentTypeString(BSTR* pVal);
  // Properties that only store a number and read it back.
  PV_STORED_PROPERTY(LONG, DefaultCodePage, defaultCodePage_)
  PV_STORED_PROPERTY(LONG, DefaultEncoding, defaultEncoding_)
  PV_STORED_PROPERTY(LONG, DefaultHeaderEncoding, defaultHeaderEncoding_)
  PV_STORED_PROPERTY(LONG, IsAttachPart, attach_)

  // ---------------------------------------------------------------- the library's own entry points
  IEMSDataObject* body() const { return body_.get(); }
  IEMSMessageParameters* headers() const { return headers_.get(); }
  // The header list, as the library works on it (the part always has one).
  FieldListAccess& fields() const { return *headers_.access(); }
  // The child list, made on first use: a leaf of a parsed tree has none
  // until something asks for it. Throws std::bad_alloc.
  IEMSMimeParts* parts();
  PartListAccess& partList() { return *partListHolder().access(); }
  const PartListRef& partListHolder() {
    parts();
    return parts_;
  }
  // The child list if there is one yet (no list: no children).
  PartListAccess* partListIfAny() const { return parts_.access(); }
  // How many children it has.
  LONG childCount() const { return parts_ ? parts_->Count() : 0; }
  LONG defaultCodePage() const { return defaultCodePage_; }
  LONG defaultEncoding() const { return defaultEncoding_; }
  LONG attachFlag() const { return attach_; }

  void SetBody(ComPtr<IEMSDataObject> body) { body_ = std::move(body); }
  void SetAttachFlag() { attach_ = 1; }
  // The code page and transfer encoding that the splitter hands every child.
  void InheritDefaults(const MimePart& parent) {
    defaultCodePage_ = parent.defaultCodePage_;
    defaultEncoding_ = parent.defaultEncoding_;
  }

  // AssemblePartObject and the BodyObject getter as bytes: the part's
  // header block (when `withHeaders`), then its body as the getter gives
  // it. `hasBody` tells whether there was a body at all.
  HRESULT WriteTo(bool withHeaders, std::string* out, bool* hasBody);

  // ---------------------------------------------------------------- as PartAccess
  FieldRef FindField(std::string_view ansiName) override { return headers_->Find(ansiName); }
  MimePart* OwnPart() override { return this; }

 private:
  // The body store of BodyObject put, after the new body is held.
  HRESULT StoreBody(IEMSDataObject* body);

  ComPtr<IEMSDataObject> body_;
  FieldListRef headers_;
  PartListRef parts_;
  LONG defaultCodePage_;
  LONG defaultEncoding_ = 0;
  LONG defaultHeaderEncoding_ = 3;  // automatic
  LONG attach_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_MIME_PART_H

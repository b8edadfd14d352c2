// EMSMessageParser: one Internet mail message. It holds the buffer it was
// parsed from, the message's own header fields, and either a root MIME part
// (a MIME message) or a plain body (a non-MIME message); it offers header
// shortcuts, text and HTML bodies, attachments, and assembles itself back
// into octets.
//
// The operations live in several files by concern:
//   message_parser.cpp           data model, reset, plain accessors
//   message_parser_parse.cpp     parse, header split, uuencode conversion
//   message_parser_headers.cpp   header shortcuts
//   message_parser_bodies.cpp    bodies, attachments, part-tree forwards
//   message_parser_assemble.cpp  assembly
//
// Parts, part lists and header lists are other classes: the message makes
// them through the class table and calls them through their interfaces, so
// that objects a caller hands in (of any implementation) work the same.
#ifndef PARCELVANE_SRC_MESSAGE_MESSAGE_PARSER_H
#define PARCELVANE_SRC_MESSAGE_MESSAGE_PARSER_H

#include <string>
#include <string_view>

#include "src/headers/field_access.h"
#include "src/headers/header_charset.h"
#include "src/mime/part_access.h"
#include "src/mime/transfer_codecs.h"
#include "src/com/com_object.h"
#include "src/com/stored_property.h"

namespace pv {

class MessageParser final : public ComObject<MessageParser, IEMSMessageParser> {
 public:
  explicit MessageParser(IUnknown* outer);
  // Makes the header list, then resets as InitNew does.
  HRESULT FinalConstruct() override;

  // IEMSMessageParser in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoInitNew();
  HRESULT DoParse();
  HRESULT DoParseObject(IEMSDataObject* pObject);
  HRESULT DoAssembleObject(IEMSDataObject** ppVal);
  HRESULT DoCreateHeader(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoCreateMimeHeader(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoFindHeader(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoFindMimeHeader(BSTR bszName, IEMSMessageParameter** ppVal);
  HRESULT DoAddPart(LONG nPrefSubType, IEMSMimePart* pPart);
  HRESULT DoRemovePart(IEMSMimePart* pPart);
  HRESULT DoFindPart(BSTR bszCntType, LONG nLevel, IEMSMimePart** ppPart);
  HRESULT DoFindParentPart(IEMSMimePart* pPart, IEMSMimePart** ppPart);
  HRESULT DoConvertToMultipart(LONG nSubType);
  HRESULT DoAddAttach(BSTR bszName, IEMSDataObject* pObject);
  HRESULT DoIsMimeMessage();
  HRESULT GetSize(ULONG* pVal);
  HRESULT PutFullMessage(BSTR newVal);
  HRESULT GetFullMessage(BSTR* pVal);
  HRESULT PutSubject(BSTR newVal);
  HRESULT PutSenderName(BSTR newVal);
  HRESULT GetSenderName(BSTR* pVal);
  HRESULT PutSenderEmail(BSTR newVal);
  HRESULT GetSenderEmail(BSTR* pVal);
  HRESULT PutRecipientName(BSTR newVal);
  HRESULT PutRecipientEmail(BSTR newVal);
  HRESULT PutHeaderString(BSTR bszHeader, BSTR bszValue);
  HRESULT PutBody(BSTR newVal);
  HRESULT GetBody(BSTR* pVal);
  HRESULT PutTextBody(BSTR newVal);
  HRESULT GetTextBody(BSTR* pVal);
  HRESULT PutHTMLBody(BSTR newVal);
  HRESULT GetHTMLBody(BSTR* pVal);
  HRESULT PutAllHeadersString(BSTR newVal);
  HRESULT GetAllHeadersString(BSTR* pVal);
  HRESULT PutStoredMessageObject(IEMSDataObject* pVal);
  HRESULT GetStoredMessageObject(IEMSDataObject** ppVal);
  HRESULT PutBodyObject(IEMSDataObject* pVal);
  HRESULT GetBodyObject(IEMSDataObject** ppVal);
  HRESULT PutAllHeaders(IEMSMessageParameters* pVal);
  HRESULT GetAllHeaders(IEMSMessageParameters** ppVal);
  HRESULT PutHeaders(IEMSMessageParameters* pVal);
  HRESULT GetHeaders(IEMSMessageParameters** ppVal);
  HRESULT PutMimeHeaders(IEMSMessageParameters* pVal);
  HRESULT PutMimePart(IEMSMimePart* pVal);
  // Hand-written: E_FAIL for a message without parts comes first, and a missing result place is allowed.
  HRESULT STDMETHODCALLTYPE FindPartBySubType(LONG nSubType, IEMSMimePart** ppPart) override;
  // Hand-written: a missing result place is E_INVALIDARG.
  HRESULT STDMETHODCALLTYPE get_Subject(BSTR* pVal) override;
  // Hand-written: a missing result place is E_INVALIDARG.
  HRESULT STDMETHODCALLTYPE get_RecipientName(BSTR* pVal) override;
  // Hand-written: a missing result place is E_INVALIDARG.
  HRESULT STDMETHODCALLTYPE get_RecipientEmail(BSTR* pVal) override;
  // Hand-written: a missing result place is allowed (S_OK, nothing written).
  HRESULT STDMETHODCALLTYPE get_HeaderString(BSTR bszHeader, BSTR* pVal) override;
  // Hand-written: E_FAIL without a root part comes first; the root part's own get answers the rest.
  HRESULT STDMETHODCALLTYPE get_MimeHeaders(IEMSMessageParameters** ppVal) override;
  // Hand-written: E_FAIL without a root part comes first, and a missing result place gives S_OK.
  HRESULT STDMETHODCALLTYPE get_MimePart(IEMSMimePart** ppVal) override;
  // Hand-written: S_FALSE for a plain message comes first, and a missing result place is allowed.
  HRESULT STDMETHODCALLTYPE get_AttachParts(IEMSMimeParts** ppVal) override;
  // Properties that only store a number and read it back.
  PV_STORED_PROPERTY(LONG, DefaultCodePage, defaultCodePage_)
  PV_STORED_PROPERTY(LONG, DefaultEncoding, defaultEncoding_)
  PV_STORED_PROPERTY(LONG, TextCodePage, textCodePage_)
  PV_STORED_PROPERTY(LONG, HtmlCodePage, htmlCodePage_)
  PV_STORED_PROPERTY(LONG, TextEncoding, textEncoding_)
  PV_STORED_PROPERTY(LONG, HtmlEncoding, htmlEncoding_)
  PV_STORED_PROPERTY(LONG, AttachEncoding, attachEncoding_)
  PV_STORED_PROPERTY(LONG, AttachHeaderEncoding, attachHeaderEncoding_)

  // ---------------------------------------------------------------- the library's own entry points
  // Moves every field whose name begins with "Content-" from the header list
  // to the root part's list, making the root part when there is such a
  // field. Nothing happens when the MIME list or the root part cannot be made.
  void SplitMimeHeaders();

  // Scans a plain text for uuencoded blocks. When at least one is found,
  // `parts` receives a new list: first a "text/plain" part holding the text
  // around the blocks, then one attachment part per block. False (and
  // `parts` untouched) when nothing was found or the parts cannot be made.
  bool ConvertUuencodedBlocks(IEMSDataObject* text, ComPtr<IEMSMimeParts>* parts);

  // Converts the text leaves of a part tree in place: each text part that
  // holds blocks is replaced by its text part, and its attachments are
  // appended to its parent's list. True when anything changed.
  bool ConvertUuencodedInTree(IEMSMimePart* part, bool isRoot);

  bool parsed() const { return parsed_ != 0; }
  // The maximum number of conversions one parse makes; see ParseObject.
  static constexpr int kMaxConversionRounds = 8;

 private:
  // Steps of ParseObject up to the uuencode conversion: reset unless the
  // object is already the stored message, split the header block, store the
  // body and, when `convert` is set, convert uuencoded blocks.
  // `*converted` tells whether the message must be assembled and parsed again.
  HRESULT ParseOnce(IEMSDataObject* object, bool convert, bool* converted);
  // Turns the parts of a converted plain body into the root part:
  // "MIME-Version: 1.0" and a "multipart/mixed" root holding the parts.
  HRESULT MakeMixedRoot(IEMSMimeParts* parts);
  // The root part's "Content-Type" type and subtype codes, text/plain when
  // there is no root part, no such field or the field has no content state.
  void RootContentCodes(LONG* type, LONG* subtype);
  // TextBody put and HTMLBody put (throws std::bad_alloc: run inside Guard).
  HRESULT ReplaceBodyText(BSTR value, LONG subtype, std::string_view contentType, LONG existingCodePage,
                          LONG newCodePage, LONG newEncoding);
  // TextBody get and HTMLBody get of a MIME message.
  HRESULT DecodedBodyOfSubtype(LONG subtype, LONG codePage, BSTR* pVal);
  // The shared sequence of the four mailbox setters (PutMailboxPart throws
  // std::bad_alloc: run inside Guard) and getters.
  HRESULT PutMailboxPart(std::string_view fieldName, BSTR value, bool setsName);
  HRESULT GetMailboxPart(std::string_view fieldName, bool getsName, BSTR* pVal);
  // Removes from the header list every field named like one of
  // `mimeList`'s fields (RemoveByName for each of them).
  void RemoveMimeNames(IEMSMessageParameters* mimeList);
  // The parse of the header block and SplitMimeHeaders in one, on the
  // library's own list; false, with nothing done, when it is not one.
  bool ParseOwnHeaderBlock(std::string_view block);
  // The assembled octets: header text, then the plain body or the root part.
  void AssembleBytes(std::string* out);

  LONG parsed_ = 0;
  LONG defaultCodePage_;
  LONG textCodePage_;
  LONG htmlCodePage_;
  // One number for two readers: the header list takes it as a header encoding
  // (3: automatic) and the root part as a transfer encoding (3: automatic).
  LONG defaultEncoding_ = kTransferAutomatic;
  LONG textEncoding_ = kTransferAutomatic;
  LONG htmlEncoding_ = kTransferAutomatic;
  LONG attachHeaderEncoding_ = kHeaderEncodingAuto;
  LONG attachEncoding_ = kTransferBase64;
  ComPtr<IEMSDataObject> stored_;
  ComPtr<IEMSDataObject> plainBody_;
  FieldListRef headers_;
  PartRef root_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MESSAGE_MESSAGE_PARSER_H

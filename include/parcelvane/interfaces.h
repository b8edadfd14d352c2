// The interfaces of parcelvane.
//
// Each interface is written once, as a member list: one line per operation
// in slot order, X(kind, name, (parameters), optional). `kind` is METHOD,
// GET (a property get, spelt get_Name) or PUT (a property put, spelt
// put_Name); `optional` is the number of trailing parameters that a
// late-bound caller may leave out (they default to 0, or to the text "0"
// for strings). The same list declares the C++ interface below and the
// late-binding description inside the library, so the two cannot drift.
#ifndef PARCELVANE_INTERFACES_H
#define PARCELVANE_INTERFACES_H

#include "parcelvane/platform.h"

struct IEMSDataObject;
struct IEMSHeaderCharset;
struct IEMSHeaderMailbox;
struct IEMSHeaderMailboxes;
struct IEMSMessageParameter;
struct IEMSMessageParameters;
struct IEMSMessageParser;
struct IEMSMimeAttribute;
struct IEMSMimeAttributes;
struct IEMSMimePart;
struct IEMSMimePartDecoder;
struct IEMSMimePartEncoder;
struct IEMSMimeParts;
struct IEMSContentType;
struct IEMSContentDisposition;

#define PV_MEMBER_NAME_METHOD(name) name
#define PV_MEMBER_NAME_GET(name) get_##name
#define PV_MEMBER_NAME_PUT(name) put_##name
#define PV_DECLARE_MEMBER(kind, name, params, optional) \
  virtual HRESULT STDMETHODCALLTYPE PV_MEMBER_NAME_##kind(name) params = 0;

// The lists are data, and their parameter lists are C++ declarations that
// the formatter would read as expressions: they keep this layout.
// clang-format off
// ------------------------------------------------------------------ data buffers
#define PV_MEMBERS_IEMSDataObject(X)                             \
  X(METHOD, Clone, (IEMSDataObject** ppVal), 0)                  \
  X(METHOD, CopyFrom, (IEMSDataObject* pData), 0)                \
  X(METHOD, CreateDataArray, (VARIANT vData, LONG nCodePage), 1) \
  X(METHOD, CreateEmptyData, (ULONG nSize), 0)                   \
  X(METHOD, CreateDataFromFile, (BSTR bszFileName), 0)           \
  X(METHOD, ExtractBlockAsData, (IEMSDataObject** ppVal), 0)     \
  X(GET, Data, (VARIANT* pVal), 0)                               \
  X(PUT, Data, (VARIANT newVal), 0)                              \
  X(GET, DataSize, (ULONG* pVal), 0)                             \
  X(GET, Position, (ULONG* pVal), 0)                             \
  X(PUT, Position, (ULONG newVal), 0)                            \
  X(GET, Length, (ULONG* pVal), 0)                               \
  X(PUT, Length, (ULONG newVal), 0)

// ------------------------------------------------------------------ header text encoding
#define PV_MEMBERS_IEMSHeaderCharset(X)                      \
  X(METHOD, ParseHeader, (BSTR bszVal, BSTR* pVal), 0)       \
  X(METHOD, AssembleHeader, (BSTR bszVal, BSTR* pVal), 0)    \
  X(METHOD, CharsetToCodePage, (BSTR bszVal, LONG* pVal), 0) \
  X(METHOD, CodePageToCharset, (LONG nVal, BSTR* pVal), 0)   \
  X(PUT, HeaderName, (BSTR newVal), 0)                       \
  X(PUT, HeaderCodePage, (LONG newVal), 0)                   \
  X(GET, HeaderCodePage, (LONG* pVal), 0)                    \
  X(PUT, DefaultCodePage, (LONG newVal), 0)                  \
  X(GET, DefaultCodePage, (LONG* pVal), 0)                   \
  X(PUT, DefaultEncoding, (LONG newVal), 0)                  \
  X(GET, DefaultEncoding, (LONG* pVal), 0)

// ------------------------------------------------------------------ header parameters
#define PV_MEMBERS_IEMSMimeAttribute(X)            \
  X(METHOD, ParseAttribute, (BSTR bszVal), 0)      \
  X(METHOD, AssembleAttribute, (BSTR* pVal), 0)    \
  X(METHOD, Clone, (IEMSMimeAttribute** ppVal), 0) \
  X(GET, Name, (BSTR* pVal), 0)                    \
  X(PUT, Name, (BSTR newVal), 0)                   \
  X(GET, RawValue, (BSTR* pVal), 0)                \
  X(PUT, RawValue, (BSTR newVal), 0)               \
  X(GET, DecodedValue, (BSTR* pVal), 0)            \
  X(PUT, DecodedValue, (BSTR newVal), 0)           \
  X(PUT, CodePage, (LONG newVal), 0)               \
  X(GET, CodePage, (LONG* pVal), 0)                \
  X(PUT, Encoding, (LONG newVal), 0)               \
  X(GET, Encoding, (LONG* pVal), 0)

#define PV_MEMBERS_IEMSMimeAttributes(X)                                   \
  X(METHOD, ParseAttributes, (BSTR bszVal), 0)                             \
  X(METHOD, AssembleAttributes, (BSTR* pVal), 0)                           \
  X(METHOD, AppendAttributes, (IEMSMimeAttributes* pVal), 0)               \
  X(METHOD, CreateAttribute, (BSTR bszName, IEMSMimeAttribute** ppVal), 0) \
  X(METHOD, AddAttribute, (IEMSMimeAttribute* pVal), 0)                    \
  X(METHOD, ReplaceAttribute, (IEMSMimeAttribute* pVal), 0)                \
  X(METHOD, FindAttribute, (BSTR bszName, IEMSMimeAttribute** ppVal), 0)   \
  X(METHOD, RemoveAttribute, (BSTR bszName), 0)                            \
  X(METHOD, RemoveAll, (), 0)                                              \
  X(METHOD, Clone, (IEMSMimeAttributes** ppVal), 0)                        \
  X(GET, Attribute, (LONG nIdx, IEMSMimeAttribute** ppVal), 0)             \
  X(GET, AttributesCount, (LONG* pVal), 0)

// ------------------------------------------------------------------ address lists
#define PV_MEMBERS_IEMSHeaderMailbox(X)       \
  X(METHOD, SplitString, (BSTR bszVal), 0)    \
  X(METHOD, ParseMailbox, (BSTR bszVal), 0)   \
  X(METHOD, AssembleMailbox, (BSTR* pVal), 0) \
  X(GET, Address, (BSTR* pVal), 0)            \
  X(PUT, Address, (BSTR newVal), 0)           \
  X(GET, Name, (BSTR* pVal), 0)               \
  X(PUT, Name, (BSTR newVal), 0)              \
  X(GET, DefaultCodePage, (LONG* pVal), 0)    \
  X(PUT, DefaultCodePage, (LONG newVal), 0)   \
  X(GET, DefaultEncoding, (LONG* pVal), 0)    \
  X(PUT, DefaultEncoding, (LONG newVal), 0)

#define PV_MEMBERS_IEMSHeaderMailboxes(X)                            \
  X(METHOD, ParseMailboxes, (BSTR bszVal, LONG bEncoded), 0)         \
  X(METHOD, AssembleMailboxes, (BSTR* pVal), 0)                      \
  X(METHOD, RemoveAll, (), 0)                                        \
  X(METHOD, RemoveMailbox, (LONG nIdx), 0)                           \
  X(GET, Count, (LONG* pVal), 0)                                     \
  X(GET, MailboxName, (LONG nIdx, BSTR* pVal), 0)                    \
  X(GET, MailboxAddress, (LONG nIdx, BSTR* pVal), 0)                 \
  X(PUT, MailboxData, (LONG nIdx, BSTR bszName, BSTR bszAddress), 0) \
  X(PUT, DecodedMailbox, (LONG nIdx, BSTR newVal), 0)                \
  X(GET, DecodedMailbox, (LONG nIdx, BSTR* pVal), 0)                 \
  X(GET, DecodedMailboxes, (BSTR* pVal), 0)                          \
  X(GET, EncodedMailbox, (LONG nIdx, BSTR* pVal), 0)                 \
  X(PUT, EncodedMailbox, (LONG nIdx, BSTR newVal), 0)                \
  X(GET, DefaultCodePage, (LONG* pVal), 0)                           \
  X(PUT, DefaultCodePage, (LONG newVal), 0)                          \
  X(GET, DefaultEncoding, (LONG* pVal), 0)                           \
  X(PUT, DefaultEncoding, (LONG newVal), 0)

// ------------------------------------------------------------------ header fields
#define PV_MEMBERS_IEMSMessageParameter(X)                                 \
  X(METHOD, ParseHeader, (BSTR bszVal), 0)                                 \
  X(METHOD, AddChainHeader, (IEMSMessageParameter* pVal), 0)               \
  X(METHOD, AssembleHeader, (BSTR* pVal), 0)                               \
  X(METHOD, FindAttribute, (BSTR bszName, IEMSMimeAttribute** ppVal), 0)   \
  X(METHOD, CreateAttribute, (BSTR bszName, IEMSMimeAttribute** ppVal), 0) \
  X(METHOD, RemoveAttribute, (BSTR bszName), 0)                            \
  X(METHOD, Clone, (IEMSMessageParameter** ppVal), 0)                      \
  X(GET, Name, (BSTR* pVal), 0)                                            \
  X(PUT, Name, (BSTR newVal), 0)                                           \
  X(GET, RawData, (BSTR* pVal), 0)                                         \
  X(PUT, RawData, (BSTR newVal), 0)                                        \
  X(GET, UnfoldedData, (BSTR* pVal), 0)                                    \
  X(PUT, UnfoldedData, (BSTR newVal), 0)                                   \
  X(GET, DecodedData, (BSTR* pVal), 0)                                     \
  X(PUT, DecodedData, (BSTR newVal), 0)                                    \
  X(GET, Attributes, (IEMSMimeAttributes** ppVal), 0)                      \
  X(PUT, Attributes, (IEMSMimeAttributes* pVal), 0)                        \
  X(GET, HeaderMailbox, (IEMSHeaderMailbox** ppVal), 0)                    \
  X(PUT, HeaderMailbox, (IEMSHeaderMailbox* pVal), 0)                      \
  X(GET, HeaderMailboxes, (IEMSHeaderMailboxes** ppVal), 0)                \
  X(PUT, HeaderMailboxes, (IEMSHeaderMailboxes* pVal), 0)                  \
  X(GET, HeaderCharset, (IEMSHeaderCharset** ppVal), 0)                    \
  X(PUT, DefaultCodePage, (LONG newVal), 0)                                \
  X(GET, DefaultCodePage, (LONG* pVal), 0)                                 \
  X(PUT, DefaultEncoding, (LONG newVal), 0)                                \
  X(GET, DefaultEncoding, (LONG* pVal), 0)

#define PV_MEMBERS_IEMSMessageParameters(X)                                   \
  X(METHOD, ParseParameters, (BSTR bszVal), 0)                                \
  X(METHOD, ParseParametersObject, (IEMSDataObject* pVal), 0)                 \
  X(METHOD, AssembleParameters, (BSTR* pVal), 0)                              \
  X(METHOD, AssembleParametersObject, (IEMSDataObject** ppVal), 0)            \
  X(METHOD, AppendParameters, (IEMSMessageParameters* pVal), 0)               \
  X(METHOD, Clone, (IEMSMessageParameters** ppVal), 0)                        \
  X(METHOD, CreateParameter, (BSTR bszName, IEMSMessageParameter** ppVal), 0) \
  X(METHOD, AddParameter, (IEMSMessageParameter* pVal), 0)                    \
  X(METHOD, ReplaceParameter, (IEMSMessageParameter* pVal), 0)                \
  X(METHOD, FindParameter, (BSTR bszName, IEMSMessageParameter** ppVal), 0)   \
  X(METHOD, RemoveAll, (), 0)                                                 \
  X(METHOD, RemoveByName, (BSTR bszName), 0)                                  \
  X(PUT, Parameter, (LONG nIdx, IEMSMessageParameter* pVal), 0)               \
  X(GET, Parameter, (LONG nIdx, IEMSMessageParameter** ppVal), 0)             \
  X(GET, ParamCount, (LONG* pVal), 0)                                         \
  X(PUT, DefaultCodePage, (LONG newVal), 0)                                   \
  X(GET, DefaultCodePage, (LONG* pVal), 0)                                    \
  X(PUT, DefaultEncoding, (LONG newVal), 0)                                   \
  X(GET, DefaultEncoding, (LONG* pVal), 0)

// The content-type and disposition state of a header field. These two are
// reached through QueryInterface on any header field; they have no
// late-binding description.
#define PV_MEMBERS_IEMSContentType(X)                \
  X(METHOD, ParseContentType, (BSTR bszVal), 0)      \
  X(METHOD, AssembleContentType, (BSTR* pVal), 0)    \
  X(METHOD, CreateBoundary, (LONG n, BSTR* pVal), 0) \
  X(GET, ContentType, (BSTR* pVal), 0)               \
  X(PUT, ContentType, (BSTR newVal), 0)              \
  X(GET, MimeType, (LONG* pVal), 0)                  \
  X(PUT, MimeType, (LONG newVal), 0)                 \
  X(GET, MimeTypeName, (BSTR* pVal), 0)              \
  X(PUT, MimeTypeName, (BSTR newVal), 0)             \
  X(GET, MimeSubType, (LONG* pVal), 0)               \
  X(PUT, MimeSubType, (LONG newVal), 0)              \
  X(GET, MimeSubTypeName, (BSTR* pVal), 0)           \
  X(PUT, MimeSubTypeName, (BSTR newVal), 0)          \
  X(GET, Boundary, (BSTR* pVal), 0)                  \
  X(PUT, Boundary, (BSTR newVal), 0)

#define PV_MEMBERS_IEMSContentDisposition(X)      \
  X(METHOD, ParseDisposition, (BSTR bszVal), 0)   \
  X(METHOD, AssembleDisposition, (BSTR* pVal), 0) \
  X(GET, DispositionType, (BSTR* pVal), 0)        \
  X(PUT, DispositionType, (BSTR newVal), 0)       \
  X(GET, FileName, (BSTR* pVal), 0)               \
  X(PUT, FileName, (BSTR newVal), 0)

// ------------------------------------------------------------------ MIME part tree
#define PV_MEMBERS_IEMSMimePart(X)                                              \
  X(METHOD, ParsePartObject, (IEMSDataObject* pObject), 0)                      \
  X(PUT, BodyObject, (IEMSDataObject* pVal), 0)                                 \
  X(GET, BodyObject, (IEMSDataObject** ppVal), 0)                               \
  X(GET, Headers, (IEMSMessageParameters** ppVal), 0)                           \
  X(PUT, Headers, (IEMSMessageParameters* pVal), 0)                             \
  X(GET, MimeParts, (IEMSMimeParts** ppVal), 0)                                 \
  X(PUT, MimeParts, (IEMSMimeParts* pVal), 0)                                   \
  X(GET, DefaultCodePage, (LONG* pVal), 0)                                      \
  X(PUT, DefaultCodePage, (LONG newVal), 0)                                     \
  X(GET, DefaultEncoding, (LONG* pVal), 0)                                      \
  X(PUT, DefaultEncoding, (LONG newVal), 0)                                     \
  X(GET, DefaultHeaderEncoding, (LONG* pVal), 0)                                \
  X(PUT, DefaultHeaderEncoding, (LONG newVal), 0)                               \
  X(METHOD, AssemblePartObject, (IEMSDataObject** ppVal), 0)                    \
  X(METHOD, CreateHeader, (BSTR bszName, IEMSMessageParameter** ppVal), 0)      \
  X(METHOD, FindHeader, (BSTR bszName, IEMSMessageParameter** ppVal), 0)        \
  X(METHOD, RemovePart, (IEMSMimePart* pPart), 0)                               \
  X(METHOD, FindPart, (BSTR bszCntType, LONG nLevel, IEMSMimePart** ppPart), 0) \
  X(METHOD, FindParentPart, (IEMSMimePart* pPart, IEMSMimePart** ppPart), 0)    \
  X(METHOD, FindPartBySubType, (LONG nSubType, IEMSMimePart** ppPart), 0)       \
  X(METHOD, ConvertToMultipart, (LONG nSubType), 0)                             \
  X(METHOD, CreateAttach,                                                       \
    (BSTR bszName, IEMSDataObject* pObject, LONG bEmbedded, BSTR bszContentId,  \
     BSTR bszContentLoc, BSTR bszContentType),                                  \
    4)                                                                          \
  X(PUT, DecodedBinary, (IEMSDataObject* pVal), 0)                              \
  X(GET, DecodedBinary, (IEMSDataObject** ppVal), 0)                            \
  X(PUT, DecodedBody, (BSTR newVal), 0)                                         \
  X(GET, DecodedBody, (BSTR* pVal), 0)                                          \
  X(GET, AttachName, (BSTR* pVal), 0)                                           \
  X(GET, MimeType, (LONG* pVal), 0)                                             \
  X(GET, MimeSubType, (LONG* pVal), 0)                                          \
  X(GET, MimeContentTypeString, (BSTR* pVal), 0)                                \
  X(GET, IsAttachPart, (LONG* pVal), 0)                                         \
  X(PUT, IsAttachPart, (LONG newVal), 0)

#define PV_MEMBERS_IEMSMimeParts(X)                  \
  X(METHOD, AddPart, (IEMSMimePart* pVal), 0)        \
  X(METHOD, AppendParts, (IEMSMimeParts* pVal), 0)   \
  X(METHOD, RemovePart, (LONG nIdx), 0)              \
  X(METHOD, RemoveAll, (), 0)                        \
  X(GET, Part, (LONG nIdx, IEMSMimePart** ppVal), 0) \
  X(PUT, Part, (LONG nIdx, IEMSMimePart* pVal), 0)   \
  X(GET, PartsCount, (LONG* pVal), 0)

// ------------------------------------------------------------------ transfer encodings
#define PV_MEMBERS_IEMSMimePartDecoder(X) \
  X(METHOD, DecodePart, (IEMSMimePart* pPart, IEMSDataObject** ppVal), 0)

#define PV_MEMBERS_IEMSMimePartEncoder(X) \
  X(METHOD, EncodePart, (IEMSMimePart* pPart, BSTR bszName), 1)

// ------------------------------------------------------------------ message
#define PV_MEMBERS_IEMSMessageParser(X)                                         \
  X(METHOD, InitNew, (), 0)                                                     \
  X(METHOD, Parse, (), 0)                                                       \
  X(METHOD, ParseObject, (IEMSDataObject* pObject), 0)                          \
  X(METHOD, AssembleObject, (IEMSDataObject** ppVal), 0)                        \
  X(METHOD, CreateHeader, (BSTR bszName, IEMSMessageParameter** ppVal), 0)      \
  X(METHOD, CreateMimeHeader, (BSTR bszName, IEMSMessageParameter** ppVal), 0)  \
  X(METHOD, FindHeader, (BSTR bszName, IEMSMessageParameter** ppVal), 0)        \
  X(METHOD, FindMimeHeader, (BSTR bszName, IEMSMessageParameter** ppVal), 0)    \
  X(METHOD, AddPart, (LONG nPrefSubType, IEMSMimePart* pPart), 0)               \
  X(METHOD, RemovePart, (IEMSMimePart* pPart), 0)                               \
  X(METHOD, FindPart, (BSTR bszCntType, LONG nLevel, IEMSMimePart** ppPart), 0) \
  X(METHOD, FindParentPart, (IEMSMimePart* pPart, IEMSMimePart** ppPart), 0)    \
  X(METHOD, FindPartBySubType, (LONG nSubType, IEMSMimePart** ppPart), 0)       \
  X(METHOD, ConvertToMultipart, (LONG nSubType), 0)                             \
  X(METHOD, AddAttach, (BSTR bszName, IEMSDataObject* pObject), 0)              \
  X(METHOD, IsMimeMessage, (), 0)                                               \
  X(GET, Size, (ULONG* pVal), 0)                                                \
  X(PUT, FullMessage, (BSTR newVal), 0)                                         \
  X(GET, FullMessage, (BSTR* pVal), 0)                                          \
  X(PUT, Subject, (BSTR newVal), 0)                                             \
  X(GET, Subject, (BSTR* pVal), 0)                                              \
  X(PUT, SenderName, (BSTR newVal), 0)                                          \
  X(GET, SenderName, (BSTR* pVal), 0)                                           \
  X(PUT, SenderEmail, (BSTR newVal), 0)                                         \
  X(GET, SenderEmail, (BSTR* pVal), 0)                                          \
  X(PUT, RecipientName, (BSTR newVal), 0)                                       \
  X(GET, RecipientName, (BSTR* pVal), 0)                                        \
  X(PUT, RecipientEmail, (BSTR newVal), 0)                                      \
  X(GET, RecipientEmail, (BSTR* pVal), 0)                                       \
  X(PUT, HeaderString, (BSTR bszHeader, BSTR bszValue), 0)                      \
  X(GET, HeaderString, (BSTR bszHeader, BSTR* pVal), 0)                         \
  X(PUT, Body, (BSTR newVal), 0)                                                \
  X(GET, Body, (BSTR* pVal), 0)                                                 \
  X(PUT, TextBody, (BSTR newVal), 0)                                            \
  X(GET, TextBody, (BSTR* pVal), 0)                                             \
  X(PUT, HTMLBody, (BSTR newVal), 0)                                            \
  X(GET, HTMLBody, (BSTR* pVal), 0)                                             \
  X(PUT, AllHeadersString, (BSTR newVal), 0)                                    \
  X(GET, AllHeadersString, (BSTR* pVal), 0)                                     \
  X(PUT, StoredMessageObject, (IEMSDataObject* pVal), 0)                        \
  X(GET, StoredMessageObject, (IEMSDataObject** ppVal), 0)                      \
  X(PUT, BodyObject, (IEMSDataObject* pVal), 0)                                 \
  X(GET, BodyObject, (IEMSDataObject** ppVal), 0)                               \
  X(PUT, AllHeaders, (IEMSMessageParameters* pVal), 0)                          \
  X(GET, AllHeaders, (IEMSMessageParameters** ppVal), 0)                        \
  X(PUT, Headers, (IEMSMessageParameters* pVal), 0)                             \
  X(GET, Headers, (IEMSMessageParameters** ppVal), 0)                           \
  X(PUT, MimeHeaders, (IEMSMessageParameters* pVal), 0)                         \
  X(GET, MimeHeaders, (IEMSMessageParameters** ppVal), 0)                       \
  X(PUT, MimePart, (IEMSMimePart* pVal), 0)                                     \
  X(GET, MimePart, (IEMSMimePart** ppVal), 0)                                   \
  X(GET, AttachParts, (IEMSMimeParts** ppVal), 0)                               \
  X(PUT, DefaultCodePage, (LONG newVal), 0)                                     \
  X(GET, DefaultCodePage, (LONG* pVal), 0)                                      \
  X(PUT, DefaultEncoding, (LONG newVal), 0)                                     \
  X(GET, DefaultEncoding, (LONG* pVal), 0)                                      \
  X(PUT, TextCodePage, (LONG newVal), 0)                                        \
  X(GET, TextCodePage, (LONG* pVal), 0)                                         \
  X(PUT, HtmlCodePage, (LONG newVal), 0)                                        \
  X(GET, HtmlCodePage, (LONG* pVal), 0)                                         \
  X(PUT, TextEncoding, (LONG newVal), 0)                                        \
  X(GET, TextEncoding, (LONG* pVal), 0)                                         \
  X(PUT, HtmlEncoding, (LONG newVal), 0)                                        \
  X(GET, HtmlEncoding, (LONG* pVal), 0)                                         \
  X(PUT, AttachEncoding, (LONG newVal), 0)                                      \
  X(GET, AttachEncoding, (LONG* pVal), 0)                                       \
  X(PUT, AttachHeaderEncoding, (LONG newVal), 0)                                \
  X(GET, AttachHeaderEncoding, (LONG* pVal), 0)

// ------------------------------------------------------------------ declarations
// Every public interface is dual: it derives from IDispatch. The two
// content-state interfaces derive from IUnknown only.
#define PV_DUAL_INTERFACES(X) \
  X(IEMSDataObject)           \
  X(IEMSHeaderCharset)        \
  X(IEMSHeaderMailbox)        \
  X(IEMSHeaderMailboxes)      \
  X(IEMSMessageParameter)     \
  X(IEMSMessageParameters)    \
  X(IEMSMessageParser)        \
  X(IEMSMimeAttribute)        \
  X(IEMSMimeAttributes)       \
  X(IEMSMimePart)             \
  X(IEMSMimePartDecoder)      \
  X(IEMSMimePartEncoder)      \
  X(IEMSMimeParts)

#define PV_CUSTOM_INTERFACES(X) \
  X(IEMSContentType)            \
  X(IEMSContentDisposition)

// clang-format on

#define PV_DECLARE_DUAL(I)            \
  struct I : public IDispatch {       \
    PV_MEMBERS_##I(PV_DECLARE_MEMBER) \
  };
#define PV_DECLARE_CUSTOM(I)          \
  struct I : public IUnknown {        \
    PV_MEMBERS_##I(PV_DECLARE_MEMBER) \
  };

PV_DUAL_INTERFACES(PV_DECLARE_DUAL)
PV_CUSTOM_INTERFACES(PV_DECLARE_CUSTOM)

#undef PV_DECLARE_DUAL
#undef PV_DECLARE_CUSTOM

#endif  // PARCELVANE_INTERFACES_H

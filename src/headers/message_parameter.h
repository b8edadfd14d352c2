// EMSMessageParameter: one header field. A name and its raw values, one per
// occurrence (a field that occurs several times is chained into one), kept
// folded and still encoded; views of them raw, unfolded and decoded; the
// parameters of "Content-" fields in an attribute list; and the
// content-type and disposition state, reached through IEMSContentType and
// IEMSContentDisposition.
//
// Narrow text is in the ANSI code page. Every value entered through a wide
// operation has passed through that page once, so the narrow entry points
// below pass their text through it too (a no-op where the page keeps every
// byte) and give the same results as the wide operations.
#ifndef PARCELVANE_SRC_HEADERS_MESSAGE_PARAMETER_H
#define PARCELVANE_SRC_HEADERS_MESSAGE_PARAMETER_H

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "src/headers/content_type_codes.h"
#include "src/headers/field_access.h"
#include "src/headers/header_charset.h"
#include "src/platform/strings.h"
#include "src/com/com_object.h"

namespace pv {

class MessageParameter final
    : public ComObject<MessageParameter, IEMSMessageParameter, IEMSContentType, IEMSContentDisposition>,
      public FieldAccess {
 public:
  explicit MessageParameter(IUnknown* outer);

  // IEMSMessageParameter in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseHeader(BSTR bszVal);
  HRESULT DoAddChainHeader(IEMSMessageParameter* pVal);
  HRESULT DoAssembleHeader(BSTR* pVal);
  HRESULT DoFindAttribute(BSTR bszName, IEMSMimeAttribute** ppVal);
  HRESULT DoCreateAttribute(BSTR bszName, IEMSMimeAttribute** ppVal);
  HRESULT DoRemoveAttribute(BSTR bszName);
  HRESULT DoClone(IEMSMessageParameter** ppVal);
  HRESULT GetName(BSTR* pVal);
  HRESULT PutName(BSTR newVal);
  HRESULT GetRawData(BSTR* pVal);
  HRESULT PutRawData(BSTR newVal);
  HRESULT GetUnfoldedData(BSTR* pVal);
  HRESULT PutUnfoldedData(BSTR newVal);
  HRESULT GetDecodedData(BSTR* pVal);
  HRESULT PutDecodedData(BSTR newVal);
  HRESULT GetAttributes(IEMSMimeAttributes** ppVal);
  HRESULT PutAttributes(IEMSMimeAttributes* pVal);
  HRESULT GetHeaderMailbox(IEMSHeaderMailbox** ppVal);
  HRESULT PutHeaderMailbox(IEMSHeaderMailbox* pVal);
  HRESULT GetHeaderMailboxes(IEMSHeaderMailboxes** ppVal);
  HRESULT PutHeaderMailboxes(IEMSHeaderMailboxes* pVal);
  HRESULT GetHeaderCharset(IEMSHeaderCharset** ppVal);
  HRESULT PutDefaultCodePage(LONG newVal);
  HRESULT GetDefaultCodePage(LONG* pVal);
  HRESULT PutDefaultEncoding(LONG newVal);
  HRESULT GetDefaultEncoding(LONG* pVal);
  // IEMSContentType in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseContentType(BSTR bszVal);
  HRESULT DoAssembleContentType(BSTR* pVal);
  HRESULT GetContentType(BSTR* pVal);
  HRESULT PutContentType(BSTR newVal);
  HRESULT GetMimeType(LONG* pVal);
  HRESULT PutMimeType(LONG newVal);
  HRESULT GetMimeTypeName(BSTR* pVal);
  HRESULT PutMimeTypeName(BSTR newVal);
  HRESULT GetMimeSubType(LONG* pVal);
  HRESULT PutMimeSubType(LONG newVal);
  HRESULT GetMimeSubTypeName(BSTR* pVal);
  HRESULT PutMimeSubTypeName(BSTR newVal);
  HRESULT GetBoundary(BSTR* pVal);
  HRESULT PutBoundary(BSTR newVal);
  // Hand-written: a missing result place is allowed (S_OK): the boundary is still set.
  HRESULT STDMETHODCALLTYPE CreateBoundary(LONG n, BSTR* pVal) override;
  // IEMSContentDisposition in plain form: the generated producer calls each of these
  // after its null checks, inside Guard.
  HRESULT DoParseDisposition(BSTR bszVal);
  HRESULT DoAssembleDisposition(BSTR* pVal);
  HRESULT GetDispositionType(BSTR* pVal);
  HRESULT PutDispositionType(BSTR newVal);
  HRESULT GetFileName(BSTR* pVal);
  HRESULT PutFileName(BSTR newVal);

  // ---------------------------------------------------------------- the library's own entry points
  // ParseHeader on narrow text: S_OK, or E_FAIL without a usable colon.
  HRESULT ParseHeaderNarrow(std::string_view ansiText);
  // AssembleHeader as narrow text (without the final conversion to wide).
  HRESULT AssembleHeaderNarrow(std::string* out);
  // RawData as narrow text: the values joined by "\r\n\r\n", then, for a
  // "Content-" field, its assembled parameters; the bytes the interface's
  // wide text gives back in the ANSI page.
  HRESULT RawDataNarrow(std::string* out);
  // ContentType put on narrow text.
  HRESULT SetContentTypeNarrow(std::string_view ansiText);
  // The "boundary" parameter's raw value; E_FAIL when there is none.
  HRESULT BoundaryNarrow(std::string* out);
  // The raw value the "boundary" parameter is written with, which is what
  // the written field reads back as: a raw value that cannot be written as
  // it stands (a line break in it) is first re-encoded, as writing the field
  // does. The assembly cuts a body with this one. E_FAIL without a boundary.
  HRESULT BoundaryAsWritten(std::string* out);
  // Whether the boundary is the one CreateBoundary last made here, not one
  // that came with a parsed value or was set since. Only such a boundary
  // may be made anew when it occurs in what it delimits.
  bool HasGeneratedBoundary() override;
  // CreateBoundary again, with the `n` of the last call: the generator's
  // next value. The new boundary goes to `out`.
  HRESULT RegenerateBoundary(std::string* out) override;

  // ---------------------------------------------------------------- as FieldAccess
  bool NameKey(std::string* key) override;
  std::string AssembledText() override;
  HRESULT Chain(IEMSMessageParameter* other) override { return AddChainHeader(other); }
  bool ContentCodes(LONG* type, LONG* subtype) override {
    *type = content_.typeCode;
    *subtype = content_.subtypeCode;
    return true;
  }
  std::string BoundaryText() override;
  std::string WrittenBoundary() override;
  std::string DispositionTypeText() override { return content_.dispositionType; }
  MessageParameter* OwnField() override { return this; }

  const std::string& name() const { return name_; }
  const std::vector<std::string>& values() const { return values_; }
  bool hasValues() const { return !values_.empty(); }
  // The first raw value, or empty text when there is none.
  std::string_view firstValue() const { return values_.empty() ? std::string_view() : values_.front(); }
  const WString& decodedText() {
    FlushDecode();
    return Extras().decoded;
  }
  // The content-type and disposition state: codes, names, disposition type.
  const ContentState& content() const { return content_; }
  void SetTypeCode(LONG code) { content_.SetTypeCode(code); }
  void SetSubtypeCode(LONG code) { content_.SetSubtypeCode(code); }
  void SetDispositionType(std::string_view type) { content_.dispositionType = std::string(type); }

  // Sets both defaults before anything has been parsed into the field.
  void SetDefaults(LONG codePage, LONG encoding) {
    FlushDecode();
    defaultCodePage_ = codePage;
    defaultEncoding_ = encoding;
  }

  // Chaining in bulk, for the header-list parse: AddChainHeader (same
  // statuses) without its refresh of the decoded text; FinishChaining then
  // brings the decoded text and defaults to where a refresh after every
  // chaining would have left them. Nothing else may change the field in
  // between.
  HRESULT AppendChainDeferred(IEMSMessageParameter* other);
  void FinishChaining();

 private:
  // Narrow text that has already passed through the ANSI code page.
  HRESULT ParseHeaderText(std::string_view text);
  void SetRawDataText(std::string_view text);
  void SetUnfoldedDataText(std::string_view text);
  void ContentTypePut(std::string_view text);
  void ParseContentTypeText(std::string_view text);

  bool IsContentField() const;
  // Leaves the value before the first ";" and gives the rest to the
  // attribute list.
  std::string SplitOffParameters(std::string_view value);
  void AppendRawPieces(std::string_view joined);
  // AddChainHeader without the refresh.
  HRESULT AppendChainPieces(IEMSMessageParameter* other);
  // The attribute list's AssembleAttributes text (empty when it has none),
  // as the interface gives it and as narrow text.
  WString AssembledAttributes();
  std::string AssembledAttributesNarrow();
  // RawData as the interface gives it.
  WString RawDataWide();
  // One line per value: the name, ": " and the value.
  std::string HeaderLines() const;
  std::string ValueLine(const std::string& value) const;
  // What AssembleHeader writes: the first line, the parameters, then the
  // lines of the later values (each beginning with "\r\n").
  void AssembleParts(bool hasParameters, std::string* lines, std::string* laterLines);
  // Decodes the first `count` values into the decoded text, updating the
  // default code page and encoding value by value. The decoding waits until
  // something reads what it changes (FlushDecode): most fields of a parsed
  // message are never decoded.
  void RefreshDecodedText(size_t count);
  void RefreshDecodedText() { RefreshDecodedText(values_.size()); }
  // Runs a waiting decode. Called first by everything that reads or
  // changes the values, the decoded text, the defaults or the charset.
  void FlushDecode() {
    if (pendingDecodes_ != 0) DecodeNow();
  }
  void DecodeNow();
  void DecodeValues(size_t count);
  // The header charset and the attribute list, made on first use; the
  // parameter text of parsed values goes to the list when it is first used.
  HeaderCharset* Charset();
  IEMSMimeAttributes* Attributes();

  HRESULT FindNamedAttribute(const char* name, ComPtr<IEMSMimeAttribute>* out);
  HRESULT SetNamedAttribute(const char* name, BSTR value, bool decoded);

  ComPtr<HeaderCharset> charset_;
  AttributeListRef attributes_;
  // The parameter text that waits for the list. A parse of parameters
  // empties the list first, so only the last one is kept.
  std::string pendingParameters_;
  // Decodes that wait, in order: a parse asks for one and a chaining run
  // for two more. A count of values: the values of a field fit in memory,
  // so in 32 bits.
  uint32_t pendingDecodeCounts_[3] = {0, 0, 0};
  int pendingDecodes_ = 0;
  // The flags sit together: a parsed message holds many fields.
  bool parametersPending_ = false;
  // Whether a caller may hold the charset (then decodes run at once).
  bool charsetShared_ = false;
  // Whether a deferred chaining waits for FinishChaining.
  bool chainPending_ = false;
  std::string name_;
  std::vector<std::string> values_;
  LONG defaultCodePage_;
  LONG defaultEncoding_ = 0;
  ContentState content_;
  // What most fields never need, made on first use: the decoded text, and
  // the last boundary CreateBoundary made with its `n`.
  struct FieldExtras {
    WString decoded;
    std::string generatedBoundary;
    LONG generatedN = 0;
  };
  FieldExtras& Extras() {
    if (!extras_) extras_ = std::make_unique<FieldExtras>();
    return *extras_;
  }
  std::unique_ptr<FieldExtras> extras_;
  // How many values the field held before the last deferred chaining.
  size_t valuesBeforeLastChain_ = 0;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_MESSAGE_PARAMETER_H

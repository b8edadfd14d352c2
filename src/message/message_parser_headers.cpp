// Shortcuts to the message's header fields: creating and finding fields in
// its own list or in the root part's, the subject, the first sender and
// recipient, any field's text, and the whole header block as one string.
// Their statuses differ from one property to the next on purpose.
#include "src/message/message_parser.h"
#include "src/message/message_parser_util.h"
#include "src/platform/codepage.h"

namespace pv {
namespace {

ComPtr<IEMSMessageParameter> FindField(IEMSMessageParameters* list, BSTR name) {
  ComPtr<IEMSMessageParameter> field;
  if (FAILED(list->FindParameter(name, field.put()))) field = nullptr;
  return field;
}

// The field's first mailbox list (the field's HeaderMailboxes), or null.
ComPtr<IEMSHeaderMailboxes> MailboxesOf(IEMSMessageParameter* field) {
  ComPtr<IEMSHeaderMailboxes> mailboxes;
  if (field == nullptr || FAILED(field->get_HeaderMailboxes(mailboxes.put()))) mailboxes = nullptr;
  return mailboxes;
}

}  // namespace

// ---------------------------------------------------------------- fields by name
HRESULT MessageParser::DoCreateHeader(BSTR bszName, IEMSMessageParameter** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  return headers_.get()->CreateParameter(bszName, ppVal);
}

HRESULT MessageParser::DoFindHeader(BSTR bszName, IEMSMessageParameter** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  return headers_.get()->FindParameter(bszName, ppVal);
}

HRESULT MessageParser::DoCreateMimeHeader(BSTR bszName, IEMSMessageParameter** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  if (plainBody_) return E_FAIL;
  ComPtr<IEMSMessageParameters> mime;
  if (FAILED(get_MimeHeaders(mime.put())) || !mime) return E_FAIL;
  return mime->CreateParameter(bszName, ppVal);
}

HRESULT MessageParser::DoFindMimeHeader(BSTR bszName, IEMSMessageParameter** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  if (plainBody_) return E_FAIL;
  ComPtr<IEMSMessageParameters> mime;
  if (FAILED(get_MimeHeaders(mime.put())) || !mime) return E_FAIL;
  return mime->FindParameter(bszName, ppVal);
}

// ---------------------------------------------------------------- subject
HRESULT MessageParser::get_Subject(BSTR* pVal) {
  if (pVal == nullptr) return E_INVALIDARG;
  return Guard([&] {
    Bstr name = FixedName("Subject");
    ComPtr<IEMSMessageParameter> field = FindField(headers_.get(), name.get());
    if (!field) return S_OK;  // nothing written
    field->put_DefaultCodePage(defaultCodePage_);
    field->get_DecodedData(pVal);
    return S_OK;
  });
}

// The field takes the place of an existing "Subject" through
// ReplaceParameter, unlike the mailbox setters.
HRESULT MessageParser::PutSubject(BSTR newVal) {
  Bstr name = FixedName("Subject");
  ComPtr<IEMSMessageParameter> field;
  HRESULT hr = headers_.get()->CreateParameter(name.get(), field.put());
  if (FAILED(hr)) return hr;
  if (!field) return E_FAIL;
  field->put_DefaultCodePage(defaultCodePage_);
  field->put_DecodedData(newVal);
  headers_.get()->ReplaceParameter(field.get());
  return S_OK;
}

// ---------------------------------------------------------------- first sender and recipient
// Only the first mailbox of the field is ever read.
HRESULT MessageParser::GetMailboxPart(std::string_view fieldName, bool getsName, BSTR* pVal) {
  return Guard([&] {
    Bstr name = FixedName(fieldName);
    ComPtr<IEMSHeaderMailboxes> mailboxes = MailboxesOf(FindField(headers_.get(), name.get()).get());
    if (!mailboxes) return S_OK;  // nothing written
    if (getsName) {
      mailboxes->get_MailboxName(0, pVal);
    } else {
      mailboxes->get_MailboxAddress(0, pVal);
    }
    return S_OK;
  });
}

// Changes one half of the first mailbox and keeps the other; on a field
// without mailboxes it appends one whose other half is empty. The field is
// changed in place (or added once by CreateParameter); no ReplaceParameter.
HRESULT MessageParser::PutMailboxPart(std::string_view fieldName, BSTR value, bool setsName) {
  if (value == nullptr) return S_OK;
  Bstr name = FixedName(fieldName);
  ComPtr<IEMSMessageParameter> field;
  if (FAILED(headers_.get()->CreateParameter(name.get(), field.put())) || !field) return S_OK;
  ComPtr<IEMSHeaderMailboxes> mailboxes = MailboxesOf(field.get());
  if (!mailboxes) return S_OK;
  LONG count = 0;
  mailboxes->get_Count(&count);
  Bstr currentName;
  Bstr currentAddress;
  if (count > 0) {
    if (ComPtr<IEMSHeaderMailboxes> list = MailboxesOf(FindField(headers_.get(), name.get()).get())) {
      list->get_MailboxName(0, currentName.put());
    }
    if (ComPtr<IEMSHeaderMailboxes> list = MailboxesOf(FindField(headers_.get(), name.get()).get())) {
      list->get_MailboxAddress(0, currentAddress.put());
    }
  }
  mailboxes->put_MailboxData(count > 0 ? 0 : -1, setsName ? value : currentName.get(),
                             setsName ? currentAddress.get() : value);
  field->put_DefaultCodePage(defaultCodePage_);
  field->put_DefaultEncoding(defaultEncoding_);
  field->put_HeaderMailboxes(mailboxes.get());
  return S_OK;
}

HRESULT MessageParser::GetSenderName(BSTR* pVal) { return GetMailboxPart("From", true, pVal); }

HRESULT MessageParser::PutSenderName(BSTR newVal) { return PutMailboxPart("From", newVal, true); }

HRESULT MessageParser::GetSenderEmail(BSTR* pVal) { return GetMailboxPart("From", false, pVal); }

HRESULT MessageParser::PutSenderEmail(BSTR newVal) { return PutMailboxPart("From", newVal, false); }

HRESULT MessageParser::get_RecipientName(BSTR* pVal) {
  if (pVal == nullptr) return E_INVALIDARG;
  return GetMailboxPart("To", true, pVal);
}

HRESULT MessageParser::PutRecipientName(BSTR newVal) { return PutMailboxPart("To", newVal, true); }

HRESULT MessageParser::get_RecipientEmail(BSTR* pVal) {
  if (pVal == nullptr) return E_INVALIDARG;
  return GetMailboxPart("To", false, pVal);
}

HRESULT MessageParser::PutRecipientEmail(BSTR newVal) { return PutMailboxPart("To", newVal, false); }

// ---------------------------------------------------------------- any field's text
// Reads the raw value (folded, still encoded) of the message's own field,
// never a "Content-" field of the root part. A missing result place goes to
// the field's getter unchecked.
HRESULT MessageParser::get_HeaderString(BSTR bszHeader, BSTR* pVal) {
  return Guard([&] {
    if (ComPtr<IEMSMessageParameter> field = FindField(headers_.get(), bszHeader)) field->get_RawData(pVal);
    return S_OK;
  });
}

// Writes decoded text, which the field encodes: a value put here may read
// back from the getter in its encoded form.
HRESULT MessageParser::PutHeaderString(BSTR bszHeader, BSTR bszValue) {
  ComPtr<IEMSMessageParameter> field;
  headers_.get()->CreateParameter(bszHeader, field.put());
  if (!field) return E_FAIL;
  field->put_DecodedData(bszValue);
  return S_OK;
}

// ---------------------------------------------------------------- the whole header block
HRESULT MessageParser::GetAllHeadersString(BSTR* pVal) {
  ComPtr<IEMSMessageParameters> all;
  HRESULT hr = get_AllHeaders(all.put());
  if (FAILED(hr)) return hr;
  if (!all) return E_FAIL;
  return all->AssembleParameters(pVal);
}

// The header list's parse decides what happens to the fields already in it;
// the "Content-" fields then move to the root part, made if needed.
HRESULT MessageParser::PutAllHeadersString(BSTR newVal) {
  if (newVal == nullptr) return E_POINTER;
  ComPtr<IEMSDataObject> data;
  if (FAILED(DataObjectFromText(View(newVal), &data)) || !data) return E_FAIL;
  headers_.get()->ParseParametersObject(data.get());
  SplitMimeHeaders();
  return S_OK;
}

}  // namespace pv

#include "src/server/class_table.h"

#include "parcelvane/identifiers.h"
#include "src/server/creators.h"

namespace pv {
namespace {

const ClassRow kRows[] = {
    {"EMSDataObject", "CComEMSDataObject", "IEMSDataObject", &IID_IEMSDataObject, &CLSID_EMSDataObject, 101,
     &CreateEMSDataObject},
    {"EMSHeaderCharset", "CComEMSHeaderCharset", "IEMSHeaderCharset", &IID_IEMSHeaderCharset,
     &CLSID_EMSHeaderCharset, 103, &CreateEMSHeaderCharset},
    {"EMSHeaderMailbox", "CComEMSHeaderMailbox", "IEMSHeaderMailbox", &IID_IEMSHeaderMailbox,
     &CLSID_EMSHeaderMailbox, 104, &CreateEMSHeaderMailbox},
    {"EMSHeaderMailboxes", "CComEMSHeaderMailboxes", "IEMSHeaderMailboxes", &IID_IEMSHeaderMailboxes,
     &CLSID_EMSHeaderMailboxes, 105, &CreateEMSHeaderMailboxes},
    {"EMSMessageParameter", "CComEMSMessageParameter", "IEMSMessageParameter", &IID_IEMSMessageParameter,
     &CLSID_EMSMessageParameter, 106, &CreateEMSMessageParameter},
    {"EMSMessageParameters", "CComEMSMessageParameters", "IEMSMessageParameters", &IID_IEMSMessageParameters,
     &CLSID_EMSMessageParameters, 107, &CreateEMSMessageParameters},
    {"EMSMessageParser", "CEMSComMessageParser", "IEMSMessageParser", &IID_IEMSMessageParser,
     &CLSID_EMSMessageParser, 108, &CreateEMSMessageParser},
    {"EMSMimeAttribute", "CComEMSMimeAttribute", "IEMSMimeAttribute", &IID_IEMSMimeAttribute,
     &CLSID_EMSMimeAttribute, 112, &CreateEMSMimeAttribute},
    {"EMSMimeAttributes", "CComEMSMimeAttributes", "IEMSMimeAttributes", &IID_IEMSMimeAttributes,
     &CLSID_EMSMimeAttributes, 113, &CreateEMSMimeAttributes},
    {"EMSMimePart", "CComEMSMimePart", "IEMSMimePart", &IID_IEMSMimePart, &CLSID_EMSMimePart, 114,
     &CreateEMSMimePart},
    {"EMSMimePartDecoder", "CComEMSMimePartDecoder", "IEMSMimePartDecoder", &IID_IEMSMimePartDecoder,
     &CLSID_EMSMimePartDecoder, 115, &CreateEMSMimePartDecoder},
    {"EMSMimePartEncoder", "CComEMSMimePartEncoder", "IEMSMimePartEncoder", &IID_IEMSMimePartEncoder,
     &CLSID_EMSMimePartEncoder, 116, &CreateEMSMimePartEncoder},
    {"EMSMimeParts", "CComEMSMessageMimeParts", "IEMSMimeParts", &IID_IEMSMimeParts, &CLSID_EMSMimeParts, 117,
     &CreateEMSMimeParts},
};

}  // namespace

const ClassRow* ClassTableBegin() { return kRows; }
const ClassRow* ClassTableEnd() { return kRows + ClassTableSize(); }
size_t ClassTableSize() { return sizeof kRows / sizeof kRows[0]; }

const ClassRow* FindCreatableClass(REFCLSID clsid) {
  for (const ClassRow& row : kRows) {
    if (row.create != nullptr && IsEqualCLSID(*row.clsid, clsid)) return &row;
  }
  return nullptr;
}

}  // namespace pv

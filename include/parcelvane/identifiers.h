// Identifiers of the type library, its interfaces and its classes.
#ifndef PARCELVANE_IDENTIFIERS_H
#define PARCELVANE_IDENTIFIERS_H

#include "parcelvane/export.h"
#include "parcelvane/platform.h"

extern "C" {
PV_API extern const GUID LIBID_PARCELVANELib;

PV_API extern const IID IID_IEMSDataObject;
PV_API extern const IID IID_IEMSHeaderCharset;
PV_API extern const IID IID_IEMSHeaderMailbox;
PV_API extern const IID IID_IEMSHeaderMailboxes;
PV_API extern const IID IID_IEMSMessageParameter;
PV_API extern const IID IID_IEMSMessageParameters;
PV_API extern const IID IID_IEMSMessageParser;
PV_API extern const IID IID_IEMSMimeAttribute;
PV_API extern const IID IID_IEMSMimeAttributes;
PV_API extern const IID IID_IEMSMimePart;
PV_API extern const IID IID_IEMSMimePartDecoder;
PV_API extern const IID IID_IEMSMimePartEncoder;
PV_API extern const IID IID_IEMSMimeParts;
// The content-state interfaces of a header field (identifiers of our own).
PV_API extern const IID IID_IEMSContentType;
PV_API extern const IID IID_IEMSContentDisposition;

PV_API extern const CLSID CLSID_EMSDataObject;
PV_API extern const CLSID CLSID_EMSHeaderCharset;
PV_API extern const CLSID CLSID_EMSHeaderMailbox;
PV_API extern const CLSID CLSID_EMSHeaderMailboxes;
PV_API extern const CLSID CLSID_EMSMessageParameter;
PV_API extern const CLSID CLSID_EMSMessageParameters;
PV_API extern const CLSID CLSID_EMSMessageParser;
PV_API extern const CLSID CLSID_EMSMimeAttribute;
PV_API extern const CLSID CLSID_EMSMimeAttributes;
PV_API extern const CLSID CLSID_EMSMimePart;
PV_API extern const CLSID CLSID_EMSMimePartDecoder;
PV_API extern const CLSID CLSID_EMSMimePartEncoder;
PV_API extern const CLSID CLSID_EMSMimeParts;
}

#endif  // PARCELVANE_IDENTIFIERS_H

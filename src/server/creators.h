// The creator of each built class, as the class table and class objects
// call it: outer null for a standalone object, or the outer unknown (with
// riid IID_IUnknown) for an aggregated one.
#ifndef PARCELVANE_SRC_SERVER_CREATORS_H
#define PARCELVANE_SRC_SERVER_CREATORS_H

#include "parcelvane/platform.h"

namespace pv {

HRESULT CreateEMSDataObject(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSHeaderCharset(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSHeaderMailbox(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSHeaderMailboxes(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMimeAttribute(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMimeAttributes(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMessageParameter(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMessageParameters(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMessageParser(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMimePart(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMimePartDecoder(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMimePartEncoder(IUnknown* outer, REFIID riid, void** ppv);
HRESULT CreateEMSMimeParts(IUnknown* outer, REFIID riid, void** ppv);

}  // namespace pv

#endif  // PARCELVANE_SRC_SERVER_CREATORS_H

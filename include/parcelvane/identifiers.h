// Identifiers of the type library, its interfaces and its classes.
//
// Each identifier is written once, in the lists below; the declarations
// here, their definitions, the class table, the type library and the
// registration all follow from these lists.
#ifndef PARCELVANE_IDENTIFIERS_H
#define PARCELVANE_IDENTIFIERS_H

#include "parcelvane/export.h"
#include "parcelvane/platform.h"

// A GUID written as its eleven numbers in parentheses: (data1, data2,
// data3, the eight bytes of data4). PV_GUID_VALUE turns one into an
// initializer.
#define PV_GUID_INIT(d1, d2, d3, b0, b1, b2, b3, b4, b5, b6, b7) \
  {                                                              \
    d1, d2, d3, { b0, b1, b2, b3, b4, b5, b6, b7 }               \
  }
#define PV_GUID_VALUE(guid) PV_GUID_INIT guid

// The type library: identifier, major and minor version, description.
#define PV_LIBRARY_GUID (0x76B0BE2F, 0xA910, 0x45E1, 0x8E, 0xC3, 0xBA, 0xEA, 0x1E, 0x01, 0xF1, 0x23)
#define PV_LIBRARY_NAME "PARCELVANELib"
#define PV_LIBRARY_DESCRIPTION "parcelvane 1.0 Type Library"
#define PV_LIBRARY_VERSION_MAJOR 1
#define PV_LIBRARY_VERSION_MINOR 0

// The module's application identifier, as the registration writes it.
#define PV_APPLICATION_ID_TEXT "{E64290F4-6FEC-4de7-B96D-4EF4AFB37B0B}"

// Every interface and its identifier: X(interface, guid). The last two are
// the content-state interfaces of a header field, with identifiers of our own.
#define PV_INTERFACE_IDS(X)                                                                              \
  X(IEMSDataObject, (0xA5C05A22, 0xCA5F, 0x4691, 0x96, 0xD4, 0xD7, 0xE2, 0x82, 0x9E, 0x60, 0xAE))        \
  X(IEMSHeaderCharset, (0x780D2217, 0xACCF, 0x4E45, 0xB7, 0x60, 0xE6, 0xE3, 0xDC, 0x84, 0x8C, 0x3E))     \
  X(IEMSHeaderMailbox, (0x4D9A6EB0, 0x055D, 0x45E1, 0x83, 0xE2, 0x62, 0x3D, 0x5F, 0x0F, 0xD3, 0x9D))     \
  X(IEMSHeaderMailboxes, (0x39375214, 0xF95E, 0x411C, 0x9C, 0xD5, 0x88, 0x35, 0xDD, 0xB4, 0x19, 0xEE))   \
  X(IEMSMessageParameter, (0x101FF717, 0x4201, 0x4E60, 0xB9, 0x1F, 0xEA, 0x93, 0x94, 0xA4, 0xF2, 0x7C))  \
  X(IEMSMessageParameters, (0x751A2A3A, 0x4E9B, 0x4887, 0xA6, 0xC8, 0x6A, 0xCF, 0x41, 0xB9, 0x4C, 0x86)) \
  X(IEMSMessageParser, (0xAB9279C0, 0x20AB, 0x4F7C, 0x87, 0x44, 0x41, 0x3D, 0x6B, 0x1C, 0x56, 0x10))     \
  X(IEMSMimeAttribute, (0xC512FB54, 0xABDA, 0x4924, 0xA4, 0xAC, 0xA4, 0x6E, 0xB7, 0xFC, 0xF6, 0xB0))     \
  X(IEMSMimeAttributes, (0x270F7F45, 0xBFFD, 0x4807, 0x8E, 0x07, 0xF1, 0xB2, 0x93, 0xAF, 0xAE, 0xCE))    \
  X(IEMSMimePart, (0xADBFF450, 0x2457, 0x4A5F, 0x9B, 0x2E, 0x35, 0x57, 0xFD, 0x0C, 0xFA, 0xBE))          \
  X(IEMSMimePartDecoder, (0x51B80E9F, 0x9DFD, 0x4A29, 0x8D, 0x18, 0x96, 0x4E, 0x57, 0x1D, 0x84, 0x3D))   \
  X(IEMSMimePartEncoder, (0x56B8D706, 0x61F6, 0x4773, 0x81, 0x21, 0x0B, 0xC7, 0x92, 0x60, 0xF0, 0x5A))   \
  X(IEMSMimeParts, (0xDA8168E3, 0x5F36, 0x4353, 0xB8, 0x8C, 0x7B, 0x92, 0xF5, 0x32, 0x3E, 0x93))         \
  X(IEMSContentType, (0x373530C8, 0xB939, 0x473B, 0x90, 0x66, 0x18, 0xA3, 0xDF, 0x09, 0xCB, 0xF6))       \
  X(IEMSContentDisposition, (0x1FB42131, 0xAC50, 0x44E2, 0xB2, 0x56, 0x59, 0x93, 0xE3, 0x06, 0xDB, 0xF9))

// The class table: one line per creatable class, in registration order.
// X(class, implementation class, default interface, registration script,
//   the class named by the script's versioned program identifier, guid).
// The encoder's script names the decoder there: registering in this order
// leaves "ParcelvaneLib.EMSMimePartDecoder.1" naming the encoder's class,
// which hosts of the library rely on.
#define PV_CLASSES(X)                                                                                 \
  X(EMSDataObject, CComEMSDataObject, IEMSDataObject, 101, EMSDataObject,                             \
    (0xF43DBF87, 0xA05E, 0x4D95, 0x88, 0xA1, 0x35, 0x4A, 0xDB, 0xAE, 0x72, 0x95))                     \
  X(EMSHeaderCharset, CComEMSHeaderCharset, IEMSHeaderCharset, 103, EMSHeaderCharset,                 \
    (0x4760F342, 0xB203, 0x4876, 0xB6, 0x64, 0xC8, 0x8C, 0xB0, 0xCD, 0x27, 0xFB))                     \
  X(EMSHeaderMailbox, CComEMSHeaderMailbox, IEMSHeaderMailbox, 104, EMSHeaderMailbox,                 \
    (0x5911A962, 0x62C2, 0x4AC4, 0x91, 0x7C, 0xC1, 0x51, 0x4F, 0x8B, 0xCF, 0xF1))                     \
  X(EMSHeaderMailboxes, CComEMSHeaderMailboxes, IEMSHeaderMailboxes, 105, EMSHeaderMailboxes,         \
    (0x0D97FE45, 0x2D27, 0x4DB9, 0x88, 0x1C, 0x9F, 0x18, 0x3D, 0x8B, 0xCB, 0xD9))                     \
  X(EMSMessageParameter, CComEMSMessageParameter, IEMSMessageParameter, 106, EMSMessageParameter,     \
    (0x150109A7, 0xD30A, 0x43D4, 0x92, 0xB0, 0x4C, 0x15, 0xC3, 0x7D, 0x00, 0xAA))                     \
  X(EMSMessageParameters, CComEMSMessageParameters, IEMSMessageParameters, 107, EMSMessageParameters, \
    (0x7E9A4E88, 0x5C2F, 0x4C7D, 0x83, 0xF8, 0x3A, 0xAD, 0x80, 0xF5, 0x09, 0x75))                     \
  X(EMSMessageParser, CEMSComMessageParser, IEMSMessageParser, 108, EMSMessageParser,                 \
    (0xF0BF2A13, 0xAE57, 0x4BAD, 0x90, 0xB1, 0x52, 0xFB, 0x93, 0x9C, 0xB4, 0x06))                     \
  X(EMSMimeAttribute, CComEMSMimeAttribute, IEMSMimeAttribute, 112, EMSMimeAttribute,                 \
    (0x7BA81359, 0x089E, 0x44A3, 0x89, 0x1B, 0x76, 0x38, 0x19, 0x15, 0x22, 0xDF))                     \
  X(EMSMimeAttributes, CComEMSMimeAttributes, IEMSMimeAttributes, 113, EMSMimeAttributes,             \
    (0xDE227DC0, 0xE095, 0x4830, 0x88, 0x74, 0x80, 0x7D, 0xE0, 0x27, 0xCE, 0xC4))                     \
  X(EMSMimePart, CComEMSMimePart, IEMSMimePart, 114, EMSMimePart,                                     \
    (0xEE9F3FE3, 0x0DDB, 0x43A1, 0x8B, 0x42, 0x5E, 0xD2, 0x28, 0x35, 0x23, 0x49))                     \
  X(EMSMimePartDecoder, CComEMSMimePartDecoder, IEMSMimePartDecoder, 115, EMSMimePartDecoder,         \
    (0xAC0546D4, 0x59CA, 0x4A57, 0xB2, 0x8E, 0xDF, 0x79, 0xC2, 0x48, 0x7A, 0xD6))                     \
  X(EMSMimePartEncoder, CComEMSMimePartEncoder, IEMSMimePartEncoder, 116, EMSMimePartDecoder,         \
    (0xBEC21BCD, 0x9D2E, 0x4774, 0x96, 0xF6, 0x10, 0x4B, 0x55, 0x84, 0xFF, 0x9F))                     \
  X(EMSMimeParts, CComEMSMessageMimeParts, IEMSMimeParts, 117, EMSMimeParts,                          \
    (0x1ED841D8, 0xA7CE, 0x4B32, 0x8F, 0xD6, 0x90, 0x6F, 0x2E, 0xAC, 0x4E, 0xE2))

extern "C" {
PV_API extern const GUID LIBID_PARCELVANELib;
#define PV_DECLARE_IID(I, guid) PV_API extern const IID IID_##I;
PV_INTERFACE_IDS(PV_DECLARE_IID)
#undef PV_DECLARE_IID
#define PV_DECLARE_CLSID(C, impl, itf, script, scriptName, guid) PV_API extern const CLSID CLSID_##C;
PV_CLASSES(PV_DECLARE_CLSID)
#undef PV_DECLARE_CLSID
}

// The identifier of an interface type, for typed QueryInterface calls:
// PvInterfaceId<IEMSMimePart>::Get().
#define PV_FORWARD_DECLARE(I, guid) struct I;
PV_INTERFACE_IDS(PV_FORWARD_DECLARE)
#undef PV_FORWARD_DECLARE
template <class I>
struct PvInterfaceId;
#define PV_INTERFACE_ID_TRAIT(I, guid)          \
  template <>                                   \
  struct PvInterfaceId<I> {                     \
    static const IID& Get() { return IID_##I; } \
  };
PV_INTERFACE_IDS(PV_INTERFACE_ID_TRAIT)
#undef PV_INTERFACE_ID_TRAIT

#endif  // PARCELVANE_IDENTIFIERS_H

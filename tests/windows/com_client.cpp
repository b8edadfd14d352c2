// A client of the registered server through the component runtime: creation
// by program identifier, a parse, the object's own type information, and a
// listing of the type library embedded in the module.
//
// Usage: com_client MODULE_PATH. Prints the listing on standard output and
// exits non-zero when a call fails or the type information is wrong.
#include <windows.h>
#include <oleauto.h>

#include <parcelvane/parcelvane.h>

#include <cstdio>
#include <string>

#include "tests/windows/local_identifiers.h"

namespace {

int g_failures = 0;

void Check(bool ok, const char* what, HRESULT hr = S_OK) {
  if (ok) return;
  std::printf("FAILED: %s (0x%08lX)\n", what, static_cast<unsigned long>(hr));
  ++g_failures;
}

std::string Narrow(const OLECHAR* s) {
  if (s == nullptr) return std::string();
  int n = ::WideCharToMultiByte(CP_UTF8, 0, s, -1, nullptr, 0, nullptr, nullptr);
  std::string out(static_cast<size_t>(n > 0 ? n - 1 : 0), '\0');
  if (n > 1) ::WideCharToMultiByte(CP_UTF8, 0, s, -1, &out[0], n, nullptr, nullptr);
  return out;
}

std::string Guid(REFGUID g) {
  OLECHAR text[40];
  ::StringFromGUID2(g, text, 40);
  return Narrow(text);
}

std::string TypeName(ITypeInfo* info, const TYPEDESC& desc) {
  switch (desc.vt) {
    case VT_PTR:
      return TypeName(info, *desc.lptdesc) + "*";
    case VT_BSTR:
      return "BSTR";
    case VT_I4:
      return "LONG";
    case VT_UI4:
      return "ULONG";
    case VT_VARIANT:
      return "VARIANT";
    case VT_HRESULT:
      return "HRESULT";
    case VT_VOID:
      return "void";
    case VT_UNKNOWN:
      return "IUnknown*";
    case VT_DISPATCH:
      return "IDispatch*";
    case VT_USERDEFINED: {
      ITypeInfo* ref = nullptr;
      std::string name = "?";
      if (SUCCEEDED(info->GetRefTypeInfo(desc.hreftype, &ref))) {
        BSTR n = nullptr;
        if (SUCCEEDED(ref->GetDocumentation(MEMBERID_NIL, &n, nullptr, nullptr, nullptr))) name = Narrow(n);
        ::SysFreeString(n);
        ref->Release();
      }
      return name;
    }
    default:
      return "vt" + std::to_string(desc.vt);
  }
}

const char* InvokeKind(INVOKEKIND kind) {
  switch (kind) {
    case INVOKE_PROPERTYGET:
      return "propget";
    case INVOKE_PROPERTYPUT:
      return "propput";
    case INVOKE_PROPERTYPUTREF:
      return "propputref";
    default:
      return "method";
  }
}

// One interface's own members in slot order: dispatch id, kind, name and
// each parameter with its direction, type and default.
void ListMembers(ITypeInfo* info) {
  TYPEATTR* attr = nullptr;
  if (FAILED(info->GetTypeAttr(&attr))) return;
  for (UINT i = 0; i < attr->cFuncs; ++i) {
    FUNCDESC* func = nullptr;
    if (FAILED(info->GetFuncDesc(i, &func))) continue;
    // GetNames answers by dispatch id, so a property's get and put show the
    // parameter names of whichever the library lists first, and a put's
    // value parameter has no name: that is what script hosts see too.
    BSTR names[16] = {};
    UINT count = 0;
    info->GetNames(func->memid, names, 16, &count);
    std::printf("    0x%08lX %s %s(", static_cast<unsigned long>(func->memid), InvokeKind(func->invkind),
                Narrow(names[0]).c_str());
    for (SHORT p = 0; p < func->cParams; ++p) {
      const ELEMDESC& param = func->lprgelemdescParam[p];
      USHORT flags = param.paramdesc.wParamFlags;
      std::string dir;
      if (flags & PARAMFLAG_FIN) dir += "in,";
      if (flags & PARAMFLAG_FOUT) dir += "out,";
      if (flags & PARAMFLAG_FRETVAL) dir += "retval,";
      if (flags & PARAMFLAG_FOPT) dir += "optional,";
      if (flags & PARAMFLAG_FHASDEFAULT) dir += "defaultvalue,";
      if (!dir.empty()) dir.pop_back();
      // A property put's value has no name of its own in the library.
      std::string name = static_cast<UINT>(p + 1) < count ? Narrow(names[p + 1]) : "";
      std::printf("%s[%s] %s %s", p ? ", " : "", dir.c_str(), TypeName(info, param.tdesc).c_str(),
                  name.c_str());
    }
    std::printf(") vtbl %d\n", func->oVft / static_cast<int>(sizeof(void*)));
    for (UINT n = 0; n < count; ++n) ::SysFreeString(names[n]);
    info->ReleaseFuncDesc(func);
  }
  info->ReleaseTypeAttr(attr);
}

void ListLibrary(const wchar_t* path) {
  ITypeLib* lib = nullptr;
  HRESULT hr = ::LoadTypeLibEx(path, REGKIND_NONE, &lib);
  Check(SUCCEEDED(hr), "LoadTypeLibEx", hr);
  if (FAILED(hr)) return;
  TLIBATTR* libAttr = nullptr;
  lib->GetLibAttr(&libAttr);
  BSTR name = nullptr, doc = nullptr;
  lib->GetDocumentation(-1, &name, &doc, nullptr, nullptr);
  std::printf("library %s \"%s\" %s %u.%u\n", Narrow(name).c_str(), Narrow(doc).c_str(),
              Guid(libAttr->guid).c_str(), libAttr->wMajorVerNum, libAttr->wMinorVerNum);
  ::SysFreeString(name);
  ::SysFreeString(doc);
  lib->ReleaseTLibAttr(libAttr);
  for (UINT i = 0; i < lib->GetTypeInfoCount(); ++i) {
    ITypeInfo* info = nullptr;
    if (FAILED(lib->GetTypeInfo(i, &info))) continue;
    TYPEATTR* attr = nullptr;
    info->GetTypeAttr(&attr);
    info->GetDocumentation(MEMBERID_NIL, &name, &doc, nullptr, nullptr);
    const char* kind = attr->typekind == TKIND_COCLASS     ? "coclass"
                       : attr->typekind == TKIND_DISPATCH  ? "dispinterface"
                       : attr->typekind == TKIND_INTERFACE ? "interface"
                                                           : "other";
    std::printf("%s %s \"%s\" %s%s\n", kind, Narrow(name).c_str(), Narrow(doc).c_str(),
                Guid(attr->guid).c_str(), (attr->wTypeFlags & TYPEFLAG_FDUAL) ? " dual" : "");
    ::SysFreeString(name);
    ::SysFreeString(doc);
    for (UINT k = 0; k < attr->cImplTypes; ++k) {
      HREFTYPE ref = 0;
      ITypeInfo* base = nullptr;
      INT implFlags = 0;
      info->GetImplTypeFlags(k, &implFlags);
      if (SUCCEEDED(info->GetRefTypeOfImplType(k, &ref)) && SUCCEEDED(info->GetRefTypeInfo(ref, &base))) {
        BSTR baseName = nullptr;
        base->GetDocumentation(MEMBERID_NIL, &baseName, nullptr, nullptr, nullptr);
        std::printf("  implements %s%s\n", Narrow(baseName).c_str(),
                    (implFlags & IMPLTYPEFLAG_FDEFAULT) ? " default" : "");
        ::SysFreeString(baseName);
        base->Release();
      }
    }
    // A dual interface lists its members once, from its early-bound view.
    if (attr->typekind == TKIND_DISPATCH && (attr->wTypeFlags & TYPEFLAG_FDUAL)) {
      HREFTYPE ref = 0;
      ITypeInfo* vtable = nullptr;
      if (SUCCEEDED(info->GetRefTypeOfImplType(-1, &ref)) && SUCCEEDED(info->GetRefTypeInfo(ref, &vtable))) {
        ListMembers(vtable);
        vtable->Release();
      }
    } else if (attr->typekind == TKIND_INTERFACE) {
      ListMembers(info);
    }
    info->ReleaseTypeAttr(attr);
    info->Release();
  }
  lib->Release();
}

void UseByProgId() {
  CLSID clsid;
  HRESULT hr = ::CLSIDFromProgID(L"ParcelvaneLib.EMSMessageParser", &clsid);
  Check(SUCCEEDED(hr), "CLSIDFromProgID", hr);
  if (FAILED(hr)) return;
  std::printf("class %s\n", Guid(clsid).c_str());
  Check(::IsEqualGUID(clsid, kCLSID_EMSMessageParser), "CLSIDFromProgID gives the message class");
  IEMSMessageParser* msg = nullptr;
  hr = ::CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, kIID_IEMSMessageParser,
                          reinterpret_cast<void**>(&msg));
  Check(SUCCEEDED(hr), "CoCreateInstance", hr);
  if (FAILED(hr)) return;
  BSTR text =
      ::SysAllocString(L"From: a@example.org\r\nSubject: =?UTF-8?Q?caf=C3=A9_au_lait?=\r\n\r\nbody\r\n");
  hr = msg->put_FullMessage(text);
  Check(SUCCEEDED(hr), "FullMessage put", hr);
  ::SysFreeString(text);
  BSTR subject = nullptr;
  hr = msg->get_Subject(&subject);
  Check(SUCCEEDED(hr), "Subject get", hr);
  std::printf("subject %s\n", Narrow(subject).c_str());
  ::SysFreeString(subject);

  UINT count = 0;
  hr = msg->GetTypeInfoCount(&count);
  Check(SUCCEEDED(hr) && count == 1, "GetTypeInfoCount is 1", hr);
  ITypeInfo* info = nullptr;
  hr = msg->GetTypeInfo(0, 0, &info);
  Check(SUCCEEDED(hr), "GetTypeInfo", hr);
  if (info != nullptr) {
    BSTR name = nullptr;
    info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
    std::printf("type info %s\n", Narrow(name).c_str());
    Check(Narrow(name) == "IEMSMessageParser", "GetTypeInfo names the interface");
    ::SysFreeString(name);
    // The late-bound name of a member maps to its dispatch identifier.
    OLECHAR* member = const_cast<OLECHAR*>(L"Subject");
    DISPID id = 0;
    hr = info->GetIDsOfNames(&member, 1, &id);
    Check(SUCCEEDED(hr) && id == 0x60020013, "Subject's dispatch id", hr);
    info->Release();
  }
  msg->Release();
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: com_client MODULE_PATH\n");
    return 2;
  }
  HRESULT hr = ::CoInitialize(nullptr);
  Check(SUCCEEDED(hr), "CoInitialize", hr);
  UseByProgId();
  ListLibrary(argv[1]);
  ::CoUninitialize();
  std::printf("%s\n", g_failures == 0 ? "DONE" : "FAILED");
  return g_failures == 0 ? 0 : 1;
}

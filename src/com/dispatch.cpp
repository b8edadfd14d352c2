#include "src/com/dispatch.h"

#include <memory>
#include <string>

#include "src/platform/codepage.h"
#include "src/com/dispatch_ids.h"
#include "src/com/variant_enumerator.h"

namespace pv {
namespace {

bool NameMatches(const char* ascii, WStringView name) {
  size_t i = 0;
  for (; ascii[i] != '\0'; ++i) {
    if (i >= name.size()) return false;
    OLECHAR c = name[i];
    if (c >= OLECHAR('A') && c <= OLECHAR('Z')) c = static_cast<OLECHAR>(c - 'A' + 'a');
    if (c != static_cast<OLECHAR>(ToLowerAscii(ascii[i]))) return false;
  }
  return i == name.size();
}

bool IsPropertyKind(MemberKind kind) { return kind == MemberKind::kGet || kind == MemberKind::kPut; }

bool IsOmitted(const VARIANT& v) { return v.vt == VT_ERROR && v.scode == DISP_E_PARAMNOTFOUND; }

void FillException(EXCEPINFO* excep, const char* interfaceName, const char* member, HRESULT hr) {
  *excep = EXCEPINFO();
  excep->scode = hr;
  excep->bstrSource = AllocBstr(WidenAscii("parcelvane"));
  std::string text = std::string(interfaceName) + "." + member + " failed";
  excep->bstrDescription = AllocBstr(WidenAscii(text));
}

}  // namespace

DispatchTable::DispatchTable(const char* interfaceName, std::vector<DispatchMember> members,
                             CollectionMembers collection)
    : interfaceName_(interfaceName), members_(std::move(members)), collection_(collection) {
  std::vector<const char*> names;
  std::unique_ptr<bool[]> isProperty(new bool[members_.size()]);  // a plain array, as the rule reads it
  std::vector<DISPID> ids(members_.size());
  for (size_t i = 0; i < members_.size(); ++i) {
    names.push_back(members_[i].name);
    isProperty[i] = IsPropertyKind(members_[i].kind);
  }
  AssignDispatchIds(members_.size(), names.data(), isProperty.get(), ids.data());
  for (size_t i = 0; i < members_.size(); ++i) members_[i].id = ids[i];
}

HRESULT DispatchTable::IdsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const {
  if (names == nullptr || ids == nullptr) return E_POINTER;
  if (count == 0) return S_OK;
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  if (names[0] == nullptr) return DISP_E_UNKNOWNNAME;
  WStringView wanted(names[0]);
  if (collection_.item != nullptr && NameMatches("_NewEnum", wanted)) {
    ids[0] = DISPID_NEWENUM;
    return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
  }
  for (const DispatchMember& m : members_) {
    if (NameMatches(m.name, wanted)) {
      ids[0] = m.id;
      return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
    }
  }
  return DISP_E_UNKNOWNNAME;
}

const DispatchMember* DispatchTable::Find(DISPID id, WORD flags) const {
  const DispatchMember* method = nullptr;
  const DispatchMember* getter = nullptr;
  const DispatchMember* putter = nullptr;
  for (const DispatchMember& m : members_) {
    if (m.id != id) continue;
    if (m.kind == MemberKind::kMethod) method = &m;
    if (m.kind == MemberKind::kGet) getter = &m;
    if (m.kind == MemberKind::kPut) putter = &m;
  }
  if (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) return putter;
  if ((flags & DISPATCH_METHOD) && method != nullptr) return method;
  if (flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) return getter;
  return nullptr;
}

const DispatchMember* DispatchTable::FindGetter(const char* name) const {
  for (const DispatchMember& m : members_) {
    if (m.kind == MemberKind::kGet && std::string(m.name) == name) return &m;
  }
  return nullptr;
}

HRESULT DispatchTable::NewEnum(void* iface, VARIANT* result) const {
  const DispatchMember* count = FindGetter(collection_.count);
  const DispatchMember* item = FindGetter(collection_.item);
  if (count == nullptr || item == nullptr) return DISP_E_MEMBERNOTFOUND;
  if (result == nullptr) return E_POINTER;
  UINT bad = kNoBadArgument;
  VARIANT n;
  VariantInit(&n);
  HRESULT hr = count->thunk(iface, nullptr, &n, &bad);
  if (FAILED(hr)) return hr;
  std::vector<VARIANT> items;
  for (LONG i = 0; n.vt == VT_I4 && i < n.lVal; ++i) {
    VARIANT index;
    VariantInit(&index);
    index.vt = VT_I4;
    index.lVal = i;
    const VARIANT* in[1] = {&index};
    VARIANT value;
    VariantInit(&value);
    hr = item->thunk(iface, in, &value, &bad);
    if (FAILED(hr)) {
      for (VARIANT& v : items) VariantClear(&v);
      return hr;
    }
    items.push_back(value);
  }
  IEnumVARIANT* enumerator = nullptr;
  hr = MakeVariantEnumerator(std::move(items), &enumerator);
  if (FAILED(hr)) return hr;
  VariantInit(result);
  result->vt = VT_UNKNOWN;
  result->punkVal = enumerator;
  return S_OK;
}

HRESULT DispatchTable::Invoke(void* iface, DISPID id, REFIID riid, WORD flags, DISPPARAMS* params,
                              VARIANT* result, EXCEPINFO* excep, UINT* argErr) const {
  if (!IsEqualIID(riid, IID_NULL)) return DISP_E_UNKNOWNINTERFACE;
  if (params == nullptr) return E_INVALIDARG;
  if (collection_.item != nullptr) {
    if (id == DISPID_NEWENUM && (flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET)) && params->cArgs == 0) {
      return NewEnum(iface, result);
    }
    // The collection's default member is its item.
    if (id == DISPID_VALUE) {
      const DispatchMember* item = FindGetter(collection_.item);
      if (item != nullptr) id = item->id;
    }
  }
  const DispatchMember* m = Find(id, flags);
  if (m == nullptr) return DISP_E_MEMBERNOTFOUND;
  if (params->cArgs > 0 && params->rgvarg == nullptr) return E_INVALIDARG;

  // A put carries its value as the named argument DISPID_PROPERTYPUT in
  // rgvarg[0]; every other argument is positional, last one first.
  UINT named = params->cNamedArgs;
  bool putValue = m->kind == MemberKind::kPut;
  if (putValue) {
    if (named != 1 || params->rgdispidNamedArgs == nullptr ||
        params->rgdispidNamedArgs[0] != DISPID_PROPERTYPUT) {
      return DISP_E_PARAMNOTOPTIONAL;
    }
  } else if (named != 0) {
    return DISP_E_NONAMEDARGS;
  }
  if (params->cArgs < named) return DISP_E_BADPARAMCOUNT;
  UINT positional = params->cArgs - named;
  int positionalWanted = putValue ? m->inCount - 1 : m->inCount;
  if (static_cast<int>(positional) > positionalWanted) return DISP_E_BADPARAMCOUNT;

  const VARIANT* in[16] = {};
  if (m->inCount > 16) return DISP_E_BADPARAMCOUNT;
  for (int i = 0; i < positionalWanted; ++i) {
    if (i < static_cast<int>(positional)) {
      const VARIANT* v = &params->rgvarg[params->cArgs - 1 - static_cast<UINT>(i)];
      in[i] = IsOmitted(*v) ? nullptr : v;
    }
    bool optional = i >= m->inCount - m->optionalCount;
    if (in[i] == nullptr && !optional) {
      return i < static_cast<int>(positional) ? DISP_E_PARAMNOTOPTIONAL : DISP_E_BADPARAMCOUNT;
    }
  }
  if (putValue) in[m->inCount - 1] = &params->rgvarg[0];

  if (result != nullptr) VariantInit(result);
  UINT bad = kNoBadArgument;
  HRESULT hr = m->thunk(iface, in, result, &bad);
  if (bad != kNoBadArgument) {
    // An argument could not be converted: report which rgvarg entry it was.
    if (argErr != nullptr) {
      bool isPutValue = putValue && static_cast<int>(bad) == m->inCount - 1;
      *argErr = isPutValue ? 0 : params->cArgs - 1 - bad;
    }
    return hr;
  }
  if (FAILED(hr) && excep != nullptr) {
    FillException(excep, interfaceName_, m->name, hr);
    return DISP_E_EXCEPTION;
  }
  return FAILED(hr) ? hr : S_OK;
}

}  // namespace pv

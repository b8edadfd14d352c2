// Helpers shared by the test programs: strings in and out of the
// interface, byte arrays in variants, and late-bound calls by name.
#ifndef PARCELVANE_TESTS_TEST_UTIL_H
#define PARCELVANE_TESTS_TEST_UTIL_H

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "parcelvane/parcelvane.h"
#include "src/platform/codepage.h"
#include "src/com/com_ptr.h"
#include "src/platform/strings.h"

namespace pv::test {

// UTF-8 text as a wide string, and back.
inline WString W(std::string_view utf8) {
  WString w;
  ToWide(kCodePageUtf8, utf8, &w);
  return w;
}
inline std::string U8(WStringView w) {
  std::string s;
  ToNarrow(kCodePageUtf8, w, &s);
  return s;
}
inline std::string U8(BSTR s) { return U8(View(s)); }
inline std::string U8(const Bstr& s) { return U8(s.view()); }

// A BSTR holding UTF-8 text, freed at the end of the full expression's scope.
inline Bstr B(std::string_view utf8) { return Bstr(W(utf8)); }

// A byte array in a variant (owned by the variant).
inline VARIANT ByteVariant(std::string_view bytes) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_UI1;
  v.parray = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  if (!bytes.empty()) std::copy(bytes.begin(), bytes.end(), static_cast<char*>(v.parray->pvData));
  return v;
}

// A UTF-16 array in a variant (owned by the variant).
inline VARIANT Utf16Variant(WStringView text) {
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_UI2;
  v.parray = SafeArrayCreateVector(VT_UI2, 0, static_cast<ULONG>(text.size()));
  auto* units = static_cast<USHORT*>(v.parray->pvData);
  for (size_t i = 0; i < text.size(); ++i) units[i] = static_cast<USHORT>(text[i]);
  return v;
}

// The bytes of a byte-array variant.
inline std::string BytesOf(const VARIANT& v) {
  if (v.vt != (VT_ARRAY | VT_UI1) || v.parray == nullptr) return std::string();
  LONG lower = 0, upper = -1;
  SafeArrayGetLBound(v.parray, 1, &lower);
  SafeArrayGetUBound(v.parray, 1, &upper);
  return std::string(static_cast<const char*>(v.parray->pvData), static_cast<size_t>(upper - lower + 1));
}

// Creates an object of this module by class, as a host would.
template <class I>
ComPtr<I> Create(REFCLSID clsid) {
  ComPtr<I> object;
  EXPECT_EQ(PvCreateInstance(clsid, nullptr, IidOf<I>::Get(), object.put_void()), S_OK);
  return object;
}

// A data object holding `bytes`.
inline ComPtr<IEMSDataObject> DataOf(std::string_view bytes) {
  auto data = Create<IEMSDataObject>(CLSID_EMSDataObject);
  VARIANT v = ByteVariant(bytes);
  EXPECT_EQ(data->put_Data(v), S_OK);
  VariantClear(&v);
  return data;
}

// The whole array of a data object, as bytes.
inline std::string AllBytes(IEMSDataObject* data) {
  VARIANT v;
  VariantInit(&v);
  data->get_Data(&v);
  std::string bytes = BytesOf(v);
  VariantClear(&v);
  return bytes;
}

// The bytes of a data object's span.
inline std::string SpanBytes(IEMSDataObject* data) {
  std::string all = AllBytes(data);
  ULONG position = 0, length = 0;
  data->get_Position(&position);
  data->get_Length(&length);
  if (position > all.size()) return std::string();
  return all.substr(position, length);
}

// ---------------------------------------------------------------- late binding
// A variant argument that owns what it holds.
class Arg {
 public:
  Arg(int n) {  // NOLINT(google-explicit-constructor)
    v_.vt = VT_I4;
    v_.lVal = n;
  }
  Arg(const char* utf8) {
    v_.vt = VT_BSTR;
    v_.bstrVal = AllocBstr(W(utf8));
  }                    // NOLINT
  Arg(IDispatch* p) {  // NOLINT
    v_.vt = VT_DISPATCH;
    v_.pdispVal = p;
    if (p) p->AddRef();
  }
  // A copy of `v` (which stays the caller's).
  explicit Arg(const VARIANT& v) { VariantCopy(&v_, &v); }
  // Takes over what `v` holds.
  static Arg Own(VARIANT v) {
    Arg a(0);
    a.v_ = v;
    return a;
  }
  Arg(const Arg& o) { VariantCopy(&v_, &o.v_); }
  ~Arg() { VariantClear(&v_); }
  const VARIANT& get() const { return v_; }

 private:
  VARIANT v_{};
};

inline DISPID IdOf(IDispatch* object, const char* name) {
  WString w = W(name);
  LPOLESTR names[] = {w.data()};
  DISPID id = DISPID_UNKNOWN;
  EXPECT_EQ(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id), S_OK) << name;
  return id;
}

// Invokes `name` with positional arguments (first argument first). A put
// passes its last argument as the named DISPID_PROPERTYPUT value.
inline HRESULT Invoke(IDispatch* object, const char* name, WORD flags, std::vector<Arg> args,
                      VARIANT* result = nullptr, EXCEPINFO* excep = nullptr) {
  DISPID id = IdOf(object, name);
  std::vector<VARIANT> reversed;
  for (auto it = args.rbegin(); it != args.rend(); ++it) reversed.push_back(it->get());
  DISPID putId = DISPID_PROPERTYPUT;
  DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  if (flags & DISPATCH_PROPERTYPUT) {
    params.rgdispidNamedArgs = &putId;
    params.cNamedArgs = 1;
  }
  UINT argErr = 0;
  return object->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params, result, excep, &argErr);
}

// The team's shared folder of real messages, when it is present (tests
// that use it skip themselves otherwise).
inline std::string CorpusDir() { return std::string(PARCELVANE_SHARED_DIR) + "/corpus"; }
inline bool HaveCorpus() {
  std::FILE* f = std::fopen((CorpusDir() + "/SOURCES.md").c_str(), "rb");
  if (f) std::fclose(f);
  return f != nullptr;
}

}  // namespace pv::test

#endif  // PARCELVANE_TESTS_TEST_UTIL_H

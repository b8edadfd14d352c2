#include "tools/com.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "tools/exit_codes.h"

namespace pvtool {

Bstr::Bstr(std::string_view utf8) {
  const U16String wide = Utf8ToUtf16(utf8);
  s_ = SysAllocStringLen(reinterpret_cast<const OLECHAR*>(wide.data()), static_cast<UINT>(wide.size()));
  if (s_ == nullptr) throw std::bad_alloc();
}

U16String Bstr::wide() const {
  if (s_ == nullptr) return U16String();
  return U16String(reinterpret_cast<const char16_t*>(s_), SysStringLen(s_));
}

void Check(HRESULT hr, const char* what) {
  if (SUCCEEDED(hr)) return;
  char status[16];
  std::snprintf(status, sizeof status, "0x%08X", static_cast<unsigned>(hr));
  throw ToolError(kExitLibraryFailed, std::string(what) + " failed with status " + status);
}

Ref<IEMSDataObject> MakeData(std::string_view bytes) {
  Ref<IEMSDataObject> data = CreateObject<IEMSDataObject>(CLSID_EMSDataObject, "creating a data object");
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  if (array == nullptr) throw std::bad_alloc();
  void* elements = nullptr;
  if (SUCCEEDED(SafeArrayAccessData(array, &elements))) {
    if (!bytes.empty()) std::memcpy(elements, bytes.data(), bytes.size());
    SafeArrayUnaccessData(array);
  }
  VARIANT v;
  VariantInit(&v);
  v.vt = VT_ARRAY | VT_UI1;
  v.parray = array;
  const HRESULT hr = data->put_Data(v);
  VariantClear(&v);
  Check(hr, "storing bytes in a data object");
  return data;
}

uint64_t SpanLength(IEMSDataObject* data) {
  ULONG length = 0;
  if (data == nullptr || FAILED(data->get_Length(&length))) return 0;
  return length;
}

std::string SpanBytes(IEMSDataObject* data) {
  if (data == nullptr) return std::string();
  // Copy the span into a buffer of its own first: the Data of a parsed
  // body is the whole message.
  Ref<IEMSDataObject> block;
  if (FAILED(data->ExtractBlockAsData(block.put())) || !block) return std::string();
  VARIANT v;
  VariantInit(&v);
  if (FAILED(block->get_Data(&v))) return std::string();
  std::string bytes;
  if (v.vt == (VT_ARRAY | VT_UI1) && v.parray != nullptr) {
    LONG lower = 0;
    LONG upper = -1;
    SafeArrayGetLBound(v.parray, 1, &lower);
    SafeArrayGetUBound(v.parray, 1, &upper);
    void* elements = nullptr;
    if (upper >= lower && SUCCEEDED(SafeArrayAccessData(v.parray, &elements))) {
      bytes.assign(static_cast<const char*>(elements),
                   static_cast<size_t>(upper) - static_cast<size_t>(lower) + 1);
      SafeArrayUnaccessData(v.parray);
    }
  }
  VariantClear(&v);
  return bytes;
}

}  // namespace pvtool

// Creates a data object through the installed library.
#include <parcelvane/parcelvane.h>

#include <cstdio>

int main() {
  IEMSDataObject* data = nullptr;
  if (FAILED(PvCreateInstance(CLSID_EMSDataObject, nullptr, IID_IEMSDataObject,
                              reinterpret_cast<void**>(&data)))) {
    return 1;
  }
  HRESULT hr = data->CreateEmptyData(3);
  data->Release();
  std::printf("installed package: %s\n", SUCCEEDED(hr) ? "ok" : "failed");
  return SUCCEEDED(hr) ? 0 : 1;
}

// Loads the module by hand, uses and releases its objects, and checks that
// the module really leaves the process after DllCanUnloadNow gives S_OK:
// once with objects used on the loading thread, once with objects used on a
// second thread that is still running when the module is freed.
//
// Usage: unload_check MODULE_PATH. Exits non-zero on any failure.
#include <windows.h>

#include <parcelvane/parcelvane.h>

#include <cstdio>
#include <cwchar>

#include "tests/windows/local_identifiers.h"

namespace {

using GetClassObjectFn = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
using CanUnloadNowFn = HRESULT(STDAPICALLTYPE*)();

int g_failures = 0;

void Check(bool ok, const char* what, HRESULT hr = S_OK) {
  if (ok) return;
  std::printf("FAILED: %s (0x%08lX)\n", what, static_cast<unsigned long>(hr));
  ++g_failures;
}

HRESULT CanUnloadNow(HMODULE module) {
  auto canUnload =
      reinterpret_cast<CanUnloadNowFn>(reinterpret_cast<void*>(::GetProcAddress(module, "DllCanUnloadNow")));
  return canUnload != nullptr ? canUnload() : E_FAIL;
}

// Creates a message, parses one with an attachment, walks to the decoded
// attachment and releases everything.
void UseObjects(HMODULE module) {
  auto getClassObject = reinterpret_cast<GetClassObjectFn>(
      reinterpret_cast<void*>(::GetProcAddress(module, "DllGetClassObject")));
  Check(getClassObject != nullptr, "DllGetClassObject exported");
  if (getClassObject == nullptr) return;
  IClassFactory* factory = nullptr;
  HRESULT hr = getClassObject(kCLSID_EMSMessageParser, IID_IClassFactory, reinterpret_cast<void**>(&factory));
  Check(SUCCEEDED(hr), "class object", hr);
  if (FAILED(hr)) return;
  IEMSMessageParser* msg = nullptr;
  hr = factory->CreateInstance(nullptr, kIID_IEMSMessageParser, reinterpret_cast<void**>(&msg));
  Check(SUCCEEDED(hr), "CreateInstance", hr);
  if (SUCCEEDED(hr)) {
    hr = CanUnloadNow(module);
    Check(hr == S_FALSE, "DllCanUnloadNow gives S_FALSE while an object lives", hr);
    BSTR text = ::SysAllocString(
        L"Subject: =?ISO-8859-1?Q?caf=E9?=\r\nMIME-Version: 1.0\r\n"
        L"Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: text/plain\r\n\r\nhello\r\n"
        L"--b\r\nContent-Type: application/octet-stream; name=a.bin\r\nContent-Transfer-Encoding: "
        L"base64\r\n\r\n"
        L"AAECAw==\r\n--b--\r\n");
    hr = msg->put_FullMessage(text);
    Check(SUCCEEDED(hr), "FullMessage put", hr);
    ::SysFreeString(text);
    BSTR subject = nullptr;
    hr = msg->get_Subject(&subject);
    Check(SUCCEEDED(hr) && subject != nullptr && std::wcscmp(subject, L"caf\u00e9") == 0, "Subject", hr);
    ::SysFreeString(subject);
    IEMSMimeParts* parts = nullptr;
    hr = msg->get_AttachParts(&parts);
    Check(SUCCEEDED(hr), "AttachParts", hr);
    if (parts != nullptr) {
      IEMSMimePart* part = nullptr;
      hr = parts->get_Part(0, &part);
      Check(SUCCEEDED(hr), "attachment part", hr);
      if (part != nullptr) {
        IEMSDataObject* data = nullptr;
        hr = part->get_DecodedBinary(&data);
        ULONG size = 0;
        if (data != nullptr) data->get_DataSize(&size);
        Check(SUCCEEDED(hr) && size == 4, "decoded attachment of 4 bytes", hr);
        if (data != nullptr) data->Release();
        part->Release();
      }
      parts->Release();
    }
    IEMSDataObject* assembled = nullptr;
    hr = msg->AssembleObject(&assembled);
    Check(SUCCEEDED(hr) && assembled != nullptr, "AssembleObject", hr);
    if (assembled != nullptr) assembled->Release();
    msg->Release();
  }
  factory->Release();
}

// Frees the module and checks that nothing pins it.
void FreeAndCheckGone(HMODULE module, const wchar_t* name, const char* round) {
  HRESULT hr = CanUnloadNow(module);
  std::printf("%s: DllCanUnloadNow 0x%08lX\n", round, static_cast<unsigned long>(hr));
  Check(hr == S_OK, "DllCanUnloadNow gives S_OK", hr);
  Check(::FreeLibrary(module) != 0, "FreeLibrary");
  bool gone = ::GetModuleHandleW(name) == nullptr;
  std::printf("%s: module %s\n", round, gone ? "gone" : "still loaded");
  Check(gone, "module gone after FreeLibrary");
}

struct Worker {
  HMODULE module;
  HANDLE used;     // set by the worker once its objects are released
  HANDLE release;  // set by the main thread once the module is freed
};

DWORD WINAPI WorkerMain(void* arg) {
  auto* w = static_cast<Worker*>(arg);
  ::CoInitialize(nullptr);
  UseObjects(w->module);
  ::SetEvent(w->used);
  // Still running while the module is freed: nothing may wait for this
  // thread's exit to let the module go.
  ::WaitForSingleObject(w->release, INFINITE);
  ::CoUninitialize();
  return 0;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: unload_check MODULE_PATH\n");
    return 2;
  }
  const wchar_t* path = argv[1];
  const wchar_t* name = std::wcsrchr(path, L'\\') ? std::wcsrchr(path, L'\\') + 1 : path;
  ::CoInitialize(nullptr);

  HMODULE module = ::LoadLibraryW(path);
  Check(module != nullptr, "LoadLibrary", HRESULT_FROM_WIN32(::GetLastError()));
  if (module == nullptr) return 1;
  UseObjects(module);
  FreeAndCheckGone(module, name, "same thread");

  module = ::LoadLibraryW(path);
  Check(module != nullptr, "LoadLibrary again", HRESULT_FROM_WIN32(::GetLastError()));
  if (module == nullptr) return 1;
  Worker w{module, ::CreateEventW(nullptr, TRUE, FALSE, nullptr),
           ::CreateEventW(nullptr, TRUE, FALSE, nullptr)};
  HANDLE thread = ::CreateThread(nullptr, 0, WorkerMain, &w, 0, nullptr);
  ::WaitForSingleObject(w.used, INFINITE);
  FreeAndCheckGone(module, name, "second thread");
  ::SetEvent(w.release);
  ::WaitForSingleObject(thread, INFINITE);
  ::CloseHandle(thread);
  ::CloseHandle(w.used);
  ::CloseHandle(w.release);

  ::CoUninitialize();
  std::printf("%s\n", g_failures == 0 ? "DONE" : "FAILED");
  return g_failures == 0 ? 0 : 1;
}

// Loads the shared library as a host without a link to it does (every
// entry point by name), uses it on two threads, releases
// everything, closes it, and checks that it is gone: nothing the library
// does (thread-exit handlers, unique symbols) may keep it loaded.
//
//   unload_check PATH-TO-LIBPARCELVANE
#include <dlfcn.h>

#include <cstdio>
#include <thread>

#include "parcelvane/parcelvane.h"

namespace {

struct Module {
  HRESULT (*getClassObject)(REFCLSID, REFIID, void**);
  HRESULT (*canUnloadNow)();
  const CLSID* parserClass;
  const IID* parserInterface;
  const IID* factoryInterface;
  BSTR (*allocString)(const OLECHAR*);
  void (*freeString)(BSTR);
  UINT (*stringLength)(BSTR);
};

// Parses a message and reads its subject through a class object.
bool Use(const Module& m) {
  IClassFactory* factory = nullptr;
  if (FAILED(m.getClassObject(*m.parserClass, *m.factoryInterface, reinterpret_cast<void**>(&factory)))) {
    return false;
  }
  IEMSMessageParser* message = nullptr;
  HRESULT hr = factory->CreateInstance(nullptr, *m.parserInterface, reinterpret_cast<void**>(&message));
  factory->Release();
  if (FAILED(hr)) return false;
  BSTR text = m.allocString(OLESTR("Subject: =?utf-8?q?caf=C3=A9?=\r\nContent-Type: text/plain\r\n\r\nbody"));
  hr = message->put_FullMessage(text);
  m.freeString(text);
  BSTR subject = nullptr;
  if (SUCCEEDED(hr)) hr = message->get_Subject(&subject);
  bool ok = SUCCEEDED(hr) && subject != nullptr && m.stringLength(subject) == 4;
  m.freeString(subject);
  message->Release();
  return ok;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: unload_check LIBRARY\n");
    return 2;
  }
  void* handle = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  if (handle == nullptr) {
    std::fprintf(stderr, "cannot load %s: %s\n", argv[1], dlerror());
    return 1;
  }
  Module m{};
  m.getClassObject =
      reinterpret_cast<HRESULT (*)(REFCLSID, REFIID, void**)>(dlsym(handle, "DllGetClassObject"));
  m.canUnloadNow = reinterpret_cast<HRESULT (*)()>(dlsym(handle, "DllCanUnloadNow"));
  m.parserClass = static_cast<const CLSID*>(dlsym(handle, "CLSID_EMSMessageParser"));
  m.parserInterface = static_cast<const IID*>(dlsym(handle, "IID_IEMSMessageParser"));
  m.factoryInterface = static_cast<const IID*>(dlsym(handle, "IID_IClassFactory"));
  m.allocString = reinterpret_cast<BSTR (*)(const OLECHAR*)>(dlsym(handle, "SysAllocString"));
  m.freeString = reinterpret_cast<void (*)(BSTR)>(dlsym(handle, "SysFreeString"));
  m.stringLength = reinterpret_cast<UINT (*)(BSTR)>(dlsym(handle, "SysStringLen"));
  if (!m.getClassObject || !m.canUnloadNow || !m.parserClass || !m.parserInterface || !m.factoryInterface ||
      !m.allocString || !m.freeString || !m.stringLength) {
    std::fprintf(stderr, "an entry point is missing\n");
    return 1;
  }
  bool used = Use(m);
  bool usedOnThread = false;
  std::thread other([&] { usedOnThread = Use(m); });
  other.join();
  if (!used || !usedOnThread) {
    std::fprintf(stderr, "using the library failed\n");
    return 1;
  }
  if (m.canUnloadNow() != S_OK) {
    std::fprintf(stderr, "DllCanUnloadNow: objects are still alive\n");
    return 1;
  }
  dlclose(handle);
  if (dlopen(argv[1], RTLD_NOW | RTLD_NOLOAD) != nullptr) {
    std::fprintf(stderr, "the library is still loaded after it was closed\n");
    return 1;
  }
  std::printf("unloaded\n");
  return 0;
}

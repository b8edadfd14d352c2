// Code-page conversion on Windows: the platform's own functions.
#include "src/platform/codepage.h"

namespace pv {

UINT AnsiCodePage() { return GetACP(); }

UINT ResolveCodePage(UINT codePage) { return (codePage == 0 || codePage == 3) ? GetACP() : codePage; }

bool IsCodePageConvertible(UINT codePage) {
  const char probe[] = "Az";
  return ::MultiByteToWideChar(ResolveCodePage(codePage), 0, probe, 2, nullptr, 0) > 0;
}

int MultiByteToWide(UINT codePage, const char* in, int inLen, OLECHAR* out, int outLen) {
  if (in == nullptr || inLen <= 0 || outLen < 0) return 0;
  return ::MultiByteToWideChar(codePage, 0, in, inLen, out, outLen);
}

int WideToMultiByte(UINT codePage, const OLECHAR* in, int inLen, char* out, int outLen) {
  if (in == nullptr || inLen <= 0 || outLen < 0) return 0;
  return ::WideCharToMultiByte(codePage, 0, in, inLen, out, outLen, nullptr, nullptr);
}

}  // namespace pv

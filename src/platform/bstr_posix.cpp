// Length-prefixed wide strings off Windows: a 32-bit byte count, the
// characters, and a terminating zero character.
#include <cstdlib>
#include <cstring>

#include "parcelvane/platform.h"

namespace {

constexpr size_t kPrefix = sizeof(uint32_t);
constexpr UINT kMaxBytes = 0x7FFFFFF0u;

uint32_t* PrefixOf(BSTR s) { return reinterpret_cast<uint32_t*>(reinterpret_cast<char*>(s) - kPrefix); }

// Allocates room for `bytes` bytes of text plus the terminator; the text is
// left for the caller to fill and the terminator is written here.
BSTR AllocateBytes(UINT bytes) {
  if (bytes > kMaxBytes) return nullptr;
  // One spare byte keeps an odd byte count followed by a whole zero character.
  char* block = static_cast<char*>(std::malloc(kPrefix + bytes + sizeof(OLECHAR) + 1));
  if (block == nullptr) return nullptr;
  uint32_t count = bytes;
  std::memcpy(block, &count, sizeof count);
  std::memset(block + kPrefix + bytes, 0, sizeof(OLECHAR) + 1);
  return reinterpret_cast<BSTR>(block + kPrefix);
}

size_t TerminatedLength(const OLECHAR* s) {
  size_t n = 0;
  while (s[n] != 0) ++n;
  return n;
}

}  // namespace

extern "C" {

BSTR SysAllocStringLen(const OLECHAR* strIn, UINT ui) {
  if (ui > kMaxBytes / sizeof(OLECHAR)) return nullptr;
  BSTR s = AllocateBytes(ui * static_cast<UINT>(sizeof(OLECHAR)));
  if (s == nullptr) return nullptr;
  if (strIn != nullptr) {
    std::memcpy(s, strIn, ui * sizeof(OLECHAR));
  } else {
    std::memset(s, 0, ui * sizeof(OLECHAR));
  }
  return s;
}

BSTR SysAllocString(const OLECHAR* psz) {
  if (psz == nullptr) return nullptr;
  size_t n = TerminatedLength(psz);
  if (n > kMaxBytes / sizeof(OLECHAR)) return nullptr;
  return SysAllocStringLen(psz, static_cast<UINT>(n));
}

BSTR SysAllocStringByteLen(const char* psz, UINT len) {
  BSTR s = AllocateBytes(len);
  if (s == nullptr) return nullptr;
  if (psz != nullptr) {
    std::memcpy(s, psz, len);
  } else {
    std::memset(s, 0, len);
  }
  return s;
}

void SysFreeString(BSTR bstrString) {
  if (bstrString == nullptr) return;
  std::free(reinterpret_cast<char*>(bstrString) - kPrefix);
}

UINT SysStringByteLen(BSTR bstr) { return bstr == nullptr ? 0 : *PrefixOf(bstr); }

UINT SysStringLen(BSTR pbstr) {
  return pbstr == nullptr ? 0 : *PrefixOf(pbstr) / static_cast<UINT>(sizeof(OLECHAR));
}

INT SysReAllocStringLen(BSTR* pbstr, const OLECHAR* psz, UINT len) {
  if (pbstr == nullptr) return FALSE;
  // The source may lie inside the old string: copy before freeing it.
  BSTR fresh = SysAllocStringLen(psz, len);
  if (fresh == nullptr) return FALSE;
  SysFreeString(*pbstr);
  *pbstr = fresh;
  return TRUE;
}

INT SysReAllocString(BSTR* pbstr, const OLECHAR* psz) {
  if (pbstr == nullptr) return FALSE;
  if (psz == nullptr) {
    SysFreeString(*pbstr);
    *pbstr = nullptr;
    return TRUE;
  }
  size_t n = TerminatedLength(psz);
  if (n > kMaxBytes / sizeof(OLECHAR)) return FALSE;
  return SysReAllocStringLen(pbstr, psz, static_cast<UINT>(n));
}

}  // extern "C"

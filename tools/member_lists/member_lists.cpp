#include "tools/member_lists/member_lists.h"

#include <parcelvane/identifiers.h>
#include <parcelvane/interfaces.h>

#include <sstream>

namespace pv::lists {

#define PV_KIND_METHOD Kind::kMethod
#define PV_KIND_GET Kind::kGet
#define PV_KIND_PUT Kind::kPut
#define PV_MEMBER_ENTRY(kind, name, params, optional) {PV_KIND_##kind, #name, #params, optional},
#define PV_DUAL_ENTRY(I) {#I, IID_##I, true, {PV_MEMBERS_##I(PV_MEMBER_ENTRY)}},
#define PV_CUSTOM_ENTRY(I) {#I, IID_##I, false, {PV_MEMBERS_##I(PV_MEMBER_ENTRY)}},

const std::vector<Interface>& Interfaces() {
  static const std::vector<Interface> all = {PV_DUAL_INTERFACES(PV_DUAL_ENTRY)
                                                 PV_CUSTOM_INTERFACES(PV_CUSTOM_ENTRY)};
  return all;
}

namespace {

std::string Trim(const std::string& s) {
  size_t b = s.find_first_not_of(" \t");
  size_t e = s.find_last_not_of(" \t");
  return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

}  // namespace

std::vector<Param> SplitParams(const std::string& text) {
  std::vector<Param> params;
  std::string inner = text.substr(1, text.size() - 2);
  std::stringstream list(inner);
  std::string item;
  while (std::getline(list, item, ',')) {
    item = Trim(item);
    if (item.empty()) continue;
    size_t split = item.find_last_of(" *");
    Param p;
    std::string type = item.substr(0, split + 1);
    p.name = item.substr(split + 1);
    for (char c : type) {
      if (c != ' ' && c != '\t') p.type += c;
    }
    params.push_back(p);
  }
  return params;
}

bool IsResultPlace(const std::string& type) {
  if (type.empty() || type.back() != '*') return false;
  if (type.rfind("IEMS", 0) == 0) return type.size() > 2 && type.compare(type.size() - 2, 2, "**") == 0;
  return true;
}

std::string AbiName(const Member& m) {
  switch (m.kind) {
    case Kind::kGet:
      return std::string("get_") + m.name;
    case Kind::kPut:
      return std::string("put_") + m.name;
    case Kind::kMethod:
      break;
  }
  return m.name;
}

}  // namespace pv::lists

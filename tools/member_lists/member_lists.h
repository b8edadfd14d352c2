// The interface member lists of the public header as data, for the tools
// that run on the build machine and write code or descriptions from them
// (make_idl, make_abi): one reading of the lists and one parameter split.
#ifndef PARCELVANE_TOOLS_MEMBER_LISTS_MEMBER_LISTS_H
#define PARCELVANE_TOOLS_MEMBER_LISTS_MEMBER_LISTS_H

#include <parcelvane/platform.h>

#include <string>
#include <vector>

namespace pv::lists {

enum class Kind { kMethod, kGet, kPut };

struct Member {
  Kind kind;
  const char* name;
  const char* params;  // "(BSTR bszVal, BSTR* pVal)"
  int optional;
};

struct Interface {
  const char* name;
  GUID iid;
  bool dual;  // derives from IDispatch and has a late-binding description
  std::vector<Member> members;
};

// Every interface, the dual ones first, each in the order of the lists.
const std::vector<Interface>& Interfaces();

struct Param {
  std::string type;  // as in C++ without blanks, "IEMSDataObject**"
  std::string name;
};

// "(BSTR bszVal, BSTR* pVal)" as types and names.
std::vector<Param> SplitParams(const std::string& text);

// Whether a parameter of this type is a result place: a pointer to one of
// the library's interface pointers, or a pointer to a value that is not an
// interface (BSTR*, LONG*, ULONG*, VARIANT*).
bool IsResultPlace(const std::string& type);

// The operation's name as the interface spells it: get_Name, put_Name, Name.
std::string AbiName(const Member& m);

}  // namespace pv::lists

#endif  // PARCELVANE_TOOLS_MEMBER_LISTS_MEMBER_LISTS_H

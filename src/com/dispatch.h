// Late binding: the description of each dual interface (its operations'
// names, kinds, dispatch identifiers and argument counts) and the IDispatch
// behaviour driven by it.
#ifndef PARCELVANE_SRC_COM_DISPATCH_H
#define PARCELVANE_SRC_COM_DISPATCH_H

#include <cstdint>
#include <vector>

#include "parcelvane/interfaces.h"
#include "src/com/dispatch_ids.h"
#include "src/platform/strings.h"

namespace pv {

enum class MemberKind : uint8_t { kMethod, kGet, kPut };

// Calls one operation on `iface` (the interface pointer) with arguments
// taken from a DISPPARAMS. `in` holds one variant per in-argument, in the
// operation's order, null for an omitted one; the result, if the operation
// has one, goes to `result`.
// An argument conversion failure sets *badArg to the argument's position;
// otherwise it stays kNoBadArgument.
constexpr UINT kNoBadArgument = 0xFFFFFFFFu;
using InvokeThunk = HRESULT (*)(void* iface, const VARIANT* const* in, VARIANT* result, UINT* badArg);

struct DispatchMember {
  const char* name;
  MemberKind kind;
  int inCount;        // arguments the caller supplies (the result place excluded)
  int optionalCount;  // trailing in-arguments that may be left out
  bool hasResult;
  InvokeThunk thunk;
  DISPID id;  // filled in by the table
};

// A collection's two members for scripts: the indexed getter that answers
// DISPID_VALUE (parts(0)) and the count that, with it, fills the
// enumerator of DISPID_NEWENUM (For Each). Neither adds a slot or changes
// an identifier of the interface.
struct CollectionMembers {
  const char* item = nullptr;
  const char* count = nullptr;
};

class DispatchTable {
 public:
  static constexpr DISPID kFirstId = kFirstDispatchId;

  DispatchTable(const char* interfaceName, std::vector<DispatchMember> members,
                CollectionMembers collection = {});

  const char* interfaceName() const { return interfaceName_; }
  const std::vector<DispatchMember>& members() const { return members_; }

  // GetIDsOfNames: the first name is an operation (matched without regard
  // to case); further names (arguments) are not known.
  HRESULT IdsOfNames(LPOLESTR* names, UINT count, DISPID* ids) const;

  // Invoke on the interface pointer `iface`.
  HRESULT Invoke(void* iface, DISPID id, REFIID riid, WORD flags, DISPPARAMS* params, VARIANT* result,
                 EXCEPINFO* excep, UINT* argErr) const;

 private:
  const DispatchMember* Find(DISPID id, WORD flags) const;
  const DispatchMember* FindGetter(const char* name) const;
  // DISPID_NEWENUM: an enumerator over every item, as VT_UNKNOWN.
  HRESULT NewEnum(void* iface, VARIANT* result) const;

  const char* interfaceName_;
  std::vector<DispatchMember> members_;
  CollectionMembers collection_;
};

// The description of each dual interface.
template <class I>
const DispatchTable& DispatchTableOf();

#define PV_DECLARE_DISPATCH_TABLE(I) \
  template <>                        \
  const DispatchTable& DispatchTableOf<I>();
PV_DUAL_INTERFACES(PV_DECLARE_DISPATCH_TABLE)
#undef PV_DECLARE_DISPATCH_TABLE

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_DISPATCH_H

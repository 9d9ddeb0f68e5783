// IDispatch::Invoke of our own, driven by a table of members: every late-bound
// client works however it passes its arguments. Each argument is coerced to its
// declared type whether it arrives by value, as VT_BYREF of its type or as
// VT_BYREF|VT_VARIANT (VBScript's variables); omitted optional arguments take their
// defaults. Arguments are converted on copies and never written back: no member
// changes its arguments, so the caller's variables keep their values and types.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "control/com_util.h"

namespace tq::com {

class ctlTqColorSetting;

struct ParamSpec {
  const wchar_t* name;
  VARTYPE type;   // VT_VARIANT: passed on as it came, references resolved
  bool optional;  // omitted: "" / 0 / False by type; a VARIANT stays "missing"
};

// A member's failure: DISP_E_TYPEMISMATCH or DISP_E_OVERFLOW naming the declared
// parameter at fault, or DISP_E_EXCEPTION with a description for the host.
struct Failure {
  HRESULT code = S_OK;
  int param = -1;
  std::string description;
};

using Args = std::vector<Variant>;  // coerced, in declared order
using MemberBody = void (*)(ctlTqColorSetting& control, Args& args, Variant& result, Failure& failure);

struct MemberSpec {
  DISPID id;
  const wchar_t* name;
  std::span<const ParamSpec> params;
  MemberBody body;
};

// The control's members (members.cpp).
std::span<const MemberSpec> ControlMembers();

// Member names, then parameter names of that member (ids = parameter positions);
// case-insensitive as the script languages expect.
HRESULT LookUpNames(std::span<const MemberSpec> members, LPOLESTR* names, UINT count, DISPID* ids);

// The dispatch path of Invoke and the vtable methods, under the one guard: nothing
// thrown leaves it; an allocation failure is E_OUTOFMEMORY, any other exception
// DISP_E_EXCEPTION with its description in `exception`.
HRESULT InvokeMember(std::span<const MemberSpec> members, ctlTqColorSetting& control, DISPID id, WORD flags,
                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, UINT* arg_err);

}  // namespace tq::com

#include "control/dispatch.h"

#include "win32/guard.h"

namespace tq::com {
namespace {

constexpr wchar_t kSource[] = L"TqColorSettingTool.ctlTqColorSetting";

bool IsMissing(const VARIANT* arg) {
  return !arg || (arg->vt == VT_ERROR && arg->scode == DISP_E_PARAMNOTFOUND);
}

HRESULT DefaultOf(const ParamSpec& param, Variant& out) {
  VARIANT* v = out.put();
  switch (param.type) {
    case VT_BSTR:
      v->bstrVal = SysAllocString(L"");
      if (!v->bstrVal) return E_OUTOFMEMORY;
      break;
    case VT_VARIANT:
      v->vt = VT_ERROR;
      v->scode = DISP_E_PARAMNOTFOUND;
      return S_OK;
    default:
      v->llVal = 0;  // 0 and False alike
      break;
  }
  v->vt = param.type;
  return S_OK;
}

// Overflow is reported as such; every other failure to convert is a type mismatch.
HRESULT Coerce(const VARIANT& arg, VARTYPE type, Variant& out) {
  if (FAILED(CopyDereferenced(arg, out))) return DISP_E_TYPEMISMATCH;
  if (type == VT_VARIANT) return S_OK;
  const HRESULT hr = VariantChangeType(out.get(), out.get(), 0, type);
  if (hr == DISP_E_OVERFLOW || hr == E_OUTOFMEMORY) return hr;
  return FAILED(hr) ? DISP_E_TYPEMISMATCH : S_OK;
}

void FillException(EXCEPINFO* exception, const std::string& description) {
  if (!exception) return;
  *exception = EXCEPINFO{};
  exception->scode = E_FAIL;
  exception->bstrSource = SysAllocString(kSource);
  exception->bstrDescription = NewBstr(description);
}

}  // namespace

HRESULT LookUpNames(std::span<const MemberSpec> members, LPOLESTR* names, UINT count, DISPID* ids) {
  if (!names || !ids) return E_POINTER;
  if (count == 0) return S_OK;
  for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
  const MemberSpec* member = nullptr;
  for (const MemberSpec& m : members)
    if (names[0] && _wcsicmp(names[0], m.name) == 0) member = &m;
  if (!member) return DISP_E_UNKNOWNNAME;
  ids[0] = member->id;
  HRESULT hr = S_OK;
  for (UINT i = 1; i < count; ++i) {
    for (std::size_t p = 0; p < member->params.size(); ++p)
      if (names[i] && _wcsicmp(names[i], member->params[p].name) == 0) ids[i] = static_cast<DISPID>(p);
    if (ids[i] == DISPID_UNKNOWN) hr = DISP_E_UNKNOWNNAME;
  }
  return hr;
}

namespace {

// InvokeMember without its guard.
HRESULT Dispatch(std::span<const MemberSpec> members, ctlTqColorSetting& control, DISPID id, WORD flags,
                 DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, UINT* arg_err) {
  const MemberSpec* member = nullptr;
  for (const MemberSpec& m : members)
    if (m.id == id) member = &m;
  if (!member || !(flags & (DISPATCH_METHOD | DISPATCH_PROPERTYGET))) return DISP_E_MEMBERNOTFOUND;
  DISPPARAMS none{};
  if (!params) params = &none;
  if (params->cNamedArgs > params->cArgs || (params->cArgs && !params->rgvarg)) return E_INVALIDARG;

  // Where each declared parameter comes from (rgvarg holds the positional ones reversed).
  const std::size_t count = member->params.size();
  const UINT positional = params->cArgs - params->cNamedArgs;
  if (positional > count) return DISP_E_BADPARAMCOUNT;
  std::vector<int> source(count, -1);
  for (UINT i = 0; i < positional; ++i) source[i] = static_cast<int>(params->cArgs - 1 - i);
  for (UINT j = 0; j < params->cNamedArgs; ++j) {
    const DISPID named = params->rgdispidNamedArgs ? params->rgdispidNamedArgs[j] : -1;
    if (named < 0 || static_cast<std::size_t>(named) >= count || source[named] >= 0) {
      if (arg_err) *arg_err = j;
      return DISP_E_PARAMNOTFOUND;
    }
    source[named] = static_cast<int>(j);
  }

  Args args(count);
  for (std::size_t i = 0; i < count; ++i) {
    const ParamSpec& declared = member->params[i];
    VARIANT* arg = source[i] >= 0 ? &params->rgvarg[source[i]] : nullptr;
    HRESULT hr;
    if (IsMissing(arg)) {
      if (!declared.optional) return DISP_E_PARAMNOTOPTIONAL;
      hr = DefaultOf(declared, args[i]);
    } else {
      hr = Coerce(*arg, declared.type, args[i]);
    }
    if (FAILED(hr)) {
      if (arg_err && source[i] >= 0) *arg_err = static_cast<UINT>(source[i]);
      return hr;
    }
  }

  Variant value;
  Failure failure;
  member->body(control, args, value, failure);
  if (failure.code == DISP_E_EXCEPTION) {
    FillException(exception, failure.description);
    return DISP_E_EXCEPTION;
  }
  if (FAILED(failure.code)) {
    if (arg_err && failure.param >= 0 && source[failure.param] >= 0) *arg_err = static_cast<UINT>(source[failure.param]);
    return failure.code;
  }
  if (result) value.MoveTo(result);
  return S_OK;
}

}  // namespace

HRESULT InvokeMember(std::span<const MemberSpec> members, ctlTqColorSetting& control, DISPID id, WORD flags,
                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, UINT* arg_err) {
  return tq::win::GuardCom([&] { return Dispatch(members, control, id, flags, params, result, exception, arg_err); },
                           [&](const char* what) {
                             FillException(exception, what);
                             return DISP_E_EXCEPTION;
                           });
}

}  // namespace tq::com

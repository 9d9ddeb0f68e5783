// The control's four members: coerced arguments in, the thread's session, the
// result out. The session decides; this file only converts.
#include <memory>

#include "control/control.h"
#include "control/dispatch.h"
#include "control/host_link.h"
#include "control/values.h"
#include "win32/thread_state.h"

namespace tq::com {
namespace {

frmTqColorSetting& Session() { return tq::win::ThreadState::This().Session(); }

std::string Text(const Variant& v) { return FromBstr(v->bstrVal); }

void Report(const SessionError& error, int param, Failure& failure) {
  if (!error) return;
  failure.code = error.kind == SessionError::Kind::TypeMismatch ? DISP_E_TYPEMISMATCH : DISP_E_EXCEPTION;
  failure.param = param;
  failure.description = error.description;
}

// Converts a value in place (the dispatch layer's copy, never the caller's); a value
// that does not convert is the host's error, reported against the declared parameter
// `param`.
bool ConvertTo(Variant& value, VARTYPE type, int param, Failure& failure) {
  const HRESULT hr = VariantChangeType(value.get(), value.get(), 0, type);
  if (SUCCEEDED(hr)) return true;
  failure.code = hr == DISP_E_OVERFLOW ? DISP_E_OVERFLOW : DISP_E_TYPEMISMATCH;
  failure.param = param;
  return false;
}

void RunShow(ctlTqColorSetting& control, Args& a, Variant& result, Failure& failure) {
  SessionError error;
  const bool ok = Session().Show(control.Instance(), Text(a[0]), a[1]->iVal, a[2]->iVal, a[3]->boolVal != VARIANT_FALSE, error);
  Report(error, -1, failure);
  ToVariant(ok, result);
}

void RunShow2(ctlTqColorSetting& control, Args& a, Variant& result, Failure& failure) {
  SessionError error;
  const bool ok = Session().Show2(control.Instance(), Text(a[0]), Text(a[1]), a[2]->iVal, a[3]->boolVal != VARIANT_FALSE, error);
  Report(error, -1, failure);
  ToVariant(ok, result);
}

void RunSetObjectValue(ctlTqColorSetting& control, Args& a, Variant&, Failure& failure) {
  const std::string key = Text(a[0]);
  Variant& value = a[1];
  SessionValue converted;
  switch (SetObjectValueConversion(key)) {
    case ValueConversion::Unknown:
    case ValueConversion::Ignored:
      return;
    case ValueConversion::NoValue:
      break;
    case ValueConversion::HostObject: {
      std::shared_ptr<HostLink> host;
      if (HRESULT hr = BindHost(*value.get(), host); FAILED(hr)) {
        failure.code = hr;
        failure.param = 1;
        return;
      }
      // Like the other context keys, a new host object reaches an open editor only once
      // it has closed (a session that does not exist yet has no editor open).
      auto install = [host = std::move(host)]() mutable { InstallThreadHost(std::move(host)); };
      tq::win::ThreadState* state = tq::win::ThreadState::Find();
      if (state && state->session)
        state->session->WhenClosed(std::move(install));
      else
        install();
      return;
    }
    case ValueConversion::ExactText:
      converted = SUCCEEDED(VariantChangeType(value.get(), value.get(), 0, VT_BSTR)) ? Text(value) : std::string();
      break;
    case ValueConversion::String:
      if (!ConvertTo(value, VT_BSTR, 1, failure)) return;
      converted = Text(value);
      break;
    case ValueConversion::Int16:
      if (!ConvertTo(value, VT_I2, 1, failure)) return;
      converted = static_cast<std::int16_t>(value->iVal);
      break;
    case ValueConversion::Int32:
      if (!ConvertTo(value, VT_I4, 1, failure)) return;
      converted = static_cast<std::int32_t>(value->lVal);
      break;
    case ValueConversion::Bool:
      if (!ConvertTo(value, VT_BOOL, 1, failure)) return;
      converted = value->boolVal != VARIANT_FALSE;
      break;
  }
  SessionError error;
  Session().SetObjectValue(control.Instance(), key, converted, error);
  Report(error, 1, failure);
}

void RunGetObjectValue(ctlTqColorSetting&, Args& a, Variant& result, Failure& failure) {
  const std::string key = Text(a[0]);
  if (!IsSessionValueKey(key)) return;  // Empty, and a host's read creates no session
  std::int16_t index = 0;
  if (key == "ColorByIndex") {
    if (!ConvertTo(a[1], VT_I2, 1, failure)) return;
    index = a[1]->iVal;
  }
  SessionError error;
  const SessionValue value = Session().GetObjectValue(key, index, error);
  Report(error, 1, failure);
  if (!error && FAILED(ToVariant(value, result))) failure.code = E_OUTOFMEMORY;
}

constexpr ParamSpec kShowParams[] = {
    {L"ClutFile", VT_BSTR, false},
    {L"TabNumber", VT_I2, true},
    {L"CategoryNumber", VT_I2, true},
    {L"EnableChanges", VT_BOOL, true},
};
constexpr ParamSpec kShow2Params[] = {
    {L"ClutFile", VT_BSTR, false},
    {L"TabName", VT_BSTR, true},
    {L"CategoryNumber", VT_I2, true},
    {L"EnableChanges", VT_BOOL, true},
};
constexpr ParamSpec kSetParams[] = {
    {L"key", VT_BSTR, false},
    {L"Value", VT_VARIANT, false},
};
constexpr ParamSpec kGetParams[] = {
    {L"key", VT_BSTR, false},
    {L"Param", VT_VARIANT, true},
};

const MemberSpec kMembers[] = {
    {DISPID_TQ_SHOW, L"Show", kShowParams, &RunShow},
    {DISPID_TQ_SHOW2, L"Show2", kShow2Params, &RunShow2},
    {DISPID_TQ_SETOBJECTVALUE, L"SetObjectValue", kSetParams, &RunSetObjectValue},
    {DISPID_TQ_GETOBJECTVALUE, L"GetObjectValue", kGetParams, &RunGetObjectValue},
};

}  // namespace

std::span<const MemberSpec> ControlMembers() { return kMembers; }

}  // namespace tq::com

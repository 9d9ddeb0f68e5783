#include "control/host_link.h"

#include <dispex.h>

#include <map>
#include <string>
#include <utility>
#include <vector>

#include "control/values.h"
#include "win32/thread_state.h"
#include "win32/win_platform.h"

namespace tq::com {
namespace {

HRESULT FindMember(IDispatch* object, const wchar_t* name, DISPID& id, bool& by_ex) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
  by_ex = false;
  if (SUCCEEDED(object->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id))) return S_OK;
  // Script class instances answer only through IDispatchEx.
  ComPtr<IDispatchEx> ex;
  if (FAILED(object->QueryInterface(IID_PPV_ARGS(&ex)))) return DISP_E_UNKNOWNNAME;
  Bstr bname(name);
  const HRESULT hr = ex->GetDispID(bname.get(), fdexNameCaseInsensitive, &id);
  by_ex = SUCCEEDED(hr);
  return hr;
}

class DispatchHost final : public HostLink, public std::enable_shared_from_this<DispatchHost> {
 public:
  explicit DispatchHost(ComPtr<IDispatch> object) : object_(std::move(object)) {}

  bool Evaluate(const std::string& expression, std::int32_t& status, HostValue& value) override {
    return Guarded([&] {
      Bstr text(expression);
      Variant status_var, value_var;
      status_var->vt = VT_I4;
      status_var->lVal = 0;
      LONG typed_status = 0;
      VARIANT args[3];  // reversed: value, status, expression
      args[0].vt = VT_BYREF | VT_VARIANT;
      args[0].pvarVal = value_var.get();
      args[2].vt = VT_BSTR;
      args[2].bstrVal = text.get();
      // The contract types the status as a 32-bit integer out-parameter; script hosts
      // need a Variant. A host declared (BSTR, long*, VARIANT*) behind its type
      // information refuses the Variant with a type mismatch: it gets the integer,
      // from then on straight away.
      HRESULT hr = DISP_E_TYPEMISMATCH;
      if (!typed_status_) {
        args[1].vt = VT_BYREF | VT_VARIANT;
        args[1].pvarVal = status_var.get();
        hr = Call(L"HostEvaluate", args, 3);
      }
      if (hr == DISP_E_TYPEMISMATCH) {
        args[1].vt = VT_BYREF | VT_I4;
        args[1].plVal = &typed_status;
        hr = Call(L"HostEvaluate", args, 3);
        if (SUCCEEDED(hr)) typed_status_ = true;
        VARIANT* typed = status_var.put();
        typed->vt = VT_I4;
        typed->lVal = typed_status;
      }
      if (FAILED(hr)) return false;
      if (FAILED(VariantChangeType(status_var.get(), status_var.get(), 0, VT_I4))) return false;
      status = status_var->lVal;
      value = ToHostValue(*value_var.get());
      last_value_ = std::move(value_var);
      last_host_value_ = value;
      return true;
    });
  }

  bool Notify(const std::string& event_name, const std::string& text, const HostValue& value) override {
    return Guarded([&] {
      Bstr name(event_name), body(text);
      // The host gets back exactly what it returned when the value is its own.
      Variant own;
      if (SameHostValue(value, last_host_value_)) {
        if (FAILED(VariantCopy(own.get(), last_value_.get()))) return false;
      } else if (FAILED(FromHostValue(value, own))) {
        return false;
      }
      VARIANT args[3];
      args[0] = *own.get();
      args[1].vt = VT_BSTR;
      args[1].bstrVal = body.get();
      args[2].vt = VT_BSTR;
      args[2].bstrVal = name.get();
      return SUCCEEDED(Call(L"HostNotify", args, 3));
    });
  }

  bool FileNotice(const std::string& text) override { return CallWithText(L"HostFileNotice", text); }
  bool RemoveFile(const std::string& path) override { return CallWithText(L"HostRemoveFile", path); }
  bool CreateFolder(const std::string& path) override { return CallWithText(L"HostCreateFolder", path); }
  bool Request(const std::string& text) override { return CallWithText(L"HostRequest", text); }

 private:
  template <class F>
  bool Guarded(F&& body) {
    // A host that calls the control back from inside a call and makes it call the
    // host again gets a failed call instead of an endless recursion.
    bool& in_host_call = tq::win::ThreadState::This().in_host_call;
    if (in_host_call) return false;
    // The host may replace or drop itself while it runs: keep this object alive.
    auto keep = shared_from_this();
    in_host_call = true;
    bool ok = false;
    try {
      ok = body();
    } catch (...) {
      ok = false;
    }
    in_host_call = false;
    return ok;
  }

  bool CallWithText(const wchar_t* member, const std::string& text) {
    return Guarded([&] {
      Bstr body(text);
      VARIANT arg;
      arg.vt = VT_BSTR;
      arg.bstrVal = body.get();
      return SUCCEEDED(Call(member, &arg, 1));
    });
  }

  // Calls a member of the host by name; fails when the host lacks it or raised an error.
  HRESULT Call(const wchar_t* member, VARIANT* args, UINT count) {
    ComPtr<IDispatch> object = object_;
    auto found = ids_.find(member);
    if (found == ids_.end()) {
      Member m;
      if (HRESULT hr = FindMember(object.Get(), member, m.id, m.by_ex); FAILED(hr)) return hr;
      found = ids_.emplace(member, m).first;
    }
    const Member m = found->second;
    DISPPARAMS params{args, nullptr, count, 0};
    Variant result;
    ExcepInfo exception;
    HRESULT hr;
    ComPtr<IDispatchEx> ex;
    if (m.by_ex && SUCCEEDED(object.As(&ex)))
      hr = ex->InvokeEx(m.id, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result.get(), &exception, nullptr);
    else
      hr = object->Invoke(m.id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, result.get(),
                          &exception, nullptr);
    return hr;
  }

  struct Member {
    DISPID id = DISPID_UNKNOWN;
    bool by_ex = false;
  };
  ComPtr<IDispatch> object_;
  std::map<std::wstring, Member> ids_;
  bool typed_status_ = false;  // HostEvaluate takes its status as VT_BYREF|VT_I4
  Variant last_value_;
  HostValue last_host_value_;
};

}  // namespace

HRESULT BindHost(const VARIANT& value, std::shared_ptr<HostLink>& host) {
  host.reset();
  Variant plain;
  if (FAILED(CopyDereferenced(value, plain))) return DISP_E_TYPEMISMATCH;
  if (plain.vt() == VT_NULL) return S_OK;  // JScript's null, as Nothing
  if (plain.vt() != VT_DISPATCH && plain.vt() != VT_UNKNOWN) return DISP_E_TYPEMISMATCH;
  if (!plain->punkVal) return S_OK;
  ComPtr<IDispatch> object;
  if (FAILED(plain->punkVal->QueryInterface(IID_PPV_ARGS(&object)))) return DISP_E_TYPEMISMATCH;
  DISPID id;
  bool by_ex;
  if (FAILED(FindMember(object.Get(), L"HostEvaluate", id, by_ex))) return DISP_E_TYPEMISMATCH;
  host = std::make_shared<DispatchHost>(std::move(object));
  return S_OK;
}

}  // namespace tq::com

namespace tq::com {

void InstallThreadHost(std::shared_ptr<HostLink> host) {
  tq::win::ThreadState& state = tq::win::ThreadState::This();
  std::shared_ptr<HostLink> replaced = std::exchange(state.host, std::move(host));
  if (state.control_calls > 0 && replaced) state.retired_hosts.push_back(std::move(replaced));
}

ControlCall::ControlCall() { ++tq::win::ThreadState::This().control_calls; }

ControlCall::~ControlCall() {
  tq::win::ThreadState& state = tq::win::ThreadState::This();
  if (state.control_calls > 0) --state.control_calls;  // none counted when the state was ended meanwhile
  if (state.control_calls == 0) state.retired_hosts.clear();
}

}  // namespace tq::com

// The host's list-communication object played by a C++ object answering by name,
// well-behaved or not: the control must survive errors, junk and re-entry.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "control/client.h"

namespace {

using test::ArgList;
using test::ComPtr;

class TestHost final : public test::HostDispatch {
 public:
  enum class Mode { Answer, Raise, Junk, Reenter };
  Mode mode = Mode::Answer;
  IDispatch* control = nullptr;  // for re-entry
  std::vector<std::wstring> calls;
  VARIANT notified{};

  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override {
    std::wstring call = kMembers[id - 1];
    for (UINT i = p->cArgs; i-- > 0;)
      if (p->rgvarg[i].vt == VT_BSTR) call += L"|" + std::wstring(p->rgvarg[i].bstrVal);
    calls.push_back(call);
    if (mode == Mode::Raise) return DISP_E_EXCEPTION;
    if (id == 2) VariantCopy(&notified, &p->rgvarg[0]);
    if (id != 1) return S_OK;
    VARIANT* status = p->rgvarg[1].pvarVal;
    VARIANT* value = p->rgvarg[0].pvarVal;
    if (mode == Mode::Reenter) {  // calls back while the control waits for this answer, and drops itself as host
      ArgList again, nothing;
      again.Str(L"SendColorValues").Null().Invoke(control, L"SetObjectValue");
      nothing.Str(L"ListCommRef").Object(nullptr).Invoke(control, L"SetObjectValue");
    }
    VariantClear(status);
    VariantClear(value);
    status->vt = mode == Mode::Junk ? VT_UNKNOWN : VT_I4;  // a null IUnknown is no number
    status->punkVal = nullptr;                             // and VT_I4 0 is success
    SAFEARRAYBOUND bound{2, 1};  // 1-based, as the process display answers
    value->vt = VT_ARRAY | VT_VARIANT;
    value->parray = SafeArrayCreate(VT_VARIANT, 1, &bound);
    return S_OK;
  }
  ~TestHost() { VariantClear(&notified); }
};

// A compiled host: HostEvaluate declared (BSTR, long*, VARIANT*) and called through the
// standard type-information dispatch (DispInvoke), which takes only the declared types.
class TypedHost final : public test::StackDispatch {
 public:
  TypedHost() {
    auto name = [](const wchar_t* text) { return const_cast<OLECHAR*>(text); };
    PARAMDATA evaluate[] = {{name(L"expression"), VT_BSTR}, {name(L"status"), VT_BYREF | VT_I4},
                            {name(L"value"), VT_BYREF | VT_VARIANT}};
    PARAMDATA notify[] = {{name(L"eventName"), VT_BSTR}, {name(L"text"), VT_BSTR}, {name(L"value"), VT_VARIANT}};
    METHODDATA methods[] = {{name(L"HostEvaluate"), evaluate, 1, 0, CC_STDCALL, 3, DISPATCH_METHOD, VT_EMPTY},
                            {name(L"HostNotify"), notify, 2, 1, CC_STDCALL, 3, DISPATCH_METHOD, VT_EMPTY}};
    INTERFACEDATA data{methods, 2};
    ComPtr<ITypeInfo> coclass;  // made around the interface: its one implemented type
    HREFTYPE ref = 0;
    if (SUCCEEDED(CreateDispTypeInfo(&data, LOCALE_SYSTEM_DEFAULT, &coclass)) &&
        SUCCEEDED(coclass->GetRefTypeOfImplType(0, &ref)))
      coclass->GetRefTypeInfo(ref, &info_);
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    return DispGetIDsOfNames(info_.Get(), names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* p, VARIANT* result, EXCEPINFO* e,
                      UINT* arg_err) override {
    ++invokes;
    return DispInvoke(&members_, info_.Get(), id, flags, p, result, e, arg_err);
  }
  int invokes = 0;
  std::vector<std::wstring> calls;

 private:
  struct Members {  // the vtable the type information describes
    explicit Members(std::vector<std::wstring>& seen) : calls(seen) {}
    virtual void STDMETHODCALLTYPE HostEvaluate(BSTR expression, long* status, VARIANT* value) {
      calls.push_back(L"HostEvaluate|" + std::wstring(expression).substr(0, 13));
      *status = 0;
      VariantClear(value);
      value->vt = VT_I4;
      value->lVal = 7;
    }
    virtual void STDMETHODCALLTYPE HostNotify(BSTR event, BSTR, VARIANT value) {
      calls.push_back(L"HostNotify|" + std::wstring(event) + L"|" + std::to_wstring(value.lVal));
    }
    std::vector<std::wstring>& calls;
  } members_{calls};
  ComPtr<ITypeInfo> info_;
};

class HostBinding : public ::testing::Test {
 protected:
  HRESULT Set(const wchar_t* key, IDispatch* object) {
    ArgList args;
    return (object ? args.Str(key).Object(object) : args.Str(key).Null()).Invoke(control_.Get(), L"SetObjectValue");
  }

  test::Apartment apartment_;
  ComPtr<IDispatch> control_ = test::CreateControl();
  TestHost host_;
};

TEST_F(HostBinding, SendsColourListsAndGetsItsOwnValueBack) {
  ASSERT_EQ(Set(L"ListCommRef", &host_), S_OK);
  ASSERT_EQ(Set(L"SendColorValues", nullptr), S_OK);
  ASSERT_EQ(host_.calls.size(), 2u);
  EXPECT_EQ(host_.calls[0].rfind(L"HostEvaluate|#return LIST(AL1=LIST(BG=", 0), 0u) << host_.calls[0];
  EXPECT_EQ(host_.calls[1], L"HostNotify|ColorSchemeLoaded|");
  ASSERT_EQ(host_.notified.vt, VT_ARRAY | VT_VARIANT);
  LONG lower = 0;
  SafeArrayGetLBound(host_.notified.parray, 1, &lower);
  EXPECT_EQ(lower, 1);
}

TEST_F(HostBinding, HostWithTypedStatusGetsTheColourListsThroughItsTypeInformation) {
  TypedHost typed;
  ASSERT_EQ(Set(L"ListCommRef", &typed), S_OK);
  ASSERT_EQ(Set(L"SendColorValues", nullptr), S_OK);
  ASSERT_EQ(Set(L"SendColorValues", nullptr), S_OK);
  const std::wstring evaluate = L"HostEvaluate|#return LIST(", notify = L"HostNotify|ColorSchemeLoaded|7";
  EXPECT_EQ(typed.calls, (std::vector<std::wstring>{evaluate, notify, evaluate, notify}));
  EXPECT_EQ(typed.invokes, 5) << "after one refused Variant status, the typed status straight away";
  control_.Reset();
  EXPECT_EQ(typed.refs, 1u);
}

TEST_F(HostBinding, SurvivesHostsThatMisbehave) {
  for (TestHost::Mode mode : {TestHost::Mode::Raise, TestHost::Mode::Junk, TestHost::Mode::Reenter}) {
    SCOPED_TRACE(static_cast<int>(mode));
    host_.mode = mode;
    host_.control = control_.Get();
    host_.calls.clear();
    ASSERT_EQ(Set(L"ListCommRef", &host_), S_OK);
    EXPECT_EQ(Set(L"SendColorValues", nullptr), S_OK);
    // No notice after a failed or unreadable evaluation; a re-entered call reaches no host.
    EXPECT_EQ(host_.calls.size(), mode == TestHost::Mode::Reenter ? 2u : 1u);
  }
  control_.Reset();
  EXPECT_EQ(host_.refs, 1u) << "the control keeps no reference to its host";
}

}  // namespace

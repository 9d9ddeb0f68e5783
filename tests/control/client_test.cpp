// The control as a late-bound C++ client drives it (no type library): arguments in
// every variant form, registration through regsvr32, names and type information; and
// the host's list-communication object as a C++ object answering by name, well-behaved
// or not (errors, junk, re-entry) or compiled with typed arguments; events to a C++
// sink, Wine's ATL container siting it, and create/use/release cycles.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <string>
#include <vector>

#include "TqColorSettingTool_h.h"
#include "common/win_test_support.h"
#include "control/client.h"
#include "control/control.h"
#include "support/custom_file_dlg.h"

namespace {

using test::ArgList;
using test::BrowseSink;
using test::ComPtr;

std::wstring Guid(REFGUID guid) {
  wchar_t text[40];
  StringFromGUID2(guid, text, 40);
  return text;
}

bool ClassesKeyExists(const std::wstring& key) {
  HKEY handle;
  return RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &handle) == ERROR_SUCCESS && !RegCloseKey(handle);
}

TEST(Registration, RegistersAndUnregistersTwiceEach) {
  const std::wstring clsid = L"CLSID\\" + Guid(CLSID_ctlTqColorSetting);
  const std::wstring typelib = L"TypeLib\\" + Guid(LIBID_TqColorSettingTool);
  const std::vector<std::wstring> ours = {
      clsid + L"\\InprocServer32", clsid + L"\\Control", clsid + L"\\MiscStatus\\1",
      L"TqColorSettingTool.ctlTqColorSetting\\CurVer", L"TqColorSettingTool.ctlTqColorSetting.1\\CLSID",
      typelib + L"\\1.3\\409\\win64", L"Interface\\" + Guid(IID__ctlTqColorSetting),
      L"Interface\\" + Guid(DIID___ctlTqColorSetting)};
  for (bool unregister : {false, false, true, true}) {
    ASSERT_EQ(test::RunRegsvr32(unregister), 0u) << (unregister ? "unregister" : "register");
    for (const std::wstring& key : ours)
      EXPECT_EQ(ClassesKeyExists(key), !unregister) << std::string(key.begin(), key.end());
  }
  for (const std::wstring& key : {clsid, std::wstring(L"TqColorSettingTool.ctlTqColorSetting"), typelib})
    EXPECT_FALSE(ClassesKeyExists(key));
  ASSERT_EQ(test::RunRegsvr32(false), 0u);
}

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

class LateBound : public ::testing::Test {
 protected:
  // SetObjectValue(key, object), or Null for none.
  HRESULT Set(const wchar_t* key, IDispatch* object) {
    ArgList args;
    return (object ? args.Str(key).Object(object) : args.Str(key).Null()).Invoke(control_.Get(), L"SetObjectValue");
  }

  test::Apartment apartment_;
  ComPtr<IDispatch> control_ = test::CreateControl();
};

TEST_F(LateBound, CoercesEveryArgumentForm) {
  ASSERT_TRUE(control_);
  const wchar_t *set = L"SetObjectValue", *get = L"GetObjectValue";
  const struct {
    const char* what;
    const wchar_t* member;
    std::function<void(ArgList&)> args;
    HRESULT expected;
    int arg_err;          // expected puArgErr, -1 when not set
    const wchar_t* read;  // "key=text": then GetObjectValue(key) reads as text
  } cases[] = {
      {"I2", set, [](ArgList& a) { a.Str(L"AuthorizationLevel").I2(2); }, S_OK, -1, L"AuthorizationLevel=2"},
      {"byref BSTR key, byref variant holding text", set,
       [](ArgList& a) { a.RefStr(L"AuthorizationLevelGeneral").Str(L"4").RefVar(); }, S_OK, -1,
       L"AuthorizationLevelGeneral=4"},
      {"double rounds", set, [](ArgList& a) { a.Str(L"AuthorizationLevel").R8(6.6); }, S_OK, -1, L"AuthorizationLevel=7"},
      {"number to text", set, [](ArgList& a) { a.Str(L"UserFolder").I4(12); }, S_OK, -1, L"UserFolder=12"},
      {"text to boolean", set, [](ArgList& a) { a.Str(L"UseCustomFileDlg").Str(L"True"); }, S_OK, -1,
       L"UseCustomFileDlg=-1"},
      {"named arguments", set, [](ArgList& a) { a.Str(L"9").Named(1).Str(L"AuthorizationLevel").Named(0); }, S_OK, -1,
       L"AuthorizationLevel=9"},
      {"text that is no number", set, [](ArgList& a) { a.Str(L"AuthorizationLevel").Str(L"abc"); }, DISP_E_TYPEMISMATCH,
       0, L"AuthorizationLevel=9"},
      {"out of range", set, [](ArgList& a) { a.Str(L"AuthorizationLevel").I4(70000); }, DISP_E_OVERFLOW, 0,
       L"AuthorizationLevel=9"},
      {"null for text", set, [](ArgList& a) { a.Str(L"AppFolder").Null(); }, DISP_E_TYPEMISMATCH, 0, nullptr},
      {"null key", set, [](ArgList& a) { a.Null().Str(L"x"); }, DISP_E_TYPEMISMATCH, 1, nullptr},
      {"missing required value", set, [](ArgList& a) { a.Str(L"UserName"); }, DISP_E_PARAMNOTOPTIONAL, -1, nullptr},
      {"too many", set, [](ArgList& a) { a.Str(L"UserName").Str(L"a").Str(L"b"); }, DISP_E_BADPARAMCOUNT, -1, nullptr},
      {"ListCommRef not an object", set, [](ArgList& a) { a.Str(L"ListCommRef").I4(1); }, DISP_E_TYPEMISMATCH, 0, nullptr},
      {"unknown key", set, [](ArgList& a) { a.Str(L"NoSuchKey").Null(); }, S_OK, -1, L"NoSuchKey="},
      {"index omitted", get, [](ArgList& a) { a.Str(L"ColorByIndex").Missing(); }, DISP_E_TYPEMISMATCH, 0, nullptr},
      {"Param unused elsewhere", get, [](ArgList& a) { a.Str(L"AppFolder").Array(); }, S_OK, -1, nullptr},
  };
  for (const auto& c : cases) {
    ArgList args;
    c.args(args);
    VARIANT result{};
    UINT arg_err = 12345;
    EXPECT_EQ(args.Invoke(control_.Get(), c.member, &result, &arg_err), c.expected) << c.what;
    EXPECT_EQ(arg_err, c.arg_err < 0 ? 12345u : static_cast<UINT>(c.arg_err)) << c.what;
    VariantClear(&result);
    if (const wchar_t* eq = c.read ? wcschr(c.read, L'=') : nullptr) {
      EXPECT_EQ(test::GetText(control_.Get(), std::wstring(c.read, eq).c_str()), eq + 1) << c.what;
    }
  }
}

TEST_F(LateBound, ReturnsTypedValuesAndLeavesByReferenceArgumentsAlone) {
  ArgList args, table;
  VARIANT result{};
  ASSERT_EQ(args.Str(L"ColorByIndex").RefVar().RefR8(5.7).Invoke(control_.Get(), L"GetObjectValue", &result), S_OK);
  EXPECT_EQ(result.vt, VT_I4);
  EXPECT_EQ(args.Target(0).vt, VT_BSTR);
  EXPECT_STREQ(args.Target(0).bstrVal, L"ColorByIndex");
  EXPECT_EQ(args[1].vt, VT_BYREF | VT_R8);
  EXPECT_EQ(*args[1].pdblVal, 5.7) << "the index is read as 6, the caller's variable stays";
  ASSERT_EQ(table.Str(L"ColorsByIndexTable").Invoke(control_.Get(), L"GetObjectValue", &result), S_OK);
  ASSERT_EQ(result.vt, VT_ARRAY | VT_I4);
  EXPECT_EQ(result.parray->rgsabound[0].lLbound, 0);
  EXPECT_EQ(result.parray->rgsabound[0].cElements, 286u);
  VariantClear(&result);
}

// A host that only reads, on a thread of its own, where the toolkit is not installed:
// the reads create no session, so no "DVHOME not found" box comes up inside them.
TEST(WithoutToolkit, ReadsOfKeysTheSessionDoesNotKnowCreateNoSession) {
  HKEY key = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\DataViews\\DVtools\\2.6", 0,
                          KEY_ALL_ACCESS | KEY_WOW64_32KEY, &key),
            ERROR_SUCCESS);
  wchar_t home[MAX_PATH];
  DWORD size = sizeof home;
  ASSERT_EQ(RegGetValueW(key, nullptr, L"DVHOME", RRF_RT_REG_SZ, nullptr, home, &size), ERROR_SUCCESS);
  RegDeleteValueW(key, L"DVHOME");
  std::atomic<DWORD> thread{0};
  auto reads = std::async(std::launch::async, [&thread] {
    thread = GetCurrentThreadId();
    test::Apartment apartment;
    ComPtr<IDispatch> control = test::CreateControl();
    std::vector<VARTYPE> types;
    for (const wchar_t* name : {L"NoSuchKey", L"bUseListCommRef"}) {
      ArgList get, set;
      VARIANT result{};
      get.Str(name).Invoke(control.Get(), L"GetObjectValue", &result);
      types.push_back(result.vt);
      VariantClear(&result);
      set.Str(name).I4(1).Invoke(control.Get(), L"SetObjectValue");
    }
    return types;
  });
  std::wstring boxes;  // the text of each box that came up, answered with OK (or Yes)
  auto is_box = [](HWND window) { return tq::test::HasClass(window, L"#32770"); };
  for (int i = 0; i < 5 && reads.wait_for(std::chrono::seconds(i ? 1 : 10)) != std::future_status::ready; ++i) {
    if (HWND box = tq::test::WaitForWindow(is_box, thread, 5000)) {
      boxes += tq::test::ItemText(box, 0xFFFF) + L"\n";
      tq::test::PressButton(box, GetDlgItem(box, IDOK) ? IDOK : IDYES);
    }
  }
  const std::vector<VARTYPE> types = reads.get();
  RegSetValueExW(key, L"DVHOME", 0, REG_SZ, reinterpret_cast<const BYTE*>(home), size);
  RegCloseKey(key);
  EXPECT_EQ(boxes, L"") << "message boxes came up";
  EXPECT_EQ(types, (std::vector<VARTYPE>{VT_EMPTY, VT_EMPTY}));
}

TEST_F(LateBound, NamesAndTypeInformation) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(L"show2"), const_cast<LPOLESTR>(L"tabname"), const_cast<LPOLESTR>(L"nosuch")};
  DISPID ids[3];
  EXPECT_EQ(control_->GetIDsOfNames(IID_NULL, names, 3, 0, ids), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[0], DISPID_TQ_SHOW2);
  EXPECT_EQ(ids[1], 1);
  EXPECT_EQ(ids[2], DISPID_UNKNOWN);
  ComPtr<ITypeInfo> info;
  ASSERT_EQ(control_->GetTypeInfo(0, 0, &info), S_OK);
  BSTR name = nullptr;
  ASSERT_EQ(info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_STREQ(name, L"_ctlTqColorSetting");
  SysFreeString(name);
}

TEST_F(LateBound, SendsColourListsToItsHostAndGivesItsOwnValueBack) {
  TestHost host;
  ASSERT_EQ(Set(L"ListCommRef", &host), S_OK);
  ASSERT_EQ(Set(L"SendColorValues", nullptr), S_OK);
  ASSERT_EQ(host.calls.size(), 2u);
  EXPECT_EQ(host.calls[0].rfind(L"HostEvaluate|#return LIST(AL1=LIST(BG=", 0), 0u) << host.calls[0];
  EXPECT_EQ(host.calls[1], L"HostNotify|ColorSchemeLoaded|");
  ASSERT_EQ(host.notified.vt, VT_ARRAY | VT_VARIANT);
  LONG lower = 0;
  SafeArrayGetLBound(host.notified.parray, 1, &lower);
  EXPECT_EQ(lower, 1);
}

TEST_F(LateBound, HostWithTypedStatusGetsTheColourListsThroughItsTypeInformation) {
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

TEST_F(LateBound, SurvivesHostsThatMisbehave) {
  TestHost host;
  for (TestHost::Mode mode : {TestHost::Mode::Raise, TestHost::Mode::Junk, TestHost::Mode::Reenter}) {
    SCOPED_TRACE(static_cast<int>(mode));
    host.mode = mode;
    host.control = control_.Get();
    host.calls.clear();
    ASSERT_EQ(Set(L"ListCommRef", &host), S_OK);
    EXPECT_EQ(Set(L"SendColorValues", nullptr), S_OK);
    // No notice after a failed or unreadable evaluation; a re-entered call reaches no host.
    EXPECT_EQ(host.calls.size(), mode == TestHost::Mode::Reenter ? 2u : 1u);
  }
  control_.Reset();
  EXPECT_EQ(host.refs, 1u) << "the control keeps no reference to its host";
}

TEST(Events, BrowsePressedReachesEverySinkAndReadsTheAnswersBack) {
  test::Apartment apartment;
  BrowseSink first, second;
  second.cancel = true;
  {
    ComPtr<IUnknown> object;
    ComPtr<IProvideClassInfo2> class_info;
    ComPtr<IConnectionPointContainer> container;
    ComPtr<IEnumConnectionPoints> all;
    ComPtr<IConnectionPoint> point, listed;
    GUID events;
    ASSERT_EQ(tq::com::ctlTqColorSetting::Create(IID_PPV_ARGS(&object)), S_OK);
    ASSERT_EQ(object.As(&class_info), S_OK);
    ASSERT_EQ(class_info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
    ASSERT_EQ(object.As(&container), S_OK);
    ASSERT_EQ(container->FindConnectionPoint(events, &point), S_OK);
    ASSERT_EQ(container->EnumConnectionPoints(&all), S_OK);
    ASSERT_EQ(all->Next(1, &listed, nullptr), S_OK);
    EXPECT_EQ(listed.Get(), point.Get());
    DWORD cookie1 = 0, cookie2 = 0;
    ASSERT_EQ(point->Advise(&first, &cookie1), S_OK);
    ASSERT_EQ(point->Advise(&second, &cookie2), S_OK);
    ComPtr<IEnumConnections> connections, clone;
    ASSERT_EQ(point->EnumConnections(&connections), S_OK);
    CONNECTDATA data[3] = {};
    ULONG fetched = 0;
    EXPECT_EQ(connections->Skip(1), S_OK);
    ASSERT_EQ(connections->Clone(&clone), S_OK);
    ASSERT_EQ(connections->Reset(), S_OK);
    ASSERT_EQ(connections->Next(3, data, &fetched), S_FALSE);
    ASSERT_EQ(fetched, 2u);
    EXPECT_EQ(data[0].dwCookie, cookie1);
    EXPECT_EQ(data[1].dwCookie, cookie2);
    for (ULONG i = 0; i < fetched; ++i) data[i].pUnk->Release();
    ASSERT_EQ(clone->Next(1, data, nullptr), S_OK);  // the clone goes on where it was made
    EXPECT_EQ(data[0].dwCookie, cookie2);
    data[0].pUnk->Release();
    EXPECT_EQ(clone->Skip(1), S_FALSE);
    auto* control = static_cast<tq::com::ctlTqColorSetting*>(static_cast<_ctlTqColorSetting*>(
        static_cast<IUnknown*>(object.Get())));
    // Raised by the control's own file-dialog object, as the editor's import and export will.
    tq::HostValue file_name;
    bool cancel = false;
    control->Instance().CustomFileDlg->RaiseBrowse(4711, 1, "Open", "*.clut|*.clut", "a.clut", file_name, cancel);
    EXPECT_EQ(first.args[0], L"1|Open|*.clut|*.clut|a.clut");
    EXPECT_EQ(first.parents[0], 4711);
    EXPECT_EQ(file_name.text, "C:\\Schemes\\Night.clut");
    EXPECT_TRUE(cancel);
    ASSERT_EQ(point->Unadvise(cookie2), S_OK);
    EXPECT_EQ(point->Unadvise(cookie2), CONNECT_E_NOCONNECTION);
    EXPECT_FALSE(control->FireBrowsePressed({}).cancel);
    EXPECT_EQ(first.seen, (std::vector<DISPID>{3, 3}));
    EXPECT_EQ(second.seen, (std::vector<DISPID>{3}));
    ASSERT_EQ(point->Unadvise(cookie1), S_OK);
  }
  EXPECT_EQ(first.refs, 1u);
  EXPECT_EQ(second.refs, 1u);
}

TEST(AtlContainer, SitesTheControlByProgId) {
  test::Apartment apartment;
  HMODULE atl = LoadLibraryW(L"atl.dll");
  auto init = reinterpret_cast<BOOL(WINAPI*)()>(reinterpret_cast<void*>(GetProcAddress(atl, "AtlAxWinInit")));
  auto get_control = reinterpret_cast<HRESULT(WINAPI*)(HWND, IUnknown**)>(
      reinterpret_cast<void*>(GetProcAddress(atl, "AtlAxGetControl")));
  ASSERT_TRUE(atl && init && get_control && init());
  HWND frame = CreateWindowW(L"STATIC", L"host", WS_OVERLAPPEDWINDOW, 0, 0, 300, 200, nullptr, nullptr, nullptr, nullptr);
  HWND site = CreateWindowW(L"AtlAxWin", L"TqColorSettingTool.ctlTqColorSetting", WS_CHILD | WS_VISIBLE, 0, 0, 100, 50,
                            frame, nullptr, nullptr, nullptr);
  ASSERT_TRUE(frame && site);
  {
    ComPtr<IUnknown> object;
    ComPtr<IOleObject> ole;
    ComPtr<IOleClientSite> client;
    ASSERT_EQ(get_control(site, &object), S_OK);
    ASSERT_EQ(object.As(&ole), S_OK);
    EXPECT_TRUE(SUCCEEDED(ole->GetClientSite(&client)) && client) << "the container sited the control";
    DWORD misc = 0;
    ole->GetMiscStatus(DVASPECT_CONTENT, &misc);
    EXPECT_TRUE(misc & OLEMISC_INVISIBLEATRUNTIME);
  }
  DestroyWindow(frame);
}

// Memory and handles over a thousand cycles are the editor bench's figures; here, that
// no object outlives its client and the library may then unload.
TEST(Leaks, CyclesLeaveNoObjectAndNoReferenceBehind) {
  test::Apartment apartment;
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(DllGetClassObject(CLSID_ctlTqColorSetting, IID_PPV_ARGS(&factory)), S_OK);
  BrowseSink host_stand_in;  // any object: binding it is refused, which must not leak either
  const LONG live_before = tq::com::LiveCount();
  for (int i = 0; i < 10; ++i) {
    ComPtr<IDispatch> control;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&control)), S_OK);
    ArgList level, bind, read;
    VARIANT result{};
    ASSERT_EQ(level.Str(L"AuthorizationLevel").I4(i).Invoke(control.Get(), L"SetObjectValue"), S_OK);
    ASSERT_EQ(bind.Str(L"ListCommRef").Object(&host_stand_in).Invoke(control.Get(), L"SetObjectValue"),
              DISP_E_TYPEMISMATCH);
    ASSERT_EQ(read.Str(L"ColorsByIndexTable").Invoke(control.Get(), L"GetObjectValue", &result), S_OK);
    VariantClear(&result);
  }
  EXPECT_EQ(tq::com::LiveCount(), live_before);
  factory.Reset();
  EXPECT_EQ(tq::com::LiveCount(), 0);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  EXPECT_EQ(host_stand_in.refs, 1u);
}

}  // namespace

// The control as a container and an event client meet it: sited by Wine's ATL
// container, events to a C++ sink, and a thousand create/use/release cycles.
#include <gtest/gtest.h>
#include <windows.h>
#include <psapi.h>

#include <cstdint>
#include <cstdio>
#include <vector>

#include "control/client.h"
#include "control/control.h"
#include "support/custom_file_dlg.h"

namespace {

using test::ArgList;
using test::ComPtr;

// A sink for __ctlTqColorSetting that answers BrowsePressed like a host with its own dialog.
class BrowseSink final : public IDispatch {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, IID_IDispatch) && !IsEqualIID(iid, DIID___ctlTqColorSetting))
      return E_NOINTERFACE;
    *out = static_cast<IDispatch*>(this);
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++refs; }
  STDMETHODIMP_(ULONG) Release() override { return --refs; }
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS* p, VARIANT*, EXCEPINFO*, UINT*) override {
    seen.push_back(id);
    if (id != 3 || p->cArgs != 7) return DISP_E_BADPARAMCOUNT;
    // rgvarg reversed: Cancel, vRetVal, dlgFile, dlgFilter, dlgTitle, dlgType, dlgParent.
    args = std::to_wstring(p->rgvarg[6].lVal) + L"|" + std::to_wstring(p->rgvarg[5].iVal) + L"|" +
           p->rgvarg[4].bstrVal + L"|" + p->rgvarg[3].bstrVal + L"|" + p->rgvarg[2].bstrVal;
    VARIANT* answer = p->rgvarg[1].pvarVal;
    VariantClear(answer);
    answer->vt = VT_BSTR;
    answer->bstrVal = SysAllocString(L"C:\\Schemes\\Night.clut");
    *p->rgvarg[0].pboolVal = cancel;
    return S_OK;
  }
  ULONG refs = 1;
  VARIANT_BOOL cancel = VARIANT_FALSE;
  std::vector<DISPID> seen;
  std::wstring args;
};

TEST(Events, BrowsePressedReachesEverySinkAndReadsTheAnswersBack) {
  test::Apartment apartment;
  ComPtr<IUnknown> object;
  ASSERT_EQ(tq::com::ctlTqColorSetting::Create(IID_PPV_ARGS(&object)), S_OK);
  ComPtr<IProvideClassInfo2> class_info;
  ASSERT_EQ(object.As(&class_info), S_OK);
  GUID events;
  ASSERT_EQ(class_info->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
  ComPtr<IConnectionPointContainer> container;
  ASSERT_EQ(object.As(&container), S_OK);
  ComPtr<IConnectionPoint> point;
  ASSERT_EQ(container->FindConnectionPoint(events, &point), S_OK);
  ComPtr<IEnumConnectionPoints> all;
  ASSERT_EQ(container->EnumConnectionPoints(&all), S_OK);
  ComPtr<IConnectionPoint> listed;
  ULONG fetched = 0;
  ASSERT_EQ(all->Next(1, &listed, &fetched), S_OK);
  EXPECT_EQ(listed.Get(), point.Get());

  BrowseSink first, second;
  second.cancel = VARIANT_TRUE;
  DWORD cookie1 = 0, cookie2 = 0;
  ASSERT_EQ(point->Advise(&first, &cookie1), S_OK);
  ASSERT_EQ(point->Advise(&second, &cookie2), S_OK);
  auto* control = static_cast<tq::com::ctlTqColorSetting*>(static_cast<_ctlTqColorSetting*>(
      static_cast<IUnknown*>(object.Get())));
  {
    // Raised by the control's own file-dialog object, as the editor's import and export will.
    tq::HostValue file_name;
    bool cancel = false;
    control->Instance().CustomFileDlg->RaiseBrowse(4711, 1, "Open", "*.clut|*.clut", "a.clut", file_name, cancel);
    EXPECT_EQ(first.args, L"4711|1|Open|*.clut|*.clut|a.clut");
    EXPECT_EQ(file_name.kind, tq::HostValue::Kind::Text);
    EXPECT_EQ(file_name.text, "C:\\Schemes\\Night.clut");
    EXPECT_TRUE(cancel);
  }
  ASSERT_EQ(point->Unadvise(cookie2), S_OK);
  EXPECT_EQ(point->Unadvise(cookie2), CONNECT_E_NOCONNECTION);
  EXPECT_FALSE(control->FireBrowsePressed({}).cancel);
  EXPECT_EQ(first.seen, (std::vector<DISPID>{3, 3}));
  EXPECT_EQ(second.seen, (std::vector<DISPID>{3}));
  ASSERT_EQ(point->Unadvise(cookie1), S_OK);
  point.Reset();
  listed.Reset();
  all.Reset();
  container.Reset();
  class_info.Reset();
  object.Reset();
  EXPECT_EQ(first.refs, 1u);
  EXPECT_EQ(second.refs, 1u);
}

using AtlAxWinInitFn = BOOL(WINAPI*)();
using AtlAxGetControlFn = HRESULT(WINAPI*)(HWND, IUnknown**);

TEST(AtlContainer, SitesTheControlByProgId) {
  test::Apartment apartment;
  HMODULE atl = LoadLibraryW(L"atl.dll");
  ASSERT_TRUE(atl);
  auto init = reinterpret_cast<AtlAxWinInitFn>(reinterpret_cast<void*>(GetProcAddress(atl, "AtlAxWinInit")));
  auto get_control = reinterpret_cast<AtlAxGetControlFn>(reinterpret_cast<void*>(GetProcAddress(atl, "AtlAxGetControl")));
  ASSERT_TRUE(init && get_control && init());
  HWND frame = CreateWindowW(L"STATIC", L"host", WS_OVERLAPPEDWINDOW, 0, 0, 300, 200, nullptr, nullptr, nullptr, nullptr);
  ASSERT_TRUE(frame);
  HWND site = CreateWindowW(L"AtlAxWin", L"TqColorSettingTool.ctlTqColorSetting", WS_CHILD | WS_VISIBLE, 0, 0, 100, 50,
                            frame, nullptr, nullptr, nullptr);
  ASSERT_TRUE(site);
  {
    ComPtr<IUnknown> object;
    ASSERT_EQ(get_control(site, &object), S_OK);
    ComPtr<IOleObject> ole;
    ASSERT_EQ(object.As(&ole), S_OK);
    ComPtr<IOleClientSite> client;
    EXPECT_EQ(ole->GetClientSite(&client), S_OK);
    EXPECT_TRUE(client) << "the container sited the control";
    DWORD misc = 0;
    ole->GetMiscStatus(DVASPECT_CONTENT, &misc);
    EXPECT_TRUE(misc & OLEMISC_INVISIBLEATRUNTIME);
    ComPtr<IDispatch> dispatch;
    ASSERT_EQ(object.As(&dispatch), S_OK);
    ArgList args;
    args.Str(L"UserFolder").Str(L"C:\\Users\\op\\");
    EXPECT_EQ(args.Invoke(dispatch.Get(), L"SetObjectValue", nullptr, nullptr), S_OK);
    EXPECT_EQ(test::GetText(dispatch.Get(), L"UserFolder"), L"C:\\Users\\op\\");
  }
  DestroyWindow(frame);
}

struct ProcessFigures {
  // Wine does not count handles (GetProcessHandleCount answers 0): the value of a
  // fresh handle shows whether the handle table grew.
  std::uintptr_t next_handle = 0;
  SIZE_T working_set = 0, pagefile = 0;
  static ProcessFigures Now() {
    ProcessFigures f;
    HANDLE probe = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    f.next_handle = reinterpret_cast<std::uintptr_t>(probe);
    CloseHandle(probe);
    PROCESS_MEMORY_COUNTERS memory{};
    memory.cb = sizeof(memory);
    GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof(memory));
    f.working_set = memory.WorkingSetSize;
    f.pagefile = memory.PagefileUsage;
    return f;
  }
};

void Cycle(IClassFactory* factory, IDispatch* host, int i) {
  ComPtr<IDispatch> control;
  ASSERT_EQ(factory->CreateInstance(nullptr, IID_PPV_ARGS(&control)), S_OK);
  ArgList level, bind, read;
  level.Str(L"AuthorizationLevel").I4(i % 100);
  ASSERT_EQ(level.Invoke(control.Get(), L"SetObjectValue", nullptr, nullptr), S_OK);
  bind.Str(L"ListCommRef").Object(host);
  ASSERT_EQ(bind.Invoke(control.Get(), L"SetObjectValue", nullptr, nullptr), DISP_E_TYPEMISMATCH);
  VARIANT result{};
  read.Str(L"ColorsByIndexTable");
  ASSERT_EQ(read.Invoke(control.Get(), L"GetObjectValue", &result, nullptr), S_OK);
  VariantClear(&result);
}

TEST(Leaks, ThousandCyclesLeaveNothingBehind) {
  test::Apartment apartment;
  ComPtr<IClassFactory> factory;
  ASSERT_EQ(DllGetClassObject(CLSID_ctlTqColorSetting, IID_PPV_ARGS(&factory)), S_OK);
  BrowseSink host_stand_in;  // any object: binding it is refused, which must not leak either
  for (int i = 0; i < 10; ++i) Cycle(factory.Get(), &host_stand_in, i);  // first-use allocations
  const ProcessFigures before = ProcessFigures::Now();
  const LONG live_before = tq::com::LiveCount();
  for (int i = 0; i < 1000; ++i) Cycle(factory.Get(), &host_stand_in, i);
  const ProcessFigures after = ProcessFigures::Now();
  const LONG live_after = tq::com::LiveCount();
  factory.Reset();
  std::printf("live objects: %ld before, %ld after (%ld once the factory is released); DllCanUnloadNow: %s\n",
              live_before, live_after, tq::com::LiveCount(), DllCanUnloadNow() == S_OK ? "S_OK" : "S_FALSE");
  std::printf("next handle value: %#zx before, %#zx after; working set: %zu before, %zu after; "
              "committed: %zu before, %zu after\n",
              static_cast<std::size_t>(before.next_handle), static_cast<std::size_t>(after.next_handle),
              static_cast<std::size_t>(before.working_set), static_cast<std::size_t>(after.working_set),
              static_cast<std::size_t>(before.pagefile), static_cast<std::size_t>(after.pagefile));
  EXPECT_EQ(live_after, live_before);
  EXPECT_EQ(tq::com::LiveCount(), 0);
  EXPECT_EQ(DllCanUnloadNow(), S_OK);
  EXPECT_LE(after.next_handle, before.next_handle + 16);
  EXPECT_LT(after.pagefile, before.pagefile + 1024 * 1024);
  EXPECT_EQ(host_stand_in.refs, 1u);
}

}  // namespace

// The control as a container and an event client meet it: sited by Wine's ATL
// container, events to a C++ sink, and create/use/release cycles.
#include <gtest/gtest.h>
#include <windows.h>

#include <vector>

#include "control/client.h"
#include "control/control.h"
#include "support/custom_file_dlg.h"

namespace {

using test::ArgList;
using test::ComPtr;

using test::BrowseSink;

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

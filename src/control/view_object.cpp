// IViewObject2: a container asks the control to draw itself; at run time it is
// invisible, in a design view it shows a plain framed box.
#include "control/control.h"

namespace tq::com {

STDMETHODIMP ViewObject::Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC draw, LPCRECTL bounds, LPCRECTL,
                              BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) {
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  if (!draw || !bounds) return E_INVALIDARG;
  RECT box{bounds->left, bounds->top, bounds->right, bounds->bottom};
  FrameRect(draw, &box, static_cast<HBRUSH>(GetStockObject(GRAY_BRUSH)));
  return S_OK;
}

STDMETHODIMP ViewObject::GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE** colors) {
  if (colors) *colors = nullptr;
  return S_FALSE;
}

STDMETHODIMP ViewObject::Freeze(DWORD, LONG, void*, DWORD* cookie) {
  if (cookie) *cookie = 0;
  return S_OK;
}

STDMETHODIMP ViewObject::SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) {
  auto& site = control_.site();
  site.view_sink = sink;
  site.view_aspects = aspects;
  site.view_flags = flags;
  return S_OK;
}

STDMETHODIMP ViewObject::GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) {
  auto& site = control_.site();
  if (aspects) *aspects = site.view_aspects;
  if (flags) *flags = site.view_flags;
  if (sink) site.view_sink.CopyTo(sink);
  return S_OK;
}

STDMETHODIMP ViewObject::GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) {
  if (!size) return E_POINTER;
  if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
  *size = control_.site().extent;
  return S_OK;
}

}  // namespace tq::com

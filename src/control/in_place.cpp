// IOleInPlaceObject and IOleControl: the control activates in place without a
// window (it shows nothing at run time) and has no mnemonics.
#include "control/control.h"

namespace tq::com {

STDMETHODIMP OleInPlaceObject::GetWindow(HWND* window) {
  if (!window) return E_POINTER;
  *window = nullptr;
  return E_FAIL;
}

STDMETHODIMP OleInPlaceObject::InPlaceDeactivate() { return control_.DeactivateInPlace(); }

STDMETHODIMP OleControl::GetControlInfo(CONTROLINFO* info) {
  if (!info) return E_POINTER;
  info->hAccel = nullptr;
  info->cAccel = 0;
  info->dwFlags = 0;
  return S_OK;
}

STDMETHODIMP OleControl::FreezeEvents(BOOL freeze) {
  LONG& count = control_.site().freeze_count;
  if (freeze)
    ++count;
  else if (count > 0)
    --count;
  return S_OK;
}

}  // namespace tq::com

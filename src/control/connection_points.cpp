// IConnectionPointContainer with its one connection point, for the event
// interface __ctlTqColorSetting (the sinks are kept by the control).
#include <new>

#include "control/control.h"

namespace tq::com {
namespace {

// Enumerates the one connection point; keeps it (and so the control) alive.
class PointEnumerator final : public IEnumConnectionPoints, public RefCounted {
 public:
  PointEnumerator(IConnectionPoint* point, ULONG position) : point_(point), position_(position) {}

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    static const InterfaceEntry table[] = {
        {&IID_IUnknown, &InterfaceOf<PointEnumerator, IEnumConnectionPoints>},
        {&IID_IEnumConnectionPoints, &InterfaceOf<PointEnumerator, IEnumConnectionPoints>},
    };
    return QueryTable(this, table, iid, out);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return AddRefCount(); }
  STDMETHODIMP_(ULONG) Release() override { return ReleaseCount(); }

  STDMETHODIMP Next(ULONG count, IConnectionPoint** points, ULONG* fetched) override {
    if (!points || (count > 1 && !fetched)) return E_POINTER;
    ULONG n = 0;
    if (count > 0 && position_ == 0) {
      point_.CopyTo(&points[0]);
      ++position_;
      n = 1;
    }
    if (fetched) *fetched = n;
    return n == count ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const bool whole = position_ + count <= 1;
    position_ = whole ? position_ + count : 1;
    return whole ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    position_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumConnectionPoints** clone) override {
    if (!clone) return E_POINTER;
    *clone = new (std::nothrow) PointEnumerator(point_.Get(), position_);
    return *clone ? S_OK : E_OUTOFMEMORY;
  }

 private:
  ~PointEnumerator() override = default;
  ComPtr<IConnectionPoint> point_;
  ULONG position_;
};

}  // namespace

STDMETHODIMP ConnectionPoint::QueryInterface(REFIID iid, void** out) {
  static const InterfaceEntry table[] = {
      {&IID_IUnknown, &InterfaceOf<ConnectionPoint, IConnectionPoint>},
      {&IID_IConnectionPoint, &InterfaceOf<ConnectionPoint, IConnectionPoint>},
  };
  return QueryTable(this, table, iid, out);
}
STDMETHODIMP_(ULONG) ConnectionPoint::AddRef() { return control_.AddRef(); }
STDMETHODIMP_(ULONG) ConnectionPoint::Release() { return control_.Release(); }

STDMETHODIMP ConnectionPoint::GetConnectionInterface(IID* iid) {
  if (!iid) return E_POINTER;
  *iid = DIID___ctlTqColorSetting;
  return S_OK;
}

STDMETHODIMP ConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** container) {
  if (!container) return E_POINTER;
  return control_.QueryInterface(IID_PPV_ARGS(container));
}

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) { return control_.Connect(sink, cookie); }
STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) { return control_.Disconnect(cookie); }

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** connections) {
  if (connections) *connections = nullptr;
  return E_NOTIMPL;
}

STDMETHODIMP ConnectionPointContainer::EnumConnectionPoints(IEnumConnectionPoints** points) {
  if (!points) return E_POINTER;
  *points = new (std::nothrow) PointEnumerator(&control_.event_point, 0);
  return *points ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP ConnectionPointContainer::FindConnectionPoint(REFIID iid, IConnectionPoint** point) {
  if (!point) return E_POINTER;
  *point = nullptr;
  if (!IsEqualIID(iid, DIID___ctlTqColorSetting)) return CONNECT_E_NOCONNECTION;
  *point = &control_.event_point;
  (*point)->AddRef();
  return S_OK;
}

}  // namespace tq::com

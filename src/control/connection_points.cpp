// IConnectionPointContainer with its one connection point, for the event
// interface __ctlTqColorSetting (the sinks are kept by the control).
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include "control/control.h"
#include "win32/guard.h"

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

// Enumerates the connections as they were when EnumConnections was called; clones
// share that snapshot.
class ConnectionEnumerator final : public IEnumConnections, public RefCounted {
 public:
  using Snapshot = std::vector<std::pair<DWORD, ComPtr<IUnknown>>>;
  ConnectionEnumerator(std::shared_ptr<const Snapshot> connections, ULONG position)
      : connections_(std::move(connections)), position_(position) {}

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    static const InterfaceEntry table[] = {
        {&IID_IUnknown, &InterfaceOf<ConnectionEnumerator, IEnumConnections>},
        {&IID_IEnumConnections, &InterfaceOf<ConnectionEnumerator, IEnumConnections>},
    };
    return QueryTable(this, table, iid, out);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return AddRefCount(); }
  STDMETHODIMP_(ULONG) Release() override { return ReleaseCount(); }

  STDMETHODIMP Next(ULONG count, CONNECTDATA* data, ULONG* fetched) override {
    if (!data || (count > 1 && !fetched)) return E_POINTER;
    ULONG n = 0;
    for (; n < count && position_ < connections_->size(); ++n, ++position_) {
      const auto& [cookie, sink] = (*connections_)[position_];
      data[n].dwCookie = cookie;
      sink.CopyTo(&data[n].pUnk);  // the caller releases it
    }
    if (fetched) *fetched = n;
    return n == count ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const ULONG left = static_cast<ULONG>(connections_->size()) - position_;
    position_ += count <= left ? count : left;
    return count <= left ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    position_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumConnections** clone) override {
    if (!clone) return E_POINTER;
    *clone = new (std::nothrow) ConnectionEnumerator(connections_, position_);
    return *clone ? S_OK : E_OUTOFMEMORY;
  }

 private:
  ~ConnectionEnumerator() override = default;
  std::shared_ptr<const Snapshot> connections_;
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

STDMETHODIMP ConnectionPoint::Advise(IUnknown* sink, DWORD* cookie) {
  return tq::win::GuardCom([&] { return control_.Connect(sink, cookie); });
}
STDMETHODIMP ConnectionPoint::Unadvise(DWORD cookie) { return control_.Disconnect(cookie); }

STDMETHODIMP ConnectionPoint::EnumConnections(IEnumConnections** connections) {
  if (!connections) return E_POINTER;
  *connections = nullptr;
  return tq::win::GuardCom([&] {
    auto snapshot = std::make_shared<const ConnectionEnumerator::Snapshot>(control_.Connections());
    *connections = new ConnectionEnumerator(std::move(snapshot), 0);
    return S_OK;
  });
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

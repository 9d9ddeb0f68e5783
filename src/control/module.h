// What the whole library shares: its module handle, the count of live objects and
// server locks behind DllCanUnloadNow, reference counting and table-driven
// QueryInterface for every COM object of the library.
#pragma once

#include <windows.h>
#include <unknwn.h>

#include <cstddef>
#include <string>

namespace tq::com {

HINSTANCE ModuleInstance();
std::wstring ModulePath();

// Objects and IClassFactory::LockServer locks that keep the library loaded.
LONG LiveCount();
void LockModule();
void UnlockModule();

// Base of every COM object here: the count starts at 1 (the creator's reference),
// changes interlocked, and the last Release deletes through the private destructor
// of the derived class. Each object also keeps the library loaded while it lives.
class RefCounted {
 public:
  ULONG AddRefCount() { return static_cast<ULONG>(InterlockedIncrement(&refs_)); }
  ULONG ReleaseCount() {
    const LONG left = InterlockedDecrement(&refs_);
    if (left == 0) delete this;
    return static_cast<ULONG>(left);
  }

 protected:
  RefCounted() { LockModule(); }
  virtual ~RefCounted() { UnlockModule(); }
  RefCounted(const RefCounted&) = delete;
  RefCounted& operator=(const RefCounted&) = delete;

 private:
  LONG refs_ = 1;
};

// One row per interface an object answers to: adding an interface is adding a row.
struct InterfaceEntry {
  const IID* iid;
  IUnknown* (*get)(void* self);
};

template <class Object, class Interface>
IUnknown* InterfaceOf(void* self) {
  return static_cast<Interface*>(static_cast<Object*>(self));
}

HRESULT QueryTable(void* self, const InterfaceEntry* table, std::size_t count, REFIID iid, void** out);

template <std::size_t N>
HRESULT QueryTable(void* self, const InterfaceEntry (&table)[N], REFIID iid, void** out) {
  return QueryTable(self, table, N, iid, out);
}

}  // namespace tq::com

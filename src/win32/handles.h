// Owning wrappers for the Windows handles the control opens: each closes its
// handle exactly once, whatever path the code takes out of a function.
#pragma once

#include <windows.h>

#include <utility>

namespace tq::win {

// The module this code is linked into: the control library (or a test program).
inline HMODULE ThisModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&ThisModule), &module);
  return module;
}

template <typename T, typename Traits>
class Unique {
 public:
  Unique() = default;
  explicit Unique(T value) : value_(value) {}
  ~Unique() { reset(); }
  Unique(Unique&& other) noexcept : value_(std::exchange(other.value_, Traits::Invalid())) {}
  Unique& operator=(Unique&& other) noexcept {
    if (this != &other) reset(std::exchange(other.value_, Traits::Invalid()));
    return *this;
  }
  Unique(const Unique&) = delete;
  Unique& operator=(const Unique&) = delete;

  T get() const { return value_; }
  explicit operator bool() const { return Traits::Valid(value_); }
  void reset(T value = Traits::Invalid()) {
    if (Traits::Valid(value_)) Traits::Close(value_);
    value_ = value;
  }
  // For functions that return a handle through a pointer.
  T* put() {
    reset();
    return &value_;
  }

 private:
  T value_ = Traits::Invalid();
};

struct KernelHandleTraits {
  static HANDLE Invalid() { return nullptr; }
  static bool Valid(HANDLE h) { return h != nullptr && h != INVALID_HANDLE_VALUE; }
  static void Close(HANDLE h) { CloseHandle(h); }
};
struct FindHandleTraits {
  static HANDLE Invalid() { return INVALID_HANDLE_VALUE; }
  static bool Valid(HANDLE h) { return h != INVALID_HANDLE_VALUE; }
  static void Close(HANDLE h) { FindClose(h); }
};
struct RegKeyTraits {
  static HKEY Invalid() { return nullptr; }
  static bool Valid(HKEY k) { return k != nullptr; }
  static void Close(HKEY k) { RegCloseKey(k); }
};

struct MenuTraits {
  static HMENU Invalid() { return nullptr; }
  static bool Valid(HMENU m) { return m != nullptr; }
  static void Close(HMENU m) { DestroyMenu(m); }
};
template <typename T>
struct GdiObjectTraits {
  static T Invalid() { return nullptr; }
  static bool Valid(T o) { return o != nullptr; }
  static void Close(T o) { DeleteObject(o); }
};

using UniqueHandle = Unique<HANDLE, KernelHandleTraits>;  // files, mutexes, events, processes
using UniqueFind = Unique<HANDLE, FindHandleTraits>;
using UniqueRegKey = Unique<HKEY, RegKeyTraits>;
using UniqueMenu = Unique<HMENU, MenuTraits>;  // a menu of our own, not one a window holds
using UniqueFont = Unique<HFONT, GdiObjectTraits<HFONT>>;

// A window's device context (the screen's for no window), released with the window
// it came from.
class WindowDC {
 public:
  explicit WindowDC(HWND window) : window_(window), dc_(GetDC(window)) {}
  ~WindowDC() {
    if (dc_) ReleaseDC(window_, dc_);
  }
  WindowDC(const WindowDC&) = delete;
  WindowDC& operator=(const WindowDC&) = delete;

  HDC get() const { return dc_; }

 private:
  HWND window_;
  HDC dc_;
};

// An object selected into a device context; what was selected before comes back, so
// the context is returned as it was lent.
class SelectedObject {
 public:
  SelectedObject(HDC dc, HGDIOBJ object) : dc_(dc), old_(SelectObject(dc, object)) {}
  ~SelectedObject() {
    if (old_ && old_ != HGDI_ERROR) SelectObject(dc_, old_);
  }
  SelectedObject(const SelectedObject&) = delete;
  SelectedObject& operator=(const SelectedObject&) = delete;

 private:
  HDC dc_;
  HGDIOBJ old_;
};

}  // namespace tq::win

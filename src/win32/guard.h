// The one guard at every place where Windows or COM calls into this library (window
// and hook procedures, COM entry points): nothing thrown inside crosses back out,
// since a C++ exception unwinding through system frames ends the host process.
#pragma once

#include <windows.h>

#include <exception>
#include <new>
#include <utility>

namespace tq::win {

// Runs a COM entry point's body; an allocation failure is E_OUTOFMEMORY, anything
// else thrown is what `failed` makes of its description (IDispatch::Invoke reports it
// in EXCEPINFO), E_UNEXPECTED when `failed` throws in turn.
template <class Body, class Failed>
HRESULT GuardCom(Body&& body, Failed&& failed) noexcept {
  try {
    try {
      return std::forward<Body>(body)();
    } catch (const std::bad_alloc&) {
      return E_OUTOFMEMORY;
    } catch (const std::exception& e) {
      return failed(e.what());
    } catch (...) {
      return failed("Unexpected error");
    }
  } catch (...) {
    return E_UNEXPECTED;
  }
}

template <class Body>
HRESULT GuardCom(Body&& body) noexcept {
  return GuardCom(std::forward<Body>(body), [](const char*) { return E_UNEXPECTED; });
}

// Runs a window, dialog or hook procedure's body; when it throws, `failed` runs (it
// must not throw itself: the editor uses it to end as Cancel; it runs inside the
// handler, so std::current_exception() is what was thrown) and `fallback` is the
// message's result.
template <class Result, class Body, class Failed>
Result GuardCallback(Result fallback, Body&& body, Failed&& failed) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    failed();
    return fallback;
  }
}

template <class Result, class Body>
Result GuardCallback(Result fallback, Body&& body) noexcept {
  return GuardCallback(fallback, std::forward<Body>(body), [] {});
}

}  // namespace tq::win

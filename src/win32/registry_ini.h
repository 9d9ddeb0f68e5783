// Registry and INI access, and the "IniFileWrite" mutex, with the Windows calls.
#pragma once

#include <windows.h>

#include <string>

namespace tq::win {

// A string value of root\subkey, read from the 32-bit registry view (the DataViews
// toolkit is 32-bit). "" when the key or value is missing or is not a string.
// At most 254 characters, as the toolkit's own readers take.
std::string RegReadString(HKEY root, const std::string& subkey, const std::string& value_name);

// Whole values of any length; a missing key, section or file gives "".
std::string IniRead(const std::string& section, const std::string& key, const std::string& file);
// False with the system's error code (GetLastError) when the value could not be written.
bool IniWrite(const std::string& section, const std::string& key, const std::string& value, const std::string& file);

constexpr DWORD kIniMutexTimeoutMs = 15000;
// Takes the system-wide mutex "IniFileWrite" for this thread, waiting at most timeout_ms.
// True when it is held (and, as other tools of the system expect, when the wait itself
// failed); false on time-out, on an abandoned mutex, or when it cannot be created.
bool AcquireIniMutex(DWORD timeout_ms = kIniMutexTimeoutMs);
// Releases and closes this thread's handle, if any.
void ReleaseIniMutex();

}  // namespace tq::win

#include "control/editor_fixture.h"

namespace editor_test {

void EditorWindow::Screenshot(HWND window, const std::string& name) {
  RedrawWindow(window, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW | RDW_ALLCHILDREN);
  Idle(window);
  RECT r, screen_rect{0, 0, GetSystemMetrics(SM_CXSCREEN), GetSystemMetrics(SM_CYSCREEN)};
  GetWindowRect(window, &r);
  IntersectRect(&r, &r, &screen_rect);  // the screen has no pixels beyond its edges
  const int w = r.right - r.left, h = r.bottom - r.top;
  HDC screen = GetDC(nullptr);
  HDC memory = CreateCompatibleDC(screen);
  BITMAPINFO info{{sizeof(BITMAPINFOHEADER), w, h, 1, 24, BI_RGB, 0, 0, 0, 0, 0}, {}};
  void* bits = nullptr;
  HBITMAP bitmap = CreateDIBSection(screen, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
  HGDIOBJ old = SelectObject(memory, bitmap);
  BitBlt(memory, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
  GdiFlush();
  const DWORD stride = ((w * 3 + 3) & ~3), image = stride * h;
  BITMAPFILEHEADER file{0x4D42, static_cast<DWORD>(sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER) + image), 0,
                        0, sizeof(BITMAPFILEHEADER) + sizeof(BITMAPINFOHEADER)};
  std::string bytes(reinterpret_cast<char*>(&file), sizeof file);
  bytes.append(reinterpret_cast<char*>(&info.bmiHeader), sizeof info.bmiHeader);
  bytes.append(static_cast<char*>(bits), image);
  CreateDirectoryW(W(BuildFolder() + "screenshots").c_str(), nullptr);
  WriteBytes(BuildFolder() + "screenshots\\" + name + ".bmp", bytes);
  SelectObject(memory, old);
  DeleteObject(bitmap);
  DeleteDC(memory);
  ReleaseDC(nullptr, screen);
}

}  // namespace editor_test

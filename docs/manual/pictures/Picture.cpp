#include "docs/manual/pictures/Picture.h"

#include <windows.h>

#include <fstream>
#include <stdexcept>
#include <vector>

#include "tests/win32/Messages.h"

namespace {

std::string folder;

void WriteBitmap(const std::string& path, const BITMAPINFOHEADER& info, const std::vector<char>& pixels) {
    BITMAPFILEHEADER head = {};
    head.bfType = 0x4D42;  // "BM"
    head.bfOffBits = sizeof head + sizeof info;
    head.bfSize = head.bfOffBits + static_cast<DWORD>(pixels.size());
    std::ofstream file(path, std::ios::binary);
    file.write(reinterpret_cast<const char*>(&head), sizeof head);
    file.write(reinterpret_cast<const char*>(&info), sizeof info);
    file.write(pixels.data(), static_cast<std::streamsize>(pixels.size()));
    if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace

void SetPictureFolder(const std::string& pictureFolder) {
    folder = pictureFolder;
}

// What stands on the screen where the window is, its frame included.
void Picture(const os::Dialog& dialog, const std::string& name) {
    const HWND window = reinterpret_cast<HWND>(dialog.Handle());
    // The pointer out of the way, so that nothing is drawn as pointed at.
    SetCursorPos(GetSystemMetrics(SM_CXSCREEN) - 1, GetSystemMetrics(SM_CYSCREEN) - 1);
    SetWindowPos(window, HWND_TOPMOST, 8, 8, 0, 0, SWP_NOSIZE);
    RedrawWindow(window, nullptr, nullptr,
                 RDW_INVALIDATE | RDW_ERASE | RDW_FRAME | RDW_ALLCHILDREN | RDW_UPDATENOW);
    HandleMessages();
    RECT rect;
    GetWindowRect(window, &rect);
    const int width = static_cast<int>(rect.right - rect.left);
    const int height = static_cast<int>(rect.bottom - rect.top);

    const HDC screen = GetDC(nullptr);
    const HDC memory = CreateCompatibleDC(screen);
    const HBITMAP bitmap = CreateCompatibleBitmap(screen, width, height);
    const HGDIOBJ before = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, width, height, screen, rect.left, rect.top, SRCCOPY);
    BITMAPINFO info = {};
    info.bmiHeader = {sizeof info.bmiHeader, width, height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    std::vector<char> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    GetDIBits(memory, bitmap, 0, static_cast<UINT>(height), pixels.data(), &info, DIB_RGB_COLORS);
    SelectObject(memory, before);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    WriteBitmap(folder + "\\" + name + ".bmp", info.bmiHeader, pixels);
}

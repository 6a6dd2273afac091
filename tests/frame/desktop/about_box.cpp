// AboutBox on a desktop (run under Xvfb by run-desktop-test.sh): the dialog
// is found by its title, its texts are read back, a screenshot is written,
// and it is closed by a posted message: once with OK, once with Escape.
// The controls are activated registration-free (the host manifest is
// embedded), so the prefix needs no registration.
//
//   about_box.exe <screenshot.bmp>
// Prints one line per check and "N passed, M failed"; exits with M.
#include <windows.h>
#include <oleauto.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

namespace {

const wchar_t* const kTitle = L"About Vornal Analysis Library";
int passed = 0, failed = 0;

void Check(bool ok, const std::string& what) {
    std::printf("%s: %s\n", ok ? "ok" : "FAILED", what.c_str());
    std::fflush(stdout);
    (ok ? passed : failed)++;
}

std::string Narrow(const std::wstring& s) {
    std::string out;
    for (wchar_t c : s) out += c < 128 ? static_cast<char>(c) : '?';
    return out;
}

std::wstring TextOf(HWND window) {
    wchar_t text[256] = {};
    GetWindowTextW(window, text, 256);
    return text;
}

BOOL CALLBACK CollectText(HWND child, LPARAM texts) {
    reinterpret_cast<std::vector<std::wstring>*>(texts)->push_back(TextOf(child));
    return TRUE;
}

// The window's pixels from the screen, written as a 24-bit BMP; answers the
// number of distinct colours (1 would mean nothing was painted).
std::size_t SaveScreenshot(HWND window, const char* path) {
    RECT r = {};
    GetWindowRect(window, &r);
    const int w = r.right - r.left, h = r.bottom - r.top;
    if (w <= 0 || h <= 0) return 0;
    HDC screen = GetDC(nullptr);
    HDC memory = CreateCompatibleDC(screen);
    BITMAPINFO info = {};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = w;
    info.bmiHeader.biHeight = h;  // bottom-up, as a BMP file stores it
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = 24;
    info.bmiHeader.biCompression = BI_RGB;
    void* bits = nullptr;
    HBITMAP bitmap = CreateDIBSection(memory, &info, DIB_RGB_COLORS, &bits, nullptr, 0);
    HGDIOBJ old = SelectObject(memory, bitmap);
    BitBlt(memory, 0, 0, w, h, screen, r.left, r.top, SRCCOPY);
    GdiFlush();
    const int stride = (w * 3 + 3) & ~3;
    std::set<unsigned> colours;
    const unsigned char* p = static_cast<const unsigned char*>(bits);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x) {
            const unsigned char* q = p + y * stride + x * 3;
            colours.insert(q[0] | (q[1] << 8) | (q[2] << 16));
        }
    BITMAPFILEHEADER file = {};
    file.bfType = 0x4D42;
    file.bfOffBits = sizeof file + sizeof info.bmiHeader;
    file.bfSize = file.bfOffBits + static_cast<DWORD>(stride * h);
    if (FILE* out = std::fopen(path, "wb")) {
        std::fwrite(&file, sizeof file, 1, out);
        std::fwrite(&info.bmiHeader, sizeof info.bmiHeader, 1, out);
        std::fwrite(bits, static_cast<std::size_t>(stride) * h, 1, out);
        std::fclose(out);
    }
    SelectObject(memory, old);
    DeleteObject(bitmap);
    DeleteDC(memory);
    ReleaseDC(nullptr, screen);
    return colours.size();
}

struct Round {
    const char* how;
    const char* screenshot;  // nullptr: none
    bool found = false;
    bool closed = false;
};

DWORD WINAPI Watch(void* argument) {
    Round& round = *static_cast<Round*>(argument);
    HWND dialog = nullptr;
    for (int i = 0; i < 300 && !dialog; ++i) {
        dialog = FindWindowW(nullptr, kTitle);
        if (!dialog) Sleep(100);
    }
    round.found = dialog != nullptr;
    if (!dialog) return 0;
    Sleep(700);  // let it paint
    Check(TextOf(dialog) == kTitle, std::string(round.how) + ": title read back");
    std::vector<std::wstring> texts;
    EnumChildWindows(dialog, &CollectText, reinterpret_cast<LPARAM>(&texts));
    std::string all;
    bool version = false, product = false, ok = false;
    for (const std::wstring& t : texts) {
        all += "[" + Narrow(t) + "]";
        version = version || t == L"Version: 1.1";
        product = product || t == L"VNAnalysisControlsLib";
        ok = ok || t == L"OK";
    }
    Check(version && product && ok, std::string(round.how) + ": texts " + all);
    if (round.screenshot) {
        const std::size_t colours = SaveScreenshot(dialog, round.screenshot);
        Check(colours > 2, std::string(round.how) + ": screenshot painted (" + std::to_string(colours) + " colours)");
    }
    if (std::string(round.how) == "OK")
        PostMessageW(dialog, WM_COMMAND, MAKEWPARAM(IDOK, BN_CLICKED), 0);
    else
        PostMessageW(dialog, WM_KEYDOWN, VK_ESCAPE, 0);
    for (int i = 0; i < 100 && IsWindow(dialog); ++i) Sleep(100);
    round.closed = !IsWindow(dialog);
    if (!round.closed) PostMessageW(dialog, WM_CLOSE, 0, 0);  // do not leave the host hanging
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (FAILED(CoInitialize(nullptr))) return 1;
    CLSID clsid;
    IDispatch* array = nullptr;
    if (FAILED(CLSIDFromProgID(L"VNAnalysisControlsLib.VNArray.1", &clsid)) ||
        FAILED(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                reinterpret_cast<void**>(&array)))) {
        std::printf("cannot create VNArray\n0 passed, 1 failed\n");
        return 1;
    }
    Round rounds[2] = {{"OK", argc > 1 ? argv[1] : nullptr}, {"Escape", nullptr}};
    for (Round& round : rounds) {
        HANDLE watcher = CreateThread(nullptr, 0, &Watch, &round, 0, nullptr);
        DISPPARAMS none = {nullptr, nullptr, 0, 0};
        const HRESULT hr = array->Invoke(-552, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &none, nullptr,
                                         nullptr, nullptr);
        WaitForSingleObject(watcher, INFINITE);
        CloseHandle(watcher);
        Check(hr == S_OK, std::string(round.how) + ": AboutBox returned S_OK");
        Check(round.found, std::string(round.how) + ": dialog found by its title");
        Check(round.closed, std::string(round.how) + ": dialog closed by the posted message");
    }
    array->Release();
    CoUninitialize();
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed;
}

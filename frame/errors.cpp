#include "frame/errors.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

namespace vn {

namespace {

HMODULE g_resourceModule = nullptr;

constexpr UINT kNoErrorTextId = 8037;
constexpr HRESULT kFacilityMask = 0x1FFF0000;
constexpr HRESULT kFacilityControlBits = 0x000A0000;
constexpr HRESULT kFacilityInterfaceBits = 0x00040000;

}  // namespace

HMODULE ResourceModule() {
    return g_resourceModule ? g_resourceModule : GetModuleHandleA(nullptr);
}

void SetResourceModule(HMODULE module) {
    g_resourceModule = module;
}

std::string LoadFrameString(UINT id) {
    char buffer[512];
    const int length = LoadStringA(ResourceModule(), id, buffer, sizeof buffer);
    return length > 0 ? std::string(buffer, static_cast<std::size_t>(length)) : std::string();
}

std::string LoadAnalysisMessage(short code) {
    std::string text = LoadFrameString(kNoErrorTextId);
    const int id = code < 0 ? -static_cast<int>(code) : code;
    HMODULE module = ResourceModule();
    HRSRC resource = FindResourceA(module, MAKEINTRESOURCEA(id), MAKEINTRESOURCEA(10) /* RT_RCDATA */);
    if (!resource) return text;
    const DWORD size = SizeofResource(module, resource);
    if (size == 0) return text;
    HGLOBAL handle = LoadResource(module, resource);
    const void* data = handle ? LockResource(handle) : nullptr;
    if (!data) return text;
    // UTF-16LE without terminator; converted to the system code page, which
    // leaves the ASCII texts unchanged.
    const int chars = static_cast<int>(size / 2);
    const int bytes = WideCharToMultiByte(CP_ACP, 0, static_cast<const wchar_t*>(data), chars, nullptr, 0,
                                          nullptr, nullptr);
    if (bytes <= 0) return text;
    std::string narrow(static_cast<std::size_t>(bytes), '\0');
    WideCharToMultiByte(CP_ACP, 0, static_cast<const wchar_t*>(data), chars, &narrow[0], bytes, nullptr, nullptr);
    return narrow;
}

void ThrowAnalysisStatus(AnalysisStatus status) {
    if (status >= 0) return;
    // Compute the magnitude in 64 bits: -INT32_MIN overflows in 32.
    long long code = -static_cast<long long>(status);
    if (code < 1000 || code > 32767) code = 30000;
    const std::string text = LoadAnalysisMessage(static_cast<short>(code));
    const HRESULT hr = static_cast<HRESULT>(0x800A0000u | static_cast<unsigned>(code));
    ThrowAutomationError(hr, text.c_str(), -1);
}

void ThrowAutomationError(HRESULT hresult, const char* text, int /*helpId*/) {
    if (hresult >= 0) return;
    const HRESULT facility = hresult & kFacilityMask;
    if (facility == kFacilityControlBits || facility == kFacilityInterfaceBits)
        throw AutomationError{hresult, text ? text : "", true};
    throw AutomationError{hresult, std::string(), false};
}

void DebugTrace(const char* format, ...) {
    static char buffer[1024];
    va_list args;
    va_start(args, format);
    std::vsnprintf(buffer, sizeof buffer, format, args);
    va_end(args);
    static const char* const kTitles[] = {"log_file.TXT - Notepad", "Notepad - log_file.TXT", "log_file - Notepad"};
    HWND window = nullptr;
    for (const char* title : kTitles) {
        window = FindWindowA(nullptr, title);
        if (window) break;
    }
    if (!window) return;
    HWND edit = GetWindow(window, GW_CHILD);
    for (const char* p = buffer; *p && edit && IsWindow(edit); ++p)
        SendMessageA(edit, WM_CHAR, static_cast<WPARAM>(static_cast<unsigned char>(*p)), 0);
}

}  // namespace vn

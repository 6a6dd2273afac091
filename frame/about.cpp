// AboutBox of every control: a modal dialog owned by the host's active
// window, titled and labelled from the string table.
#include "frame/controls.h"
#include "frame/errors.h"
#include "resource_ids.h"

#include <string>

namespace vn {

namespace {

constexpr UINT kVersionLabelId = 8007;  // "Version: "
constexpr UINT kVersionTextId = 9000;   // "1.1"
constexpr UINT kAboutTitleId = 9001;    // "About Vornal Analysis Library"

// A process without a visible window station (a service) or a thread
// without a desktop has nobody to click OK: the dialog would wait forever.
bool CanShowDialogs() {
    HWINSTA station = GetProcessWindowStation();
    USEROBJECTFLAGS flags = {};
    if (station && GetUserObjectInformationW(station, UOI_FLAGS, &flags, sizeof flags, nullptr) &&
        !(flags.dwFlags & WSF_VISIBLE))
        return false;
    return GetThreadDesktop(GetCurrentThreadId()) != nullptr && GetSystemMetrics(SM_CXSCREEN) > 0;
}

INT_PTR CALLBACK AboutProc(HWND dialog, UINT message, WPARAM wp, LPARAM) {
    switch (message) {
    case WM_INITDIALOG:
        SetWindowTextA(dialog, LoadFrameString(kAboutTitleId).c_str());
        SetDlgItemTextA(dialog, IDC_ABOUT_VERSION,
                        (LoadFrameString(kVersionLabelId) + LoadFrameString(kVersionTextId)).c_str());
        return TRUE;  // focus to the OK button
    case WM_COMMAND:
        // OK, Enter, Escape and the close box all end the dialog.
        if (LOWORD(wp) == IDOK || LOWORD(wp) == IDCANCEL) {
            EndDialog(dialog, LOWORD(wp));
            return TRUE;
        }
        break;
    default:
        break;
    }
    return FALSE;
}

}  // namespace

void ShowAboutBox(Call&) {
    if (!CanShowDialogs()) return;
    // Creation fails (-1) when the session has no display; that too returns
    // at once, and silently: AboutBox has no error of its own.
    DialogBoxParamW(ResourceModule(), MAKEINTRESOURCEW(IDD_ABOUT), GetActiveWindow(), &AboutProc, 0);
}

}  // namespace vn

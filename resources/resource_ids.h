// Identifiers of the module's icons, toolbox bitmaps and about dialog.
// Included by the resource script and by the frame.
#pragma once

// The module's own icon: the DLL file's (lowest id) and the About box's.
#define IDI_MODULE 99

// Icon and toolbox bitmap of control k (0 VNArray .. 4 VNDSP, registration
// order) are IDI_CONTROL_FIRST + k and IDB_TOOLBOX_FIRST + k.
#define IDI_CONTROL_FIRST 100
#define IDB_TOOLBOX_FIRST 200

#define IDD_ABOUT 300
#define IDC_ABOUT_ICON 301
#define IDC_ABOUT_PRODUCT 302
#define IDC_ABOUT_VERSION 303

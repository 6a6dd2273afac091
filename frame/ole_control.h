// The COM object behind each of the five controls: the automation interface
// (frame/dispatch.h) plus what a form container asks of an embedded control
// that is invisible at run time.
//
// What a container gets:
// - IOleObject, IOleControl, in-place activation windowless
//   (IOleInPlaceObjectWindowless) or in a child window, IOleInPlaceActiveObject;
//   the control never becomes UI-active (it takes no focus, merges no menus).
// - IViewObject2: draws the control's icon when the container's ambient
//   UserMode is False (a form designer) or for DVASPECT_ICON, and nothing at
//   run time or when the container has no ambient properties.
// - IPersistStreamInit, IPersistStorage (stream "Contents"),
//   IPersistPropertyBag: the only state is the extent, saved behind a version
//   stamp (see kStateStamp in ole_control.cpp).
// - IQuickActivate, IProvideClassInfo2, IConnectionPointContainer (the empty
//   event interface and IPropertyNotifySink), ISpecifyPropertyPages (no
//   pages), ISupportErrorInfo.
#pragma once

#include <windows.h>

namespace vn {

// Misc status of every control: invisible at run time, acts like a label,
// client site before load, inside-out, activate when visible, cannot link
// inside, recompose on resize.
constexpr DWORD kControlMiscStatus = 0x20000 /*SETCLIENTSITEFIRST*/ | 0x2000 /*ACTSLIKELABEL*/ |
                                     0x400 /*INVISIBLEATRUNTIME*/ | 0x100 /*ACTIVATEWHENVISIBLE*/ |
                                     0x80 /*INSIDEOUT*/ | 0x10 /*CANTLINKINSIDE*/ | 0x1 /*RECOMPOSEONRESIZE*/;

// Unregisters the window class of windowed in-place activation; called when
// the module is about to be unloaded (no control is alive then).
void ReleaseControlWindowClass();

}  // namespace vn

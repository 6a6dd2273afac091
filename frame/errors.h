// Status codes to automation errors: the single error exit of every method.
#pragma once

#include "analysis/status.h"

#include <windows.h>

#include <string>

namespace vn {

// What leaves a method handler on failure. The dispatch layer turns it into
// DISP_E_EXCEPTION with an EXCEPINFO carrying `code` (and the description
// when there is one).
struct AutomationError {
    HRESULT code;
    std::string description;  // narrow text, converted to a BSTR at the boundary
    bool hasDescription;
};

// The module whose resources hold the message and string tables.
HMODULE ResourceModule();
void SetResourceModule(HMODULE module);

// Message text of a status code (sign ignored); the text of string 8037 when
// the code has no message resource.
std::string LoadAnalysisMessage(short code);

// Loads a string of the module's string table ("" when missing).
std::string LoadFrameString(UINT id);

// Does nothing for status >= 0; otherwise raises 0x800A0000 | code with the
// message text (codes outside 1000..32767 become 30000).
void ThrowAnalysisStatus(AnalysisStatus status);

// Does nothing for hresult >= 0. Control- and interface-facility codes are
// raised with `text` as the description; any other code is raised bare.
void ThrowAutomationError(HRESULT hresult, const char* text, int helpId);

// Raises a failing result of a variant or safe-array call, without text.
inline void CheckHResult(HRESULT hresult) {
    if (FAILED(hresult)) ThrowAutomationError(hresult, nullptr, -1);
}

// Development trace into an open Notepad window titled after "log_file";
// does nothing when no such window exists. Not thread-safe (shared buffer).
void DebugTrace(const char* format, ...);

}  // namespace vn

// The five controls of the module.
#pragma once

#include "frame/dispatch.h"

namespace vn {

class Call;

struct CVNArrayCtrl { static const DispatchTable& Table(); };
struct CVNComplexCtrl { static const DispatchTable& Table(); };
struct CVNMatrixCtrl { static const DispatchTable& Table(); };
struct CVNStatCtrl { static const DispatchTable& Table(); };
struct CVNDSPCtrl { static const DispatchTable& Table(); };

// AboutBox of every control: the module's about box, title and version from
// the string table.
void ShowAboutBox(Call& call);

struct ControlClass {
    const DispatchTable& (*table)();
    const wchar_t* name;         // "VNArray"
    const wchar_t* description;  // registry display name
    const IID* eventIid;         // its empty event interface, _DVN<name>Events
};

// The controls in registration order.
extern const ControlClass kControlClasses[5];

}  // namespace vn

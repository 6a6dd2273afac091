// VNStat: methods are wired to their kernels as they are built.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

namespace vn {
namespace stat_handlers {

void AboutBox(Call& c) { ShowAboutBox(c); }

// Not built yet.
VN_NOT_IMPLEMENTED(Mean)
VN_NOT_IMPLEMENTED(StdDev)
VN_NOT_IMPLEMENTED(Variance)
VN_NOT_IMPLEMENTED(RMS)
VN_NOT_IMPLEMENTED(Moment)
VN_NOT_IMPLEMENTED(Median)
VN_NOT_IMPLEMENTED(Mode)
VN_NOT_IMPLEMENTED(Histogram)
VN_NOT_IMPLEMENTED(NDist)
VN_NOT_IMPLEMENTED(TDist)
VN_NOT_IMPLEMENTED(FDist)
VN_NOT_IMPLEMENTED(XXDist)
VN_NOT_IMPLEMENTED(InvNDist)
VN_NOT_IMPLEMENTED(InvTDist)
VN_NOT_IMPLEMENTED(InvFDist)
VN_NOT_IMPLEMENTED(InvXXDist)
VN_NOT_IMPLEMENTED(LinFit)
VN_NOT_IMPLEMENTED(ExpFit)
VN_NOT_IMPLEMENTED(PolyFit)
VN_NOT_IMPLEMENTED(GenLSFit)
VN_NOT_IMPLEMENTED(PolyInterp)
VN_NOT_IMPLEMENTED(SpInterp)
VN_NOT_IMPLEMENTED(RatInterp)
VN_NOT_IMPLEMENTED(Spline)
VN_NOT_IMPLEMENTED(ContingencyTable)
VN_NOT_IMPLEMENTED(ANOVA1Way)
VN_NOT_IMPLEMENTED(ANOVA2Way)
VN_NOT_IMPLEMENTED(ANOVA3Way)
VN_NOT_IMPLEMENTED(MeanSquaredError)

}  // namespace stat_handlers

#define VN_HANDLERS stat_handlers
VN_DEFINE_DISPATCH_TABLE(VN_STAT_METHODS, L"VNAnalysisControlsLib.VNStat", CLSID_VNStat, DIID__DVNStat)
#undef VN_HANDLERS

const DispatchTable& CVNStatCtrl::Table() { return kDispatchTable; }

}  // namespace vn

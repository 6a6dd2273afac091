// VNComplex: methods are wired to their kernels as they are built.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

namespace vn {
namespace complex_handlers {

void AboutBox(Call& c) { ShowAboutBox(c); }

// Not built yet.
VN_NOT_IMPLEMENTED(CxAddArray)
VN_NOT_IMPLEMENTED(CxSubArray)
VN_NOT_IMPLEMENTED(CxMulArray)
VN_NOT_IMPLEMENTED(CxDivArray)
VN_NOT_IMPLEMENTED(CxAdd)
VN_NOT_IMPLEMENTED(CxSub)
VN_NOT_IMPLEMENTED(CxMul)
VN_NOT_IMPLEMENTED(CxDiv)
VN_NOT_IMPLEMENTED(CxRecip)
VN_NOT_IMPLEMENTED(CxSqrt)
VN_NOT_IMPLEMENTED(CxLog)
VN_NOT_IMPLEMENTED(CxLn)
VN_NOT_IMPLEMENTED(CxExp)
VN_NOT_IMPLEMENTED(CxPow)
VN_NOT_IMPLEMENTED(ToPolar)
VN_NOT_IMPLEMENTED(ToRect)
VN_NOT_IMPLEMENTED(ToPolarArray)
VN_NOT_IMPLEMENTED(ToRectArray)
VN_NOT_IMPLEMENTED(CxLinEvArray)
VN_NOT_IMPLEMENTED(CxCholesky)
VN_NOT_IMPLEMENTED(CxEigenValueVector)
VN_NOT_IMPLEMENTED(CxGenInvMatrix)
VN_NOT_IMPLEMENTED(CxMatrixMul)
VN_NOT_IMPLEMENTED(CxMatrixRank)
VN_NOT_IMPLEMENTED(CxGenLinEqs)
VN_NOT_IMPLEMENTED(CxDeterminant)
VN_NOT_IMPLEMENTED(CxDotProduct)
VN_NOT_IMPLEMENTED(CxConditionNumber)
VN_NOT_IMPLEMENTED(CxOuterProduct)
VN_NOT_IMPLEMENTED(CxTranspose)
VN_NOT_IMPLEMENTED(CxSVD)
VN_NOT_IMPLEMENTED(CxTrace)
VN_NOT_IMPLEMENTED(CxCheckPosDef)
VN_NOT_IMPLEMENTED(CxSpecialMatrix)
VN_NOT_IMPLEMENTED(CxQR)
VN_NOT_IMPLEMENTED(CxLU)
VN_NOT_IMPLEMENTED(CxMatrixNorm)
VN_NOT_IMPLEMENTED(CxPseudoInverse)
VN_NOT_IMPLEMENTED(CxSVDS)

}  // namespace complex_handlers

#define VN_HANDLERS complex_handlers
VN_DEFINE_DISPATCH_TABLE(VN_COMPLEX_METHODS, L"VNAnalysisControlsLib.VNComplex", CLSID_VNComplex, DIID__DVNComplex)
#undef VN_HANDLERS

const DispatchTable& CVNComplexCtrl::Table() { return kDispatchTable; }

}  // namespace vn

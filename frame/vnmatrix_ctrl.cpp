// VNMatrix: methods are wired to their kernels as they are built.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

namespace vn {
namespace matrix_handlers {

void AboutBox(Call& c) { ShowAboutBox(c); }

// Not built yet.
VN_NOT_IMPLEMENTED(DotProduct)
VN_NOT_IMPLEMENTED(MatrixMul)
VN_NOT_IMPLEMENTED(InvMatrix)
VN_NOT_IMPLEMENTED(Transpose)
VN_NOT_IMPLEMENTED(Determinant)
VN_NOT_IMPLEMENTED(Trace)
VN_NOT_IMPLEMENTED(LinEqs)
VN_NOT_IMPLEMENTED(LU)
VN_NOT_IMPLEMENTED(ForwSub)
VN_NOT_IMPLEMENTED(BackSub)
VN_NOT_IMPLEMENTED(Qr)
VN_NOT_IMPLEMENTED(SVD)
VN_NOT_IMPLEMENTED(SVDS)
VN_NOT_IMPLEMENTED(Cholesky)
VN_NOT_IMPLEMENTED(GenLinEqs)
VN_NOT_IMPLEMENTED(GenInvMatrix)
VN_NOT_IMPLEMENTED(PseudoInverse)
VN_NOT_IMPLEMENTED(GenEigenValueVector)
VN_NOT_IMPLEMENTED(SymEigenValueVector)
VN_NOT_IMPLEMENTED(OuterProduct)
VN_NOT_IMPLEMENTED(GenDeterminant)
VN_NOT_IMPLEMENTED(ConditionNumber)
VN_NOT_IMPLEMENTED(MatrixRank)
VN_NOT_IMPLEMENTED(MatrixNorm)
VN_NOT_IMPLEMENTED(SpecialMatrix)
VN_NOT_IMPLEMENTED(CheckPosdef)

}  // namespace matrix_handlers

#define VN_HANDLERS matrix_handlers
VN_DEFINE_DISPATCH_TABLE(VN_MATRIX_METHODS, L"VNAnalysisControlsLib.VNMatrix", CLSID_VNMatrix, DIID__DVNMatrix)
#undef VN_HANDLERS

const DispatchTable& CVNMatrixCtrl::Table() { return kDispatchTable; }

}  // namespace vn

// VNStat: descriptive statistics, distributions and interpolation; the
// fitting and analysis-of-variance methods are not built yet.
//
// The handlers share their names with the kernels they call, so every kernel
// is named with its namespace (vn::Mean) to get past the handler of the same
// name.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "analysis/stat/descriptive.h"
#include "analysis/stat/distributions.h"
#include "analysis/stat/interpolation.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include "frame/control_table.h"

namespace vn {
namespace stat_handlers {

namespace {

using SampleKernel = AnalysisStatus (*)(const double*, std::int32_t, double*);
using SpreadKernel = AnalysisStatus (*)(const double*, std::int32_t, double*, double*);

// One-dimensional samples reduced to one number, returned in a variant. An
// empty array reaches the kernel, which reports the count (-20003).
void SampleStatistic(Call& c, SampleKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    double value = 0.0;
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), &value));
    c.SetResultDouble(value);
}

// The mean and a spread measure, written to by-reference parameters 1 and 2.
void MeanAndSpread(Call& c, SpreadKernel kernel) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    double mean = 0.0, spread = 0.0;
    ThrowAnalysisStatus(kernel(x.AsDouble(), x.Count(), &mean, &spread));
    c.SetOutDouble(1, mean);
    c.SetOutDouble(2, spread);
}

// A column of tabulated values (y, or the spline's y2) beside the abscissas
// x: one-dimensional and of x's length. Two empty arrays pass here and are
// refused by the kernel's count check (-20003).
void RequireColumnOf(const ArgArray& column, const ArgArray& x) {
    column.RequireDims(1);
    column.RequireElements(x.Count());
}

}  // namespace

void Mean(Call& c) { SampleStatistic(c, vn::Mean); }
void RMS(Call& c) { SampleStatistic(c, vn::RMS); }
void Median(Call& c) { SampleStatistic(c, vn::Median); }
void StdDev(Call& c) { MeanAndSpread(c, vn::StdDev); }
void Variance(Call& c) { MeanAndSpread(c, vn::Variance); }

void Moment(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgScalar order(c.In(1));
    const std::int32_t k = order.Int();
    double moment = 0.0;
    ThrowAnalysisStatus(vn::Moment(x.AsDouble(), x.Count(), k, &moment));
    c.SetResultDouble(moment);
}

void Mode(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgScalar base(c.In(1)), top(c.In(2)), intervals(c.In(3));
    const double lo = base.Double(), hi = top.Double();
    const std::int32_t bins = intervals.Int();
    double mode = 0.0;
    ThrowAnalysisStatus(vn::Mode(x.AsDouble(), x.Count(), lo, hi, bins, &mode));
    c.SetResultDouble(mode);
}

void Histogram(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgScalar base(c.In(1)), top(c.In(2)), intervals(c.In(3));
    const double lo = base.Double(), hi = top.Double();
    const std::int32_t bins = intervals.Int();
    // A bin count below 1 gives empty arrays (Create1D stops at 0) that the
    // kernel never writes: it refuses the count, after the bounds, so that a
    // bad range is reported first even for an empty sample.
    ArgArray hist, axis;
    hist.Create1D(bins, VT_I4);
    axis.Create1D(bins);
    ThrowAnalysisStatus(vn::Histogram(x.AsDouble(), x.Count(), lo, hi, bins, hist.AsInt32(), axis.AsDouble()));
    OutputArray(c, 4, hist);
    OutputArray(c, 5, axis);
}

void MeanSquaredError(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    y.RequireDims(1);
    // The lengths may differ: the kernel pairs the first min(nx, ny) values.
    double mse = 0.0;
    ThrowAnalysisStatus(vn::MeanSquaredError(x.AsDouble(), x.Count(), y.AsDouble(), y.Count(), &mse));
    c.SetResultDouble(mse);
}

// Distributions: scalars only, read in parameter order so that a value that
// cannot be converted is reported for the first such parameter. Which bad
// degree of freedom or probability is reported first is the kernel's rule.

void NDist(Call& c) {
    ArgScalar x(c.In(0));
    const double v = x.Double();
    double p = 0.0;
    ThrowAnalysisStatus(NormalLowerTail(v, &p));
    c.SetResultDouble(p);
}

void TDist(Call& c) {
    ArgScalar t(c.In(0)), n(c.In(1));
    const double v = t.Double();
    const std::int32_t dof = n.Int();
    double p = 0.0;
    ThrowAnalysisStatus(StudentLowerTail(v, dof, &p));
    c.SetResultDouble(p);
}

void FDist(Call& c) {
    ArgScalar f(c.In(0)), n(c.In(1)), m(c.In(2));
    const double v = f.Double();
    const std::int32_t dofN = n.Int(), dofM = m.Int();
    double p = 0.0;
    ThrowAnalysisStatus(FisherLowerTail(v, dofN, dofM, &p));
    c.SetResultDouble(p);
}

void XXDist(Call& c) {
    ArgScalar x(c.In(0)), n(c.In(1));
    const double v = x.Double();
    const std::int32_t dof = n.Int();
    double p = 0.0;
    ThrowAnalysisStatus(ChiSquareLowerTail(v, dof, &p));
    c.SetResultDouble(p);
}

void InvNDist(Call& c) {
    ArgScalar p(c.In(0));
    const double prob = p.Double();
    double x = 0.0;
    ThrowAnalysisStatus(NormalQuantile(prob, &x));
    c.SetResultDouble(x);
}

void InvTDist(Call& c) {
    ArgScalar p(c.In(0)), n(c.In(1));
    const double prob = p.Double();
    const std::int32_t dof = n.Int();
    double t = 0.0;
    ThrowAnalysisStatus(StudentQuantile(prob, dof, &t));
    c.SetResultDouble(t);
}

void InvFDist(Call& c) {
    ArgScalar p(c.In(0)), n(c.In(1)), m(c.In(2));
    const double prob = p.Double();
    const std::int32_t dofN = n.Int(), dofM = m.Int();
    double f = 0.0;
    ThrowAnalysisStatus(FisherQuantile(prob, dofN, dofM, &f));
    c.SetResultDouble(f);
}

void InvXXDist(Call& c) {
    ArgScalar p(c.In(0)), n(c.In(1));
    const double prob = p.Double();
    const std::int32_t dof = n.Int();
    double x = 0.0;
    ThrowAnalysisStatus(ChiSquareQuantile(prob, dof, &x));
    c.SetResultDouble(x);
}

// Interpolation: x, y (and y2) one-dimensional of one length (-20008);
// an empty table is the kernel's -20003.

void PolyInterp(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    RequireColumnOf(y, x);
    ArgScalar xVal(c.In(2));
    const double at = xVal.Double();
    double value = 0.0, error = 0.0;
    ThrowAnalysisStatus(vn::PolyInterp(x.AsDouble(), y.AsDouble(), x.Count(), at, &value, &error));
    c.SetOutDouble(3, value);
    c.SetOutDouble(4, error);
}

void RatInterp(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    RequireColumnOf(y, x);
    ArgScalar xVal(c.In(2));
    const double at = xVal.Double();
    double value = 0.0, error = 0.0;
    ThrowAnalysisStatus(vn::RatInterp(x.AsDouble(), y.AsDouble(), x.Count(), at, &value, &error));
    c.SetOutDouble(3, value);
    c.SetOutDouble(4, error);
}

void Spline(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    RequireColumnOf(y, x);
    ArgScalar b1(c.In(2)), b2(c.In(3));
    const double startSlope = b1.Double(), endSlope = b2.Double();
    const std::int32_t n = x.Count();
    ArgArray y2;
    y2.Create1D(n);
    ThrowAnalysisStatus(vn::Spline(x.AsDouble(), y.AsDouble(), n, startSlope, endSlope, y2.AsDouble()));
    ReturnArray(c, y2);
}

void SpInterp(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    RequireColumnOf(y, x);
    ArgArray y2(c.In(2));
    RequireColumnOf(y2, x);
    ArgScalar xVal(c.In(3));
    const double at = xVal.Double();
    double value = 0.0;
    ThrowAnalysisStatus(vn::SpInterp(x.AsDouble(), y.AsDouble(), y2.AsDouble(), x.Count(), at, &value));
    c.SetOutDouble(4, value);
}

void AboutBox(Call& c) { ShowAboutBox(c); }

// Fitting and analysis of variance: not built yet.
VN_NOT_IMPLEMENTED(LinFit)
VN_NOT_IMPLEMENTED(ExpFit)
VN_NOT_IMPLEMENTED(PolyFit)
VN_NOT_IMPLEMENTED(GenLSFit)
VN_NOT_IMPLEMENTED(ContingencyTable)
VN_NOT_IMPLEMENTED(ANOVA1Way)
VN_NOT_IMPLEMENTED(ANOVA2Way)
VN_NOT_IMPLEMENTED(ANOVA3Way)

}  // namespace stat_handlers

#define VN_HANDLERS stat_handlers
VN_DEFINE_DISPATCH_TABLE(VN_STAT_METHODS, L"VNAnalysisControlsLib.VNStat", CLSID_VNStat, DIID__DVNStat)
#undef VN_HANDLERS

const DispatchTable& CVNStatCtrl::Table() { return kDispatchTable; }

}  // namespace vn

// VNStat: descriptive statistics, distributions, interpolation, curve
// fitting and analysis of variance.
//
// The handlers share their names with the kernels they call, so every kernel
// is named with its namespace (vn::Mean) to get past the handler of the same
// name.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "analysis/stat/descriptive.h"
#include "analysis/stat/distributions.h"
#include "analysis/stat/anova.h"
#include "analysis/stat/fit.h"
#include "analysis/stat/interpolation.h"
#include "frame/errors.h"
#include "frame/method_frame.h"

#include <algorithm>

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

using Distribution1 = AnalysisStatus (*)(double, double*);
using Distribution2 = AnalysisStatus (*)(double, std::int32_t, double*);
using Distribution3 = AnalysisStatus (*)(double, std::int32_t, std::int32_t, double*);

// Distributions take an abscissa or probability and up to two degrees of
// freedom (integers), read in parameter order, and return one double.
void Distribution(Call& c, Distribution1 kernel) {
    ArgScalar x(c.In(0));
    const double v = x.Double();
    double result = 0.0;
    ThrowAnalysisStatus(kernel(v, &result));
    c.SetResultDouble(result);
}

void Distribution(Call& c, Distribution2 kernel) {
    ArgScalar x(c.In(0)), n(c.In(1));
    const double v = x.Double();
    const std::int32_t dof = n.Int();
    double result = 0.0;
    ThrowAnalysisStatus(kernel(v, dof, &result));
    c.SetResultDouble(result);
}

void Distribution(Call& c, Distribution3 kernel) {
    ArgScalar x(c.In(0)), n(c.In(1)), m(c.In(2));
    const double v = x.Double();
    const std::int32_t dofN = n.Int(), dofM = m.Int();
    double result = 0.0;
    ThrowAnalysisStatus(kernel(v, dofN, dofM, &result));
    c.SetResultDouble(result);
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

void NDist(Call& c) { Distribution(c, NormalLowerTail); }
void TDist(Call& c) { Distribution(c, StudentLowerTail); }
void FDist(Call& c) { Distribution(c, FisherLowerTail); }
void XXDist(Call& c) { Distribution(c, ChiSquareLowerTail); }
void InvNDist(Call& c) { Distribution(c, NormalQuantile); }
void InvTDist(Call& c) { Distribution(c, StudentQuantile); }
void InvFDist(Call& c) { Distribution(c, FisherQuantile); }
void InvXXDist(Call& c) { Distribution(c, ChiSquareQuantile); }

// Interpolation: x, y (and y2) one-dimensional of one length (-20008);
// an empty table is the kernel's -20003.

// Neville and Bulirsch-Stoer share a shape: the value at xVal and an error
// estimate, in by-reference parameters 3 and 4.
void InterpolateAt(Call& c, AnalysisStatus (*kernel)(const double*, const double*, std::int32_t, double,
                                                     double*, double*)) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    RequireColumnOf(y, x);
    ArgScalar xVal(c.In(2));
    const double at = xVal.Double();
    double value = 0.0, error = 0.0;
    ThrowAnalysisStatus(kernel(x.AsDouble(), y.AsDouble(), x.Count(), at, &value, &error));
    c.SetOutDouble(3, value);
    c.SetOutDouble(4, error);
}

void PolyInterp(Call& c) { InterpolateAt(c, vn::PolyInterp); }
void RatInterp(Call& c) { InterpolateAt(c, vn::RatInterp); }

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

// Curve fitting. x and y are one-dimensional; like the element-wise methods
// the fits use the shorter of the two lengths.

void LinFit(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    y.RequireDims(1);
    const std::int32_t n = CommonLength({&x, &y});
    ArgArray z;
    z.Create1D(n);
    double slope = 0.0, intercept = 0.0, mse = 0.0;
    ThrowAnalysisStatus(vn::LinearFit(x.AsDouble(), y.AsDouble(), n, z.AsDouble(), &slope, &intercept, &mse));
    OutputArray(c, 2, z);
    c.SetOutDouble(3, slope);
    c.SetOutDouble(4, intercept);
    c.SetOutDouble(5, mse);
}

void ExpFit(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    y.RequireDims(1);
    const std::int32_t n = CommonLength({&x, &y});
    // The kernel flips the sign of all-negative data in place while it works.
    // A double array from the host is used in place, so it gets a copy of
    // its own: the host's array is then not touched even for the length of
    // the call (another thread of the host, or an exception, never sees it
    // negated).
    ArgArray work;
    work.Create1D(n);
    const double* from = y.AsDouble();
    std::copy(from, from + n, work.AsDouble());
    ArgArray z;
    z.Create1D(n);
    double a = 0.0, b = 0.0, mse = 0.0;
    ThrowAnalysisStatus(vn::ExponentialFit(x.AsDouble(), work.AsDouble(), n, z.AsDouble(), &a, &b, &mse));
    OutputArray(c, 2, z);
    c.SetOutDouble(3, a);
    c.SetOutDouble(4, b);
    c.SetOutDouble(5, mse);
}

void PolyFit(Call& c) {
    ArgArray x(c.In(0));
    x.RequireDims(1);
    ArgArray y(c.In(1));
    y.RequireDims(1);
    ArgScalar orderArg(c.In(2));
    const std::int32_t order = orderArg.Int();
    const std::int32_t n = CommonLength({&x, &y});
    ArgArray z, coef;
    z.Create1D(n);
    // Orders the kernel refuses get an empty array (never written), so that
    // a huge order reports its status rather than running out of memory.
    coef.Create1D(order >= 0 && order < n ? order + 1 : 0);
    double mse = 0.0;
    ThrowAnalysisStatus(vn::PolynomialFit(x.AsDouble(), y.AsDouble(), n, order, z.AsDouble(), coef.AsDouble(), &mse));
    OutputArray(c, 3, z);
    OutputArray(c, 4, coef);
    c.SetOutDouble(5, mse);
}

// H is n-by-k (rows = dimension 1); y has n values; StdDev is optional
// (omitted, Empty or an empty array: unit weights), otherwise n values.
void GenLSFit(Call& c) {
    ArgArray h(c.In(0));
    h.RequireDims(2);
    const std::int32_t n = h.Size(0), k = h.Size(1);
    ArgArray y(c.In(1));
    y.RequireDims(1);
    y.RequireElements(n);
    ArgArray sd;
    bool weighted = false;
    if (!c.IsMissing(2)) {
        sd.AttachByValue(c.In(2));
        sd.Lock();
        if (sd.Count() > 0) {
            sd.RequireDims(1);
            sd.RequireElements(n);
            weighted = true;
        }
    }
    ArgScalar algorithmArg(c.In(3));
    const std::int32_t algorithm = algorithmArg.Int();
    ArgArray z, b, covar;
    z.Create1D(n);
    // Parameter counts the kernel refuses get empty results, never written.
    const std::int32_t kept = (k >= 1 && k <= n && k <= kMaxFitParameters) ? k : 0;
    b.Create1D(kept);
    covar.Create2D(kept, kept);
    double mse = 0.0;
    ThrowAnalysisStatus(GeneralLeastSquares(h.AsDouble(), n, k, y.AsDouble(), weighted ? sd.AsDouble() : nullptr,
                                            algorithm, z.AsDouble(), b.AsDouble(), covar.AsDouble(), &mse));
    OutputArray(c, 4, z);
    OutputArray(c, 5, b);
    OutputArray(c, 6, covar);
    c.SetOutDouble(7, mse);
}

// Analysis of variance and contingency tables. Level arrays hold 0-based
// group numbers, one per observation, read as 32-bit integers.

void ContingencyTable(Call& c) {
    ArgArray y(c.In(0));
    y.RequireDims(2);
    const std::int32_t rows = y.Size(0), cols = y.Size(1);
    double stat = 0.0, sig = 0.0;
    ThrowAnalysisStatus(ContingencyTest(rows, cols, y.AsInt32(), &stat, &sig));
    c.SetOutDouble(1, stat);
    c.SetOutDouble(2, sig);
}

void ANOVA1Way(Call& c) {
    ArgArray y(c.In(0));
    y.RequireDims(1);
    const std::int32_t n = y.Count();
    ArgArray level(c.In(1));
    level.RequireDims(1);
    level.RequireElements(n);
    ArgScalar kArg(c.In(2));
    const std::int32_t k = kArg.Int();
    double ssa = 0.0, msa = 0.0, f = 0.0, sig = 0.0, sse = 0.0, mse = 0.0, tss = 0.0;
    ThrowAnalysisStatus(OneWayAnova(y.AsDouble(), level.AsInt32(), n, k, &ssa, &msa, &f, &sig, &sse, &mse, &tss));
    c.SetOutDouble(3, ssa);
    c.SetOutDouble(4, msa);
    c.SetOutDouble(5, f);
    c.SetOutDouble(6, sig);
    c.SetOutDouble(7, sse);
    c.SetOutDouble(8, mse);
    c.SetOutDouble(9, tss);
}

namespace {

// Per-source arrays (ss, ms, f, Sig) at parameters first .. first+3, then the
// scalars sse, mse and tss.
struct AnovaResults {
    ArgArray ss, ms, f, sig;
    double sse = 0.0, mse = 0.0, tss = 0.0;
    explicit AnovaResults(std::int32_t sources) {
        ss.Create1D(sources);
        ms.Create1D(sources);
        f.Create1D(sources);
        sig.Create1D(sources);
    }
    void Output(Call& c, int first) {
        OutputArray(c, first, ss);
        OutputArray(c, first + 1, ms);
        OutputArray(c, first + 2, f);
        OutputArray(c, first + 3, sig);
        c.SetOutDouble(first + 4, sse);
        c.SetOutDouble(first + 5, mse);
        c.SetOutDouble(first + 6, tss);
    }
};

}  // namespace

void ANOVA2Way(Call& c) {
    ArgArray y(c.In(0));
    y.RequireDims(1);
    const std::int32_t n = y.Count();
    ArgArray levelA(c.In(1)), levelB(c.In(2));
    for (ArgArray* level : {&levelA, &levelB}) {
        level->RequireDims(1);
        level->RequireElements(n);
    }
    ArgScalar aArg(c.In(3)), bArg(c.In(4)), randomArg(c.In(5));
    const std::int32_t a = aArg.Int(), b = bArg.Int(), random = randomArg.Int();
    AnovaResults r(3);
    ThrowAnalysisStatus(TwoWayAnova(y.AsDouble(), levelA.AsInt32(), levelB.AsInt32(), n, a, b, random,
                                    r.ss.AsDouble(), r.ms.AsDouble(), r.f.AsDouble(), r.sig.AsDouble(), &r.sse,
                                    &r.mse, &r.tss));
    r.Output(c, 6);
}

void ANOVA3Way(Call& c) {
    ArgArray y(c.In(0));
    y.RequireDims(1);
    const std::int32_t n = y.Count();
    ArgArray levelA(c.In(1)), levelB(c.In(2)), levelC(c.In(3));
    for (ArgArray* level : {&levelA, &levelB, &levelC}) {
        level->RequireDims(1);
        level->RequireElements(n);
    }
    ArgScalar aArg(c.In(4)), bArg(c.In(5)), cArg(c.In(6)), randomArg(c.In(7));
    const std::int32_t a = aArg.Int(), b = bArg.Int(), levelsC = cArg.Int(), random = randomArg.Int();
    AnovaResults r(7);
    ThrowAnalysisStatus(ThreeWayAnova(y.AsDouble(), levelA.AsInt32(), levelB.AsInt32(), levelC.AsInt32(), n, a, b,
                                      levelsC, random, r.ss.AsDouble(), r.ms.AsDouble(), r.f.AsDouble(),
                                      r.sig.AsDouble(), &r.sse, &r.mse, &r.tss));
    r.Output(c, 8);
}

}  // namespace stat_handlers

#define VN_HANDLERS stat_handlers
VN_DEFINE_DISPATCH_TABLE(VN_STAT_METHODS, L"VNAnalysisControlsLib.VNStat", CLSID_VNStat, DIID__DVNStat)
#undef VN_HANDLERS

const DispatchTable& CVNStatCtrl::Table() { return kDispatchTable; }

}  // namespace vn

// The embedded type library and the dispatch tables agree with the published
// method lists, and the README's method table tells the truth about which
// methods are built.
#include "client.h"

#include <gtest/gtest.h>

#include <ocidl.h>
#include <olectl.h>

#include <cstdlib>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

using namespace vntest;

namespace {

struct ExpectedControl {
    const wchar_t* progId;
    const wchar_t* interfaceName;
    std::vector<std::wstring> methods;  // dispatch order, AboutBox last
};

// The method lists in dispatch order, written out independently of the
// sources that build the type library.
const std::vector<ExpectedControl>& Controls() {
    static const std::vector<ExpectedControl> controls = {
        {L"VNAnalysisControlsLib.VNArray.1", L"_DVNArray",
         {L"ArrayDims", L"ArrayDimSizes", L"IndexArray", L"Interleave1D", L"MaxArray", L"MinArray", L"SubsetArray",
          L"AddArray", L"BuildArray", L"MaxMin1D", L"Subset1D", L"SubArray", L"MulArray", L"DivArray", L"AbsArray",
          L"NegArray", L"LinEvArray", L"PolyEvArray", L"ScaleArray", L"QScaleArray", L"ClipArray", L"CopyArray",
          L"NormalizeArray", L"Reverse1D", L"Shift1D", L"Sort1D", L"Transpose2D", L"SumArray", L"ProdArray",
          L"ReshapeArray", L"ClearArray", L"SetArray", L"MaxMin2D", L"SearchArray", L"ConcatenateArray",
          L"AboutBox"}},
        {L"VNAnalysisControlsLib.VNComplex.1", L"_DVNComplex",
         {L"CxAddArray", L"CxSubArray", L"CxMulArray", L"CxDivArray", L"CxAdd", L"CxSub", L"CxMul", L"CxDiv",
          L"CxRecip", L"CxSqrt", L"CxLog", L"CxLn", L"CxExp", L"CxPow", L"ToPolar", L"ToRect", L"ToPolarArray",
          L"ToRectArray", L"CxLinEvArray", L"CxCholesky", L"CxEigenValueVector", L"CxGenInvMatrix", L"CxMatrixMul",
          L"CxMatrixRank", L"CxGenLinEqs", L"CxDeterminant", L"CxDotProduct", L"CxConditionNumber",
          L"CxOuterProduct", L"CxTranspose", L"CxSVD", L"CxTrace", L"CxCheckPosDef", L"CxSpecialMatrix", L"CxQR",
          L"CxLU", L"CxMatrixNorm", L"CxPseudoInverse", L"CxSVDS", L"AboutBox"}},
        {L"VNAnalysisControlsLib.VNMatrix.1", L"_DVNMatrix",
         {L"DotProduct", L"MatrixMul", L"InvMatrix", L"Transpose", L"Determinant", L"Trace", L"LinEqs", L"LU",
          L"ForwSub", L"BackSub", L"Qr", L"SVD", L"SVDS", L"Cholesky", L"GenLinEqs", L"GenInvMatrix",
          L"PseudoInverse", L"GenEigenValueVector", L"SymEigenValueVector", L"OuterProduct", L"GenDeterminant",
          L"ConditionNumber", L"MatrixRank", L"MatrixNorm", L"SpecialMatrix", L"CheckPosdef", L"AboutBox"}},
        {L"VNAnalysisControlsLib.VNStat.1", L"_DVNStat",
         {L"Mean", L"StdDev", L"Variance", L"RMS", L"Moment", L"Median", L"Mode", L"Histogram", L"NDist", L"TDist",
          L"FDist", L"XXDist", L"InvNDist", L"InvTDist", L"InvFDist", L"InvXXDist", L"LinFit", L"ExpFit",
          L"PolyFit", L"GenLSFit", L"PolyInterp", L"SpInterp", L"RatInterp", L"Spline", L"ContingencyTable",
          L"ANOVA1Way", L"ANOVA2Way", L"ANOVA3Way", L"MeanSquaredError", L"AboutBox"}},
        {L"VNAnalysisControlsLib.VNDSP.1", L"_DVNDSP",
         {L"Impulse", L"Pulse", L"Ramp", L"Triangle", L"SinePattern", L"Uniform", L"WhiteNoise", L"GaussNoise",
          L"Chirp", L"ArbitraryWave", L"SawtoothWave", L"Sinc", L"SineWave", L"SquareWave", L"TriangleWave", L"FFT",
          L"InvFFT", L"ReFFT", L"ReInvFFT", L"Spectrum", L"FHT", L"InvFHT", L"Convolve", L"Correlate", L"Integrate",
          L"Difference", L"PulseParam", L"Decimate", L"Deconvolve", L"UnWrap1D", L"BwLPF", L"BwHPF", L"BwBPF",
          L"BwBSF", L"ChLPF", L"ChHPF", L"ChBSF", L"ChBPF", L"InvChLPF", L"InvChHPF", L"InvChBPF", L"InvChBSF",
          L"ElpLPF", L"ElpHPF", L"ElpBPF", L"ElpBSF", L"WindLPCoef", L"WindHPCoef", L"WindBPCoef", L"WindBSCoef",
          L"KsrLPCoef", L"KsrHPCoef", L"KsrBPCoef", L"KsrBSCoef", L"EquiRipple", L"EquiRplLPCoef", L"EquiRplHPCoef",
          L"EquiRplBPCoef", L"EquiRplBSCoef", L"TriWin", L"HanWin", L"HamWin", L"BkmanWin", L"KsrWin",
          L"BlkHarrisWin", L"CosTaperedWin", L"ExBkmanWin", L"ExpWin", L"FlatTopWin", L"ForceWin", L"GenCosWin",
          L"ACDCEstimator", L"AmpPhaseSpectrum", L"AutoPowerSpectrum", L"ImpulseResponse", L"NetworkFunctions",
          L"ScaledWindow", L"TransferFunction", L"CrossSpectrum", L"CrossPowerSpectrum", L"PowerFrequencyEstimate",
          L"IIRFiltering", L"SpectrumUnitConversion", L"ElpCoef", L"BwCoef", L"ChCoef", L"InvChCoef", L"AboutBox"}},
    };
    return controls;
}

struct FuncInfo {
    DISPID id;
    std::wstring name;
    VARTYPE returns;
    std::vector<std::wstring> params;
    std::vector<bool> byRef;
};

std::vector<FuncInfo> FunctionsOf(ITypeInfo* info) {
    std::vector<FuncInfo> out;
    TYPEATTR* attr = nullptr;
    info->GetTypeAttr(&attr);
    for (UINT f = 0; f < attr->cFuncs; ++f) {
        FUNCDESC* desc = nullptr;
        info->GetFuncDesc(f, &desc);
        FuncInfo fi;
        fi.id = desc->memid;
        fi.returns = desc->elemdescFunc.tdesc.vt;
        BSTR names[32];
        UINT count = 0;
        info->GetNames(desc->memid, names, 32, &count);
        for (UINT k = 0; k < count; ++k) {
            (k == 0 ? fi.name : fi.params.emplace_back()) = names[k];
            SysFreeString(names[k]);
        }
        for (SHORT p = 0; p < desc->cParams; ++p) {
            const TYPEDESC& t = desc->lprgelemdescParam[p].tdesc;
            const bool ref = t.vt == VT_PTR && t.lptdesc->vt == VT_VARIANT;
            EXPECT_TRUE(ref || t.vt == VT_VARIANT) << Narrow(fi.name) << " parameter " << p;
            fi.byRef.push_back(ref);
        }
        EXPECT_EQ(desc->invkind, INVOKE_FUNC);
        EXPECT_EQ(desc->funckind, FUNC_DISPATCH);
        info->ReleaseFuncDesc(desc);
        out.push_back(fi);
    }
    info->ReleaseTypeAttr(attr);
    return out;
}

TEST(TypeLibrary, MethodsDispatchIdsAndReturnKinds) {
    int plainNumbers = 0, nothing = 0;
    for (const auto& expected : Controls()) {
        SCOPED_TRACE(Narrow(expected.progId));
        Control control(expected.progId);
        ASSERT_TRUE(control.valid()) << std::hex << control.createResult();
        UINT count = 0;
        ASSERT_EQ(control.get()->GetTypeInfoCount(&count), S_OK);
        EXPECT_EQ(count, 1u);
        ITypeInfo* info = nullptr;
        ASSERT_EQ(control.get()->GetTypeInfo(0, 0, &info), S_OK);
        BSTR name = nullptr;
        info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
        EXPECT_EQ(std::wstring(name), expected.interfaceName);
        SysFreeString(name);
        const std::vector<FuncInfo> funcs = FunctionsOf(info);
        info->Release();
        ASSERT_EQ(funcs.size(), expected.methods.size());
        for (std::size_t i = 0; i < funcs.size(); ++i) {
            const bool about = i + 1 == funcs.size();
            EXPECT_EQ(funcs[i].name, expected.methods[i]);
            EXPECT_EQ(funcs[i].id, about ? DISPID_ABOUTBOX : static_cast<DISPID>(i + 1)) << Narrow(funcs[i].name);
            // The dispatch table agrees with the type library.
            EXPECT_EQ(control.IdOf(expected.methods[i].c_str()), funcs[i].id);
            LPOLESTR names[33];
            DISPID ids[33];
            names[0] = const_cast<LPOLESTR>(funcs[i].name.c_str());
            for (std::size_t p = 0; p < funcs[i].params.size(); ++p)
                names[p + 1] = const_cast<LPOLESTR>(funcs[i].params[p].c_str());
            EXPECT_EQ(control.get()->GetIDsOfNames(IID_NULL, names, static_cast<UINT>(funcs[i].params.size() + 1),
                                                   0, ids),
                      S_OK)
                << Narrow(funcs[i].name);
            for (std::size_t p = 0; p < funcs[i].params.size(); ++p) EXPECT_EQ(ids[p + 1], static_cast<DISPID>(p));
            if (funcs[i].returns == VT_R8 || funcs[i].returns == VT_I4) ++plainNumbers;
            if (funcs[i].returns == VT_VOID) ++nothing;
            EXPECT_TRUE(funcs[i].returns == VT_VARIANT || funcs[i].returns == VT_VOID ||
                        funcs[i].returns == VT_R8 || funcs[i].returns == VT_I4);
        }
    }
    EXPECT_EQ(plainNumbers, 3);
    EXPECT_EQ(nothing, 85);
}

TEST(TypeLibrary, ParametersOfArrayMethods) {
    // name, parameters ('*' marks a by-reference output), return type
    struct Row {
        const wchar_t* method;
        const wchar_t* params;
        VARTYPE returns;
    };
    const Row rows[] = {
        {L"AddArray", L"x y", VT_VARIANT},
        {L"ScaleArray", L"x *Offset *ScaleConst", VT_VARIANT},
        {L"ClipArray", L"x Upper Lower", VT_VARIANT},
        {L"NormalizeArray", L"x *ave *sDev", VT_VARIANT},
        {L"ClearArray", L"*x", VT_VOID},
        {L"SetArray", L"*x a", VT_VOID},
        {L"MaxArray", L"InputArray", VT_R8},
        {L"ArrayDims", L"x", VT_I4},
        {L"MaxMin1D", L"x *max *imax *min *imin", VT_VOID},
        {L"MaxMin2D", L"x *max *imax *jmax *min *imin *jmin", VT_VOID},
        {L"Subset1D", L"x Index Length", VT_VARIANT},
        {L"SumArray", L"x", VT_VARIANT},
        {L"AboutBox", L"", VT_VOID},
    };
    Control control(L"VNAnalysisControlsLib.VNArray.1");
    ITypeInfo* info = nullptr;
    ASSERT_EQ(control.get()->GetTypeInfo(0, 0, &info), S_OK);
    const std::vector<FuncInfo> funcs = FunctionsOf(info);
    info->Release();
    for (const Row& row : rows) {
        SCOPED_TRACE(Narrow(row.method));
        const FuncInfo* f = nullptr;
        for (const auto& fi : funcs)
            if (fi.name == row.method) f = &fi;
        ASSERT_NE(f, nullptr);
        std::wstring described;
        for (std::size_t p = 0; p < f->params.size(); ++p)
            described += (p ? L" " : L"") + std::wstring(f->byRef[p] ? L"*" : L"") + f->params[p];
        EXPECT_EQ(described, row.params);
        EXPECT_EQ(f->returns, row.returns);
    }
}

TEST(TypeLibrary, RegisteredLibraryAndClassInfo) {
    Control control(L"VNAnalysisControlsLib.VNStat.1");
    ASSERT_TRUE(control.valid());
    ITypeInfo* info = nullptr;
    ASSERT_EQ(control.get()->GetTypeInfo(0, 0, &info), S_OK);
    ITypeLib* library = nullptr;
    UINT index = 0;
    ASSERT_EQ(info->GetContainingTypeLib(&library, &index), S_OK);
    info->Release();
    TLIBATTR* attr = nullptr;
    ASSERT_EQ(library->GetLibAttr(&attr), S_OK);
    EXPECT_EQ(attr->wMajorVerNum, 1);
    EXPECT_EQ(attr->wMinorVerNum, 1);
    const GUID libid = attr->guid;
    library->ReleaseTLibAttr(attr);
    BSTR name = nullptr, helpFile = nullptr;
    library->GetDocumentation(-1, &name, nullptr, nullptr, &helpFile);
    EXPECT_EQ(std::wstring(name), L"VNAnalysisControlsLib");
    ASSERT_NE(helpFile, nullptr);
    const std::wstring help(helpFile);
    EXPECT_EQ(help.substr(help.size() - 9), L"vnref.hlp");
    SysFreeString(name);
    SysFreeString(helpFile);
    library->Release();
    // The registration points hosts at the same library.
    ITypeLib* registered = nullptr;
    ASSERT_EQ(LoadRegTypeLib(libid, 1, 1, 0, &registered), S_OK);
    EXPECT_EQ(registered->GetTypeInfoCount(), 15u);  // 5 x (coclass, interface, events)
    registered->Release();

    IProvideClassInfo* provide = nullptr;
    ASSERT_EQ(control.get()->QueryInterface(IID_IProvideClassInfo, reinterpret_cast<void**>(&provide)), S_OK);
    ITypeInfo* coclass = nullptr;
    ASSERT_EQ(provide->GetClassInfo(&coclass), S_OK);
    TYPEATTR* ta = nullptr;
    coclass->GetTypeAttr(&ta);
    EXPECT_EQ(ta->typekind, TKIND_COCLASS);
    EXPECT_EQ(ta->cImplTypes, 2);
    EXPECT_TRUE(ta->wTypeFlags & TYPEFLAG_FCONTROL);
    coclass->ReleaseTypeAttr(ta);
    coclass->Release();
    provide->Release();
}

// Reads "| Control | Method | ... | status |" rows from the README.
std::map<std::wstring, std::set<std::wstring>> ReadmeNotImplemented(bool* found) {
    std::map<std::wstring, std::set<std::wstring>> result;
    const char* source = std::getenv("VN_SOURCE_DIR");
    std::ifstream in(source ? std::string(source) + "/README.md" : std::string("README.md"));
    *found = in.good();
    std::string line;
    while (std::getline(in, line)) {
        if (line.rfind("| VN", 0) != 0) continue;
        std::vector<std::string> cells;
        std::stringstream ss(line);
        std::string cell;
        while (std::getline(ss, cell, '|')) {
            const auto b = cell.find_first_not_of(' ');
            const auto e = cell.find_last_not_of(' ');
            cells.push_back(b == std::string::npos ? "" : cell.substr(b, e - b + 1));
        }
        if (cells.size() < 5) continue;
        std::wstring control(cells[1].begin(), cells[1].end());
        std::wstring method(cells[3].begin(), cells[3].end());
        auto& set = result[control];
        if (cells.back().find("not yet implemented") != std::string::npos) set.insert(method);
        set.insert(L"#" + method);  // every listed method
    }
    return result;
}

TEST(TypeLibrary, ReadmeMethodTableMatchesWhatAnswersNotImplemented) {
    bool found = false;
    const auto readme = ReadmeNotImplemented(&found);
    ASSERT_TRUE(found) << "set VN_SOURCE_DIR to the source folder";
    for (const auto& expected : Controls()) {
        Control control(expected.progId);
        ASSERT_TRUE(control.valid());
        const std::wstring name = std::wstring(expected.interfaceName).substr(2);
        const auto it = readme.find(name);
        ASSERT_NE(it, readme.end()) << Narrow(name) << " missing from the README";
        ITypeInfo* info = nullptr;
        control.get()->GetTypeInfo(0, 0, &info);
        const auto funcs = FunctionsOf(info);
        info->Release();
        for (const auto& f : funcs) {
            if (f.id == DISPID_ABOUTBOX) continue;  // would open a window
            SCOPED_TRACE(Narrow(name + L"." + f.name));
            EXPECT_TRUE(it->second.count(L"#" + f.name)) << "not listed in the README";
            std::vector<Var> storage(f.params.size());
            std::vector<Var> refs;
            refs.reserve(f.params.size());
            std::vector<VARIANT*> args;
            for (std::size_t p = 0; p < f.params.size(); ++p) {
                if (f.byRef[p]) {
                    refs.push_back(RefTo(storage[p]));
                    args.push_back(refs.back().get());
                } else {
                    args.push_back(storage[p].get());
                }
            }
            const Outcome o = control.Invoke(f.id, args);
            EXPECT_EQ(o.hr == E_NOTIMPL, it->second.count(f.name) == 1) << std::hex << o.hr;
        }
    }
}

}  // namespace

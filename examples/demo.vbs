' A tour of the controls from a script host.
'   wine64 cscript //nologo Z:\path\to\examples\demo.vbs
Option Explicit
Dim a, x, y, z, mx, imx, mn, imn, ofs, sc
Set a = CreateObject("VNAnalysisControlsLib.VNArray.1")

x = Array(3, 1, 4, 1, 5, 9, 2, 6)
y = Array(2, 7, 1, 8, 2, 8, 1, 8)
WScript.Echo "x = 3 1 4 1 5 9 2 6, y = 2 7 1 8 2 8 1 8"
WScript.Echo "sum(x + y)      = " & a.SumArray(a.AddArray(x, y))
WScript.Echo "sum(x * y)      = " & a.SumArray(a.MulArray(x, y)) & "   (the dot product)"
WScript.Echo "prod(x)         = " & a.ProdArray(x)
a.MaxMin1D x, mx, imx, mn, imn
WScript.Echo "max, index      = " & mx & ", " & imx
WScript.Echo "min, index      = " & mn & ", " & imn
z = a.Sort1D(x, 0)
WScript.Echo "sorted: first, last = " & a.MinArray(a.Subset1D(z, 0, 1)) & ", " & a.MaxArray(a.Subset1D(z, 7, 1))
z = a.ScaleArray(x, ofs, sc)
WScript.Echo "scaled to [-1,1]: offset " & ofs & ", scale " & sc & ", range " & a.MinArray(z) & " .. " & a.MaxArray(z)
WScript.Echo "1 + 2x + 3x^2 at x = 2: " & a.SumArray(a.PolyEvArray(Array(2), Array(1, 2, 3)))

On Error Resume Next
z = a.DivArray(x, Array(1, 0, 2))
WScript.Echo "DivArray by zero -> error " & Err.Number & ": " & Err.Description
Err.Clear
z = a.Shift1D(x, 8)
WScript.Echo "Shift1D by 8     -> error " & Err.Number & ": " & Err.Description
Err.Clear
On Error GoTo 0

' Statistics.
Dim st, mean, sdev
Set st = CreateObject("VNAnalysisControlsLib.VNStat.1")
st.StdDev x, mean, sdev
WScript.Echo "mean, std dev   = " & mean & ", " & sdev & "   (population)"
WScript.Echo "median          = " & st.Median(x)
WScript.Echo "P(Z <= 1.96)    = " & st.NDist(1.96)
WScript.Echo "chi-square 95%, 3 dof = " & st.InvXXDist(0.95, 3)

' Linear algebra: solve a*s = y for a 3-by-3 system.
Dim mat, s
Set mat = CreateObject("VNAnalysisControlsLib.VNMatrix.1")
Dim m(2, 2)
m(0, 0) = 4 : m(0, 1) = 1 : m(0, 2) = 0
m(1, 0) = 1 : m(1, 1) = 4 : m(1, 2) = 1
m(2, 0) = 0 : m(2, 1) = 1 : m(2, 2) = 4
WScript.Echo "det(m)          = " & mat.Determinant(m)
s = mat.LinEqs(m, Array(5, 6, 5))
WScript.Echo "solution of m s = (5, 6, 5): sum " & a.SumArray(s) & ", max " & a.MaxArray(s) & ", min " & a.MinArray(s)

' Complex numbers travel as pairs.
Dim cx, zr, zi
Set cx = CreateObject("VNAnalysisControlsLib.VNComplex.1")
cx.CxMul 1, 2, 3, -1, zr, zi
WScript.Echo "(1+2i)(3-i)     = " & zr & " + " & zi & "i"
Call cx.CxSqrt(-4, 0, zr, zi)
WScript.Echo "sqrt(-4)        = " & Round(zr, 12) & " + " & zi & "i"

' Signals: a sine continued across two calls, and its spectrum peak.
Dim dsp, phase, w1, w2, spec1, pk, ipk, lo, ilo
Set dsp = CreateObject("VNAnalysisControlsLib.VNDSP.1")
phase = 0
w1 = dsp.SineWave(32, 1, 0.125, phase)
w2 = dsp.SineWave(32, 1, 0.125, phase)
WScript.Echo "sine wave: phase after 64 samples = " & phase & " degrees"
spec1 = dsp.Spectrum(w1)
a.MaxMin1D spec1, pk, ipk, lo, ilo
WScript.Echo "power spectrum of 32 samples at 1/8 cycle per sample: peak in bin " & ipk
WScript.Echo "Demo finished"

' VNComplex from VBScript: complex values as pairs of numbers, complex arrays
' as pairs of arrays, results in by-reference variables. Array results are
' read through VNArray (this script host cannot index an array of doubles).
' The matrices are symmetric, so the order in which the script host stores
' the two dimensions does not matter.
Option Explicit
Dim passed, failed
passed = 0 : failed = 0

Sub Check(name, got, expected)
    If got = expected Then
        passed = passed + 1
    Else
        failed = failed + 1
        WScript.Echo "FAIL " & name & ": got " & got & ", expected " & expected
    End If
End Sub

Sub CheckNear(name, got, expected, tolerance)
    If Abs(got - expected) <= tolerance Then
        passed = passed + 1
    Else
        failed = failed + 1
        WScript.Echo "FAIL " & name & ": got " & got & ", expected " & expected & " within " & tolerance
    End If
End Sub

Sub CheckError(name, number, description)
    If Err.Number = number And Err.Description = description Then
        passed = passed + 1
    Else
        failed = failed + 1
        WScript.Echo "FAIL " & name & ": error " & Err.Number & " """ & Err.Description & """"
    End If
    Err.Clear
End Sub

Dim c : Set c = CreateObject("VNAnalysisControlsLib.VNComplex.1")
Dim a : Set a = CreateObject("VNAnalysisControlsLib.VNArray.1")

Function Elem(z, i)
    Elem = a.MaxArray(a.Subset1D(z, i, 1))
End Function

Const Pi = 3.14159265358979

Dim zr, zi, v, w, s, rank
c.CxMul 1, 2, 3, 4, zr, zi
Check "CxMul re", zr, -5
Check "CxMul im", zi, 10
Call c.CxDiv(-5, 10, "3", "4", zr, zi)
Check "CxDiv of strings re", zr, 1
Check "CxDiv of strings im", zi, 2
Call c.CxSqrt(-4, 0, zr, zi)
CheckNear "CxSqrt on the cut re", zr, 0, 1E-15
Check "CxSqrt on the cut im", zi, 2
c.CxLog 10, 0, zr, zi
Check "CxLog 10", zr, 1
Call c.CxPow(-1, 0, 0.5, zr, zi)
CheckNear "CxPow root of -1", zi, 1, 1E-15
Call c.ToPolar(-1, 0, v, w)
Check "ToPolar magnitude", v, 1
CheckNear "ToPolar phase", w, Pi, 1E-14
c.ToRect 2, Pi / 2, v, w
CheckNear "ToRect y", w, 2, 1E-15
Check "Scalar result type", VarType(zr), vbDouble

c.CxMulArray Array(1, -3), Array(2, 0.5), Array(3, 2), Array(4, -2), zr, zi
Check "CxMulArray re", Elem(zr, 1), -5
Check "CxMulArray im", Elem(zi, 1), 7
Check "CxMulArray type", VarType(zr), vbArray + vbDouble
c.CxLinEvArray Array(1, 2), Array(2, 0), 0, 1, 1, 0, zr, zi
Check "CxLinEvArray re", Elem(zr, 0), -1
Check "CxLinEvArray im", Elem(zi, 1), 2
c.ToPolarArray Array(3, 0), Array(-4, 2), v, w
Check "ToPolarArray magnitude", Elem(v, 0), 5
CheckNear "ToPolarArray phase", Elem(w, 1), Pi / 2, 1E-14

' A = [[2, 1+i], [1+i, 3]]: complex symmetric, det 6 - 2i, trace 5;
' A [1, 1] = [3+i, 4+i].
Dim ar(1, 1), ai(1, 1)
ar(0, 0) = 2 : ar(0, 1) = 1 : ar(1, 0) = 1 : ar(1, 1) = 3
ai(0, 0) = 0 : ai(0, 1) = 1 : ai(1, 0) = 1 : ai(1, 1) = 0
c.CxDeterminant ar, ai, zr, zi
CheckNear "CxDeterminant re", zr, 6, 1E-14
CheckNear "CxDeterminant im", zi, -2, 1E-14
c.CxTrace ar, ai, zr, zi
Check "CxTrace", zr, 5
Dim warning
c.CxGenLinEqs ar, ai, Array(3, 4), Array(1, 1), 0, zr, zi, warning
CheckNear "CxGenLinEqs x0", Elem(zr, 0), 1, 1E-14
CheckNear "CxGenLinEqs x1", Elem(zr, 1), 1, 1E-14
CheckNear "CxGenLinEqs imaginary", a.MaxArray(a.AbsArray(zi)), 0, 1E-14
Check "CxGenLinEqs warning", warning, 0
Check "CxGenLinEqs warning type", VarType(warning), vbLong
rank = c.CxMatrixRank(ar, ai)
Check "CxMatrixRank", rank, 2
Check "CxMatrixRank type", VarType(rank), vbLong
' The real part alone is Hermitian positive definite; with 1+i on both
' sides of the diagonal (not conjugates) the matrix is not Hermitian.
Dim zero(1, 1)
zero(0, 0) = 0 : zero(0, 1) = 0 : zero(1, 0) = 0 : zero(1, 1) = 0
Check "CxCheckPosDef real part", c.CxCheckPosDef(ar, zero), 1
Check "CxCheckPosDef not Hermitian", c.CxCheckPosDef(ar, ai), 0
Check "CxMatrixNorm 1", c.CxMatrixNorm(ar, zero, 1), 4
' Eigenvalues of [[2, 1], [1, 3]]: (5 +- sqrt 5) / 2, larger first.
c.CxEigenValueVector ar, zero, zr, zi, v, w
CheckNear "CxEigenValueVector first", Elem(zr, 0), (5 + Sqr(5)) / 2, 1E-14
CheckNear "CxEigenValueVector second", Elem(zr, 1), (5 - Sqr(5)) / 2, 1E-14
c.CxSVDS ar, zero, s
CheckNear "CxSVDS", Elem(s, 0), (5 + Sqr(5)) / 2, 1E-14
c.CxSpecialMatrix 0, 3, 0, 0, 0, 0, zr, zi
Check "CxSpecialMatrix identity sum", a.SumArray(zr), 3

On Error Resume Next
zr = "unchanged"
c.CxDiv 1, 0, 0, 0, zr, zi
CheckError "CxDiv by zero", 20060, "Divide by zero error"
Check "CxDiv output kept", zr, "unchanged"
c.CxDivArray Array(1), Array(0), Array(1E-200), Array(0), zr, zi
CheckError "CxDivArray underflow", 20060, "Divide by zero error"
Check "CxDivArray output kept", zr, "unchanged"
c.CxAddArray Array(1, 2), Array(1), Array(1, 2), Array(1, 2), zr, zi
CheckError "CxAddArray lengths", 20008, "The input arrays do not contain the correct number of data values for this function."
c.CxSubArray Array(), Array(), Array(), Array(), zr, zi
CheckError "CxSubArray empty", 20003, "The number of samples must be >0."
c.CxPow 0, 0, 0, zr, zi
CheckError "CxPow 0^0", 20060, "Divide by zero error"
Dim wide(1, 2)
c.CxLU wide, wide, zr, zi, v, w
CheckError "CxLU not square", 20040, "The input matrix must be a square matrix."
c.CxMatrixMul ar, ai, Array(1, 2, 3), Array(0, 0, 0), zr, zi
CheckError "CxMatrixMul inner", 20008, "The input arrays do not contain the correct number of data values for this function."
v = c.CxMatrixNorm(ar, ai, 7)
CheckError "CxMatrixNorm type", 20061, "The selection is invalid."
Check "Outputs kept", zr, "unchanged"
On Error GoTo 0

WScript.Echo passed & " passed, " & failed & " failed"
WScript.Quit failed

' VNStat from VBScript: arrays of variants in, numbers and by-reference
' outputs back. Array results are read through VNArray (this script host
' cannot index an array of doubles).
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

Dim s : Set s = CreateObject("VNAnalysisControlsLib.VNStat.1")
Dim a : Set a = CreateObject("VNAnalysisControlsLib.VNArray.1")

' Element i of an array result, through VNArray.
Function Elem(z, i)
    Elem = a.MaxArray(a.Subset1D(z, i, 1))
End Function

Const Pi = 3.14159265358979

Dim x, ave, sdev, vari, hist, axis, y2, v, e
x = Array(1, 2, 3, 4)

Check "Mean", s.Mean(x), 2.5
Check "Mean of strings", s.Mean(Array("1", "2.5")), 1.75
s.StdDev x, ave, sdev
Check "StdDev mean", ave, 2.5
CheckNear "StdDev", sdev, Sqr(1.25), 1E-15
s.Variance Array(2, 4, 4, 4, 5, 5, 7, 9), ave, vari
Check "Variance mean", ave, 5
Check "Variance", vari, 4
CheckNear "RMS", s.RMS(Array(3, 4)), Sqr(12.5), 1E-15
CheckNear "Moment 2", s.Moment(x, 2), 1.25, 1E-15
CheckNear "Moment 3", s.Moment(Array(0, 0, 3), "3"), 2, 1E-15
Check "Median odd", s.Median(Array(3, 1, 2)), 2
Check "Median even", s.Median(Array(4, 1, 3, 2)), 2.5
Check "Mode tie", s.Mode(Array(1, 1, 3, 3), 0, 4, 4), 1.5
Check "MeanSquaredError", s.MeanSquaredError(Array(1, 2, 3), Array(1, 4, 6, 100, 100)), 13 / 3

s.Histogram Array(0, 1, 2, 3, 4, -0.0001, 4.0001), 0, 4, 4, hist, axis
Check "Histogram total in range", a.SumArray(hist), 5
Check "Histogram first", Elem(hist, 0), 1
Check "Histogram last takes top", Elem(hist, 3), 2
Check "Histogram axis first", Elem(axis, 0), 0.5
Check "Histogram axis last", Elem(axis, 3), 3.5
Check "Histogram count type", VarType(hist), vbArray + vbLong
Check "Histogram axis type", VarType(axis), vbArray + vbDouble

CheckNear "NDist 0", s.NDist(0), 0.5, 1.2E-5
CheckNear "NDist symmetry", s.NDist(-1.3) + s.NDist(1.3), 1, 1E-15
CheckNear "TDist 1 dof", s.TDist(2, 1), 0.5 + Atn(2) / Pi, 1E-8
Check "TDist at 0", s.TDist(0, 12), 0.5
CheckNear "FDist 2,2", s.FDist(3, 2, 2), 0.75, 1E-8
Check "FDist at 0", s.FDist(0, 2, 3), 0
CheckNear "XXDist 2 dof", s.XXDist(3, 2), 1 - Exp(-1.5), 1E-14
CheckNear "InvNDist", s.InvNDist(0.5), 0, 4.5E-4
v = s.InvXXDist(0.95, 2)
Check "InvXXDist below", v <= -2 * Log(0.05) + 1E-6, True
Check "InvXXDist within", v >= -2 * Log(0.05) - 1.01E-4, True
v = s.InvTDist(0.25, 1)
Check "InvTDist bracket", v <= -1 + 1E-6 And v >= -1 - 1.01E-4, True
v = s.InvFDist(0.75, 2, 2)
Check "InvFDist bracket", v <= 3 + 1E-6 And v >= 3 - 1.01E-4, True

s.PolyInterp Array(0, 1, 2), Array(0, 1, 4), 3, v, e
CheckNear "PolyInterp", v, 9, 1E-12
s.RatInterp Array(0, 1, 4), Array(3, 7, -2), 1, v, e
Check "RatInterp at a node", v, 7
Check "RatInterp error at a node", e, 0
y2 = s.Spline(Array(0, 1, 2, 3), Array(0, 1, 8, 27), 0, 27)
CheckNear "Spline y2", Elem(y2, 2), 12, 1E-12
s.SpInterp Array(0, 1, 2, 3), Array(0, 1, 8, 27), y2, 1.5, v
CheckNear "SpInterp cubic", v, 3.375, 1E-12
y2 = s.Spline(Array(0, 1, 3), Array(1, 3, 7), 1E30, 1E30)
Check "Spline natural ends", Elem(y2, 0) = 0 And Elem(y2, 2) = 0, True
s.SpInterp Array(0, 1, 3), Array(1, 3, 7), y2, 2, v
CheckNear "SpInterp line", v, 5, 1E-12

On Error Resume Next
v = s.Mean(Array())
CheckError "Mean of nothing", 20003, "The number of samples must be >0."
v = s.Median(5)
CheckError "Median of a scalar", 30103, "The argument is not  an array."
Dim m(1, 1)
m(0, 0) = 1 : m(0, 1) = 2 : m(1, 0) = 3 : m(1, 1) = 4
v = s.Mean(m)
CheckError "Mean of a matrix", 20008, "The input arrays do not contain the correct number of data values for this function."
v = s.Moment(x, 0)
CheckError "Moment order 0", 20021, "The order must be > 0."
hist = "unchanged"
s.Histogram Array(), 1, 1, 4, hist, axis
CheckError "Histogram top = base", 20101, "Parameter must meet the condition: Top>Base"
Check "Histogram output kept", hist, "unchanged"
v = s.Mode(x, 1, 1, 0)
CheckError "Mode without bins", 20003, "The number of samples must be >0."
v = s.TDist(1, 0)
CheckError "TDist 0 dof", 20052, "The degrees of freedom must be one or more."
v = s.InvNDist(1)
CheckError "InvNDist 1", 20053, "The probability must be between zero and one."
v = s.InvXXDist(0, 0)
CheckError "InvXXDist probability first", 20053, "The probability must be between zero and one."
v = s.InvTDist(0, 0)
CheckError "InvTDist dof first", 20052, "The degrees of freedom must be one or more."
v = "unchanged"
s.PolyInterp Array(0, 1, 0), Array(1, 2, 3), 0.5, v, e
CheckError "PolyInterp equal x", 20049, "The x-values must be distinct."
Check "PolyInterp output kept", v, "unchanged"
s.RatInterp Array(1, 2), Array(1, 2, 3), 0.5, v, e
CheckError "RatInterp lengths", 20008, "The input arrays do not contain the correct number of data values for this function."
s.SpInterp Array(1), Array(2), Array(0), 1, v
CheckError "SpInterp one point", 20049, "The x-values must be distinct."
On Error GoTo 0

WScript.Echo passed & " passed, " & failed & " failed"
WScript.Quit failed

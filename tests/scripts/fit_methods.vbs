' Curve fitting, general least squares and analysis of variance from
' VBScript: arrays of variants in, arrays and numbers back through by-reference
' outputs. Array results are read through VNArray (this script host cannot
' index an array of doubles).
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

Dim z, p1, p2, mse, coef, b, cv, H, vals, y, p, e
Dim ssa, msa, f, sig, sse, tss, ss, ms, stat

s.LinFit Array(0, 1, 2), Array(1, 3, 5), z, p1, p2, mse
Check "LinFit slope", p1, 2
Check "LinFit intercept", p2, 1
Check "LinFit mse", mse, 0
Check "LinFit z", Elem(z, 2), 5

e = Exp(1)
y = Array(-2, -2 * e, -2 * e * e)
s.ExpFit Array(0, 1, 2), y, z, p1, p2, mse
CheckNear "ExpFit a", p1, -2, 1E-13
CheckNear "ExpFit b", p2, 1, 1E-14
Check "ExpFit y kept", y(1), -2 * e

s.PolyFit Array(-1, 0, 2), Array(6, 1, 3), 2, z, coef, mse
CheckNear "PolyFit c0", Elem(coef, 0), 1, 1E-13
CheckNear "PolyFit c1", Elem(coef, 1), -3, 1E-13
CheckNear "PolyFit c2", Elem(coef, 2), 2, 1E-13

' H as the routine reads it: 4 rows (1, t), row-major in the array's block,
' where the first index runs fastest.
ReDim H(3, 1)
vals = Array(1, 0, 1, 1, 1, 2, 1, 3)
For p = 0 To 7 : H(p Mod 4, p \ 4) = vals(p) : Next
s.GenLSFit H, Array(1, 3, 5, 7.5), , 2, z, b, cv, mse
CheckNear "GenLSFit b0", Elem(b, 0), 0.9, 1E-13
CheckNear "GenLSFit b1", Elem(b, 1), 2.15, 1E-13
CheckNear "GenLSFit covar", a.MaxArray(cv), 0.7, 1E-13
CheckNear "GenLSFit mse", mse, 0.01875, 1E-14
s.GenLSFit H, Array(1, 3, 5, 7.5), Array(1, 1, 1, 1), 5, z, b, cv, mse
CheckNear "GenLSFit unit weights", Elem(b, 1), 2.15, 1E-13

s.ANOVA1Way Array(4, 1, 7, 5, 2, 8, 6, 3, 9), Array(1, 0, 2, 1, 0, 2, 1, 0, 2), 3, ssa, msa, f, sig, sse, mse, tss
CheckNear "ANOVA1Way ssa", ssa, 54, 1E-12
CheckNear "ANOVA1Way f", f, 27, 1E-11
CheckNear "ANOVA1Way Sig", sig, 0.001, 1E-7
CheckNear "ANOVA1Way tss", tss, 60, 1E-12

s.ANOVA2Way Array(1, 5, 2, 10, 3, 7, 4, 12), Array(0, 0, 1, 1, 0, 0, 1, 1), Array(0, 1, 0, 1, 0, 1, 0, 1), 2, 2, 0, ss, ms, f, sig, sse, mse, tss
CheckNear "ANOVA2Way SS_B", Elem(ss, 1), 72, 1E-12
CheckNear "ANOVA2Way F_AB", Elem(f, 2), 4, 1E-12
CheckNear "ANOVA2Way mse", mse, 2, 1E-12

' The table [[10, 20, 30], [20, 20, 20]], laid out like H above.
Dim t(1, 2)
vals = Array(10, 20, 30, 20, 20, 20)
For p = 0 To 5 : t(p Mod 2, p \ 2) = vals(p) : Next
s.ContingencyTable t, stat, sig
CheckNear "ContingencyTable statistic", stat, 16 / 3, 1E-13
CheckNear "ContingencyTable Sig", sig, Exp(-8 / 3), 1E-13

On Error Resume Next
s.ExpFit Array(0, 1), Array(1, -1), z, p1, p2, mse
CheckError "ExpFit mixed signs", 20036, "The elements of the Y Values array must be nonzero and either all positive or all negative."
s.PolyFit Array(0, 1), Array(0, 1), 2, z, coef, mse
CheckError "PolyFit order", 20037, "The number of data points in the Y Values array must be greater than the order."
mse = "unchanged"
s.GenLSFit H, Array(1, 3, 5, 7.5), , 6, z, b, cv, mse
CheckError "GenLSFit algorithm", 20061, "The selection is invalid."
Check "GenLSFit output kept", mse, "unchanged"
s.ANOVA1Way Array(1, 2, 3), Array(0, 1, 2), 3, ssa, msa, f, sig, sse, mse, tss
CheckError "ANOVA1Way k = n", 20042, "The number of levels is out of range ."
s.ANOVA2Way Array(1, 5, 2, 10, 3, 7, 4, 12), Array(0, 0, 1, 1, 0, 0, 1, 1), Array(0, 1, 0, 1, 0, 1, 1, 1), 2, 2, 0, ss, ms, f, sig, sse, mse, tss
CheckError "ANOVA2Way unbalanced", 20047, "The data is unbalanced.  All cells must contain the same number of observations."
s.ContingencyTable Array(1, 2), stat, sig
CheckError "ContingencyTable 1-D", 20008, "The input arrays do not contain the correct number of data values for this function."
On Error GoTo 0

WScript.Echo passed & " passed, " & failed & " failed"
WScript.Quit failed

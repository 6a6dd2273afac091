' VNArray from VBScript, the way a script user calls it: arrays of variants
' in, arrays of doubles back, results read through the control itself (this
' script host cannot index an array of doubles).
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

Dim a : Set a = CreateObject("VNAnalysisControlsLib.VNArray.1")

' Element i of a result, through the control.
Function Elem(z, i)
    Elem = a.MaxArray(a.Subset1D(z, i, 1))
End Function

Sub CheckError(name, number, description)
    If Err.Number = number And Err.Description = description Then
        passed = passed + 1
    Else
        failed = failed + 1
        WScript.Echo "FAIL " & name & ": error " & Err.Number & " """ & Err.Description & """"
    End If
    Err.Clear
End Sub

Dim x, y, z, mx, imx, mn, imn, jmx, jmn, ofs, sc, ave, sdev, v
x = Array(1, 2, 3, 4, 5)
y = Array(10, 20, 30)

z = a.AddArray(x, y)
Check "AddArray count", a.SumArray(a.AddArray(a.MulArray(z, Array(0, 0, 0)), Array(1, 1, 1, 1, 1))), 3
Check "AddArray sum", a.SumArray(z), 66
Check "AddArray first", Elem(z, 0), 11
Check "SubArray", a.SumArray(a.SubArray(y, x)), 54
Check "MulArray", a.SumArray(a.MulArray(x, x)), 55
Check "DivArray", Elem(a.DivArray(y, Array(4, 5, 6)), 0), 2.5
Check "AbsArray", a.SumArray(a.AbsArray(Array(-1, 2, -3))), 6
Check "NegArray", a.SumArray(a.NegArray(x)), -15
Check "LinEvArray", a.SumArray(a.LinEvArray(x, 2, "1")), 35
Check "PolyEvArray", Elem(a.PolyEvArray(Array(2), Array(1, 2, 3)), 0), 17
z = a.ScaleArray(Array(0, 5, 10), ofs, sc)
Check "ScaleArray offset", ofs, 5
Check "ScaleArray scale", sc, 5
Check "ScaleArray first", Elem(z, 0), -1
z = a.QScaleArray(Array(-4, 2), sc)
Check "QScaleArray", sc, 4
Check "QScaleArray second", Elem(z, 1), 0.5
Check "ClipArray", a.SumArray(a.ClipArray(x, 4, 2)), 2 + 2 + 3 + 4 + 4
Check "ClipArray equal bounds", a.SumArray(a.ClipArray(x, 1, 1)), 5
Check "CopyArray", a.SumArray(a.CopyArray(x)), 15
z = a.NormalizeArray(Array(2, 4), ave, sdev)
Check "NormalizeArray mean", ave, 3
Check "NormalizeArray sdev", sdev, 1
Check "NormalizeArray first", Elem(z, 0), -1
Check "Reverse1D", Elem(a.Reverse1D(x), 0), 5
Check "Shift1D right", Elem(a.Shift1D(Array(1, 2, 3, 4), 1), 0), 0
Check "Shift1D left", Elem(a.Shift1D(Array(1, 2, 3, 4), -1), 3), 0
Check "Shift1D left first", Elem(a.Shift1D(Array(1, 2, 3, 4), -1), 0), 2
Check "Sort1D ascending", Elem(a.Sort1D(Array(3, 1, 2), 0), 0), 1
Check "Sort1D descending", Elem(a.Sort1D(Array(3, 1, 2), -1), 0), 3
Check "SumArray", a.SumArray(x), 15
Check "ProdArray", a.ProdArray(x), 120
Check "MaxArray", a.MaxArray(x), 5
Check "MinArray", a.MinArray(x), 1
a.MaxMin1D Array(3, 7, 7, 1, 1), mx, imx, mn, imn
Check "MaxMin1D max", mx, 7
Check "MaxMin1D imax", imx, 1
Check "MaxMin1D min", mn, 1
Check "MaxMin1D imin", imn, 3
Check "Subset1D", a.SumArray(a.Subset1D(x, 2, 3)), 12

Dim m(1, 2)
m(0, 0) = 1 : m(0, 1) = 2 : m(0, 2) = 3
m(1, 0) = 4 : m(1, 1) = 9 : m(1, 2) = 6
' Storage order runs down dimension 1 first: 1, 4, 2, 9, 3, 6. Block
' position 3 (the 9) has quotient 1 and remainder 0 by the size (3) of
' dimension 2.
a.MaxMin2D m, mx, imx, jmx, mn, imn, jmn
Check "MaxMin2D max", mx, 9
Check "MaxMin2D imax", imx, 1
Check "MaxMin2D jmax", jmx, 0
Check "MaxMin2D min", mn, 1
Check "Transpose2D", a.SumArray(a.Transpose2D(m)), 25

v = Array(5, 6, 7)
a.SetArray v, 2
Check "SetArray", a.SumArray(v), 6
a.ClearArray v
Check "ClearArray", a.SumArray(v), 0
Check "date string element", a.SumArray(Array("12:00:00", 1)), 1.5

' A list of numbers as an array of doubles, read back element by element.
Dim d, n, i, total, sizes, parts
d = a.CopyArray(Array(1, 2.5, "4"))     ' an array of doubles: 1, 2.5, 4
d = a.BuildArray(d, CDbl(8))            ' one more double (CDbl: VBScript's 8 is an Integer)
sizes = a.ArrayDimSizes(d)              ' an array of variants, indexable here
n = sizes(0)
Check "ArrayDimSizes", n, 4
Check "ArrayDims", a.ArrayDims(d), 1
total = 0
For i = 0 To n - 1
    total = total + a.IndexArray(d, i)
Next
Check "IndexArray loop", total, 15.5
Check "IndexArray type", TypeName(a.IndexArray(d, 1)), "Double"
Check "IndexArray of a numeric result", a.IndexArray(a.Sort1D(d, 1), 0), 8
Check "SearchArray", a.SearchArray(d, 4), 2
Check "SearchArray from 3", a.SearchArray(d, 4, 3), -1
z = a.Interleave1D(Array(1, 2, 3), Array(10, 20, 30))
Check "Interleave1D", a.IndexArray(z, 1), 10
parts = a.Interleave1D(z, 2)
Check "de-interleave", a.SumArray(a.IndexArray(parts, 1)), 60
Check "ConcatenateArray of strings", a.IndexArray(a.ConcatenateArray(Array("a", "b"), Array("c")), 2), "c"
Check "BuildArray into variants", a.IndexArray(a.BuildArray(Array("a", 2), 3.5), 2), 3.5
' m's storage runs 1, 4, 2, 9, 3, 6 (first index fastest).
Check "IndexArray of a matrix", a.IndexArray(m, 1, 2), 6
Check "SubsetArray of a matrix", a.SumArray(a.SubsetArray(m, 0, 2, 1, 2)), 2 + 3 + 9 + 6
Check "ReshapeArray", a.IndexArray(a.ReshapeArray(m, 3, 2), 1, 1), 3

On Error Resume Next
z = a.AddArray(x, 5)
CheckError "scalar for array", 30103, "The argument is not  an array."
z = a.DivArray(x, Array(1, 0, 2))
CheckError "DivArray zero", 20060, "Divide by zero error"
z = a.SumArray(Array())
CheckError "empty array", 20003, "The number of samples must be >0."
z = a.ClipArray(x, 0, 1)
CheckError "ClipArray bounds", 20019, "The upper value must be >= the lower value."
z = a.Shift1D(Array(1, 2, 3, 4), 4)
CheckError "Shift1D", 20102, "The shifts must meet: |shifts| < samples."
z = a.Subset1D(x, 2, 4)
CheckError "Subset1D", 20018, "The following condition must be met:  0 <= (index + length) < samples."
z = a.Sort1D(m, 0)
CheckError "Sort1D of a matrix", 20008, "The input arrays do not contain the correct number of data values for this function."
z = a.BuildArray(1, 2.5)
CheckError "BuildArray of two types", 30104, "The input parameters must all contain the same data type."
z = a.IndexArray(d, 4)
CheckError "IndexArray past the end", 20017, "The following condition must be met:  0 <= index < samples."
mx = "unchanged"
a.MaxMin1D Array(), mx, imx, mn, imn
CheckError "MaxMin1D of nothing", 20003, "The number of samples must be >0."
Check "output kept on failure", mx, "unchanged"
On Error GoTo 0

WScript.Echo passed & " passed, " & failed & " failed"
WScript.Quit failed

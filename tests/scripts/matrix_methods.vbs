' VNMatrix from VBScript: script arrays in, matrices and by-reference
' outputs back. Array results are read through the controls (this script
' host cannot index an array of doubles).
'
' A script array m(r - 1, q - 1) stores its first index fastest, and the
' methods read that block as r rows of q, row by row: element (i, j) of the
' matrix is the block's entry i*q + j, whichever script index holds it.
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

Dim mx : Set mx = CreateObject("VNAnalysisControlsLib.VNMatrix.1")
Dim a : Set a = CreateObject("VNAnalysisControlsLib.VNArray.1")

' Element i of a vector result, through VNArray.
Function Elem(z, i)
    Elem = a.MaxArray(a.Subset1D(z, i, 1))
End Function

' Unit vector e_j of length q (2 or 3).
Function Unit(q, j)
    If q = 2 Then
        If j = 0 Then Unit = Array(1, 0) Else Unit = Array(0, 1)
    ElseIf j = 0 Then
        Unit = Array(1, 0, 0)
    ElseIf j = 1 Then
        Unit = Array(0, 1, 0)
    Else
        Unit = Array(0, 0, 1)
    End If
End Function

' Element (i, j) of a matrix result with q columns: column j picked out by a
' product with e_j.
Function Elem2(z, q, i, j)
    Elem2 = Elem(mx.MatrixMul(z, Unit(q, j)), i)
End Function

' Block 1 .. 6 in storage order: the matrix [[1, 2, 3], [4, 5, 6]].
Dim m(1, 2)
m(0, 0) = 1 : m(1, 0) = 2 : m(0, 1) = 3 : m(1, 1) = 4 : m(0, 2) = 5 : m(1, 2) = 6

Dim z, t, b, p, sg, x, w, inv, warn, i, j, v
z = mx.MatrixMul(m, Array(1, 0, -1))
Check "2x3 times a vector is a vector of 2", mx.DotProduct(z, Array(1, 1)), -4
Check "2x3 times a vector: row 0", Elem(z, 0), -2
Check "2x3 times a vector: row 1", Elem(z, 1), -2
t = mx.Transpose(m)
Check "Transpose (0, 1)", Elem2(t, 2, 0, 1), 4
Check "Transpose (2, 0)", Elem2(t, 2, 2, 0), 3
z = mx.MatrixMul(m, t)   ' A * A' = [[14, 32], [32, 77]]
Check "A A' (0, 0)", Elem2(z, 2, 0, 0), 14
Check "A A' (0, 1)", Elem2(z, 2, 0, 1), 32
Check "A A' (1, 1)", Elem2(z, 2, 1, 1), 77
Check "DotProduct", mx.DotProduct(Array(1, 2, 3), Array(4, 5, -6)), -4
z = mx.OuterProduct(Array(1, 2), Array(3, 4, 5))
Check "OuterProduct (1, 2)", Elem2(z, 3, 1, 2), 10

' sq is [[0, 2], [1, 3]] (block 0, 2, 1, 3).
Dim sq(1, 1)
sq(0, 0) = 0 : sq(1, 0) = 2 : sq(0, 1) = 1 : sq(1, 1) = 3
Check "Trace", mx.Trace(sq), 3
Check "Determinant", mx.Determinant(sq), -2
mx.LU sq, b, p, sg
Check "LU p type", VarType(p), vbArray + vbLong
Check "LU p(0)", Elem(p, 0), 1
Check "LU Sign", sg, 1
Check "LU Sign type", VarType(sg), vbLong
x = mx.LinEqs(sq, Array(4, 7))   ' 2 x1 = 4, x0 + 3 x1 = 7
CheckNear "LinEqs x0", Elem(x, 0), 1, 1E-15
CheckNear "LinEqs x1", Elem(x, 1), 2, 1E-15
mx.ForwSub b, Array(4, 7), p, w
x = mx.BackSub(b, w)
CheckNear "ForwSub + BackSub", Elem(x, 1), 2, 1E-15
inv = mx.InvMatrix(sq)
z = mx.MatrixMul(sq, inv)
For i = 0 To 1
    For j = 0 To 1
        CheckNear "A inv(A) (" & i & ", " & j & ")", Elem2(z, 2, i, j), -(i = j), 1E-15
    Next
Next
Dim sing(1, 1)
sing(0, 0) = 1 : sing(1, 0) = 2 : sing(0, 1) = 2 : sing(1, 1) = 4
Check "Determinant singular", mx.Determinant(sing), 0
mx.GenLinEqs sing, Array(2, 4), 0, x, warn
Check "GenLinEqs rank warning", warn, 1
mx.GenLinEqs sq, Array(4, 7), 0, x, warn
Check "GenLinEqs full rank", warn, 0
CheckNear "GenLinEqs x1", Elem(x, 1), 2, 1E-14

Dim spd(1, 1)
spd(0, 0) = 4 : spd(1, 0) = 2 : spd(0, 1) = 2 : spd(1, 1) = 3
z = mx.Cholesky(spd)
CheckNear "Cholesky (1, 1)", Elem2(z, 2, 1, 1), Sqr(2), 1E-15
Check "Cholesky below diagonal", Elem2(z, 2, 1, 0), 0
Check "CheckPosdef", mx.CheckPosdef(spd), 1
Check "CheckPosdef indefinite", mx.CheckPosdef(sing), 0
Check "MatrixRank", mx.MatrixRank(sing), 1
Check "MatrixRank type", VarType(mx.MatrixRank(m)), vbLong
CheckNear "MatrixNorm Frobenius", mx.MatrixNorm(m, 2), Sqr(91), 1E-13
z = mx.SpecialMatrix(2, 0, Array(1, 2, 3), Array(9, 5, 6))
Check "Toeplitz (0, 2)", Elem2(z, 3, 0, 2), 6
Check "Toeplitz (2, 0)", Elem2(z, 3, 2, 0), 3
z = mx.SpecialMatrix(0, 2, 0, 0)
Check "Identity trace", mx.Trace(z), 2

On Error Resume Next
v = mx.InvMatrix(m)
CheckError "InvMatrix of 2x3", 20040, "The input matrix must be a square matrix."
v = mx.MatrixMul(m, Array(1, 2))
CheckError "MatrixMul inner size", 20008, "The input arrays do not contain the correct number of data values for this function."
v = mx.InvMatrix(sing)
CheckError "InvMatrix singular", 20041, "The system of equations cannot be solved because the input matrix is singular."
v = mx.GenDeterminant(sq, 4)
CheckError "GenDeterminant class 4", 20061, "The selection is invalid."
w = "unchanged"
mx.ForwSub b, Array(4, 7), Array(0, 2), w
CheckError "ForwSub p out of range", 20017, "The following condition must be met:  0 <= index < samples."
Check "ForwSub output kept", w, "unchanged"
warn = "unchanged"
mx.GenLinEqs m, Array(1, 2), 1, x, warn
CheckError "GenLinEqs class 1 of 2x3", 20040, "The input matrix must be a square matrix."
Check "GenLinEqs Warning kept", warn, "unchanged"
On Error GoTo 0

WScript.Echo passed & " passed, " & failed & " failed"
WScript.Quit failed

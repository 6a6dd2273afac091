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

Dim names, i, c
names = Array("VNArray", "VNComplex", "VNMatrix", "VNStat", "VNDSP")
For i = 0 To UBound(names)
    Set c = CreateObject("VNAnalysisControlsLib." & names(i) & ".1")
    WScript.Echo "created " & names(i)
Next
WScript.Echo "Demo finished"

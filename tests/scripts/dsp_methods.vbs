' VNDSP transforms and generators from VBScript: script arrays in, arrays of
' doubles and by-reference outputs back, a wave continued through its Phase
' variable. Array results are read through VNArray (this script host cannot
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

Dim dsp : Set dsp = CreateObject("VNAnalysisControlsLib.VNDSP.1")
Dim a : Set a = CreateObject("VNAnalysisControlsLib.VNArray.1")

Function Elem(z, i)
    Elem = a.MaxArray(a.Subset1D(z, i, 1))
End Function

Const Pi = 3.14159265358979
Dim x, y, z, yr, yi, back, phase, w1, w2, i, u1, u2, v

' The transform of 1, 2, 3, 4 is 10, -2 + 2i, -2, -2 - 2i.
x = Array(1, 2, 3, 4)
dsp.ReFFT x, y, z
Check "ReFFT Re X0", Elem(y, 0), 10
Check "ReFFT Im X1", Elem(z, 1), 2
Check "ReFFT Im X3", Elem(z, 3), -2
dsp.FFT x, Array(0, 0, 0, 0), yr, yi
CheckNear "FFT Re X1", Elem(yr, 1), -2, 1E-14
CheckNear "FFT Im X3", Elem(yi, 3), -2, 1E-14
dsp.InvFFT yr, yi, back, z
CheckNear "InvFFT re", Elem(back, 2), 3, 1E-14
CheckNear "InvFFT im", a.MaxArray(a.AbsArray(z)), 0, 1E-14
dsp.ReInvFFT y, Array(7, 7, 7, -2), back
CheckNear "ReInvFFT", Elem(back, 3), 4, 1E-14
Check "Caller array kept", x(3), 4
' |X|^2 / n^2: 100/16, 8/16, 4/16, 8/16; it sums to the mean square 30/4.
z = dsp.Spectrum(x)
CheckNear "Spectrum X0", Elem(z, 0), 6.25, 1E-14
CheckNear "Spectrum sum", a.SumArray(z), 7.5, 1E-14
' Re X - Im X: 10, -4, -2, 0.
z = dsp.FHT(x)
CheckNear "FHT H1", Elem(z, 1), -4, 1E-14
CheckNear "InvFHT", Elem(dsp.InvFHT(z), 1), 2, 1E-14

z = dsp.Ramp(5, 0, 2)
Check "Ramp spacing", Elem(z, 1), 0.5
Check "Ramp last", Elem(z, 4), 2
z = dsp.Impulse(8, 3, 5)
Check "Impulse position", Elem(z, 5), 3
Check "Impulse elsewhere", a.SumArray(z), 3
Check "Pulse to the end", a.SumArray(dsp.Pulse(6, 1, 2, 4)), 4
Check "Triangle peak", Elem(dsp.Triangle(5, 2), 2), 2
CheckNear "SinePattern", Elem(dsp.SinePattern(8, 2, 90, 1), 2), 0, 1E-14
CheckNear "Sinc at the delay", Elem(dsp.Sinc(6, 2, 1, 0.5), 2), 2, 0

' Phase carried across SineWave calls: 6 samples in one call and in two.
phase = 30
w1 = dsp.SineWave(6, 1, 0.1, phase)
CheckNear "SineWave phase handed back", phase, 246, 1E-10
phase = 30
w1 = dsp.SineWave(4, 1, 0.1, phase)
CheckNear "Phase after 4", phase, 174, 1E-10
w2 = dsp.SineWave(2, 1, 0.1, phase)
CheckNear "Phase after 6", phase, 246, 1E-10
For i = 0 To 1
    CheckNear "Second call sample " & i, Elem(w2, i), Sin((30 + (4 + i) * 36) * Pi / 180), 1E-12
Next
phase = -90
w1 = dsp.SineWave(4, 2, 0.25, phase)
CheckNear "Negative phase start", Elem(w1, 0), -2, 1E-14
Check "Negative phase reduced", phase, 270
phase = 0
Check "SquareWave duty above 100", a.SumArray(dsp.SquareWave(4, 1, 0.1, 150, phase)), 4
phase = 315
CheckNear "ArbitraryWave wrap", Elem(dsp.ArbitraryWave(1, 1, 0, Array(0, 1, 2, 3), 1, phase), 0), 1.5, 1E-14

' Noise: one shared sequence; a repeated seed repeats it.
u1 = dsp.Uniform(5, 17)
u2 = dsp.Uniform(5, 17)
Check "Uniform seed repeats", a.SumArray(a.SubArray(u1, u2)), 0
u1 = dsp.Uniform(5, 0)
u2 = dsp.Uniform(5, 32767)
Check "Seed 0 is 32767", a.SumArray(a.SubArray(u1, u2)), 0
u1 = dsp.Uniform(6, 17)
u2 = dsp.Uniform(3, 17)
Check "Seed -1 continues", Elem(dsp.Uniform(3, -1), 2), Elem(u1, 5)

On Error Resume Next
dsp.FFT Array(1, 2, 3), Array(0, 0, 0), yr, yi
CheckError "FFT of 3", 20009, "The size of the input array must be a power of two:  size = 2^m, 0<m<23."
yr = "unchanged"
dsp.FFT Array(1, 2, 3, 4, 5, 6, 7, 8), Array(1, 2, 3, 4), yr, yi
CheckError "FFT parts differ", 20008, "The input arrays do not contain the correct number of data values for this function."
Check "FFT output kept", yr, "unchanged"
v = dsp.Spectrum(Array())
CheckError "Spectrum of nothing", 20003, "The number of samples must be >0."
v = dsp.Impulse(4, 1, 4)
CheckError "Impulse index", 20017, "The following condition must be met:  0 <= index < samples."
v = dsp.Ramp(1, 0, 1)
CheckError "Ramp of 1", 20006, "The number of samples must be >= 2."
phase = 123
v = dsp.SineWave(0, 1, 0.1, phase)
CheckError "SineWave of 0", 20003, "The number of samples must be >0."
Check "Phase kept", phase, 123
On Error GoTo 0

WScript.Echo passed & " passed, " & failed & " failed"
WScript.Quit failed

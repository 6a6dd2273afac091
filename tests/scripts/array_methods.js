// VNArray from JScript. JScript arrays are objects, not safe arrays, so a
// script hands the controls a safe array it got from another automation
// object (here a dictionary's Items). This script host cannot hold an array
// of doubles as a value, so results are read through the methods that return
// a number.
var passed = 0, failed = 0;
function check(name, got, expected) {
    if (got === expected) { passed++; }
    else { failed++; WScript.Echo("FAIL " + name + ": got " + got + ", expected " + expected); }
}
function checkError(name, f, number, description) {
    try {
        f();
        failed++;
        WScript.Echo("FAIL " + name + ": no error");
    } catch (e) {
        check(name + " number", (e.number >>> 0).toString(16), number.toString(16));
        check(name + " description", e.description, description);
    }
}
function safeArray(values) {
    var d = new ActiveXObject("Scripting.Dictionary");
    for (var i = 0; i < values.length; i++) d.Add(i, values[i]);
    return d.Items();
}

var a = new ActiveXObject("VNAnalysisControlsLib.VNArray");
var x = safeArray([1, 2, 3, 4, 5]);
var y = safeArray([10, 20, 30]);

check("SumArray", a.SumArray(x), 15);
check("ProdArray", a.ProdArray(x), 120);
check("MaxArray", a.MaxArray(safeArray([3, -1, 7, 2])), 7);
check("MinArray", a.MinArray(safeArray([3, -1, 7, 2])), -1);
check("numeric strings", a.SumArray(safeArray(["1.5", 2, "0.25"])), 3.75);
check("date string", a.SumArray(safeArray(["12:00:00", 1])), 1.5);

checkError("JScript array", function () { a.SumArray([1, 2]); }, 0x800A7597, "The argument is not  an array.");
checkError("number for array", function () { a.AddArray(x, 3); }, 0x800A7597, "The argument is not  an array.");
checkError("divide by zero", function () { a.DivArray(x, safeArray([1, 0])); }, 0x800A4E5C, "Divide by zero error");
checkError("empty", function () { a.SumArray(safeArray([])); }, 0x800A4E23, "The number of samples must be >0.");
checkError("clip bounds", function () { a.ClipArray(x, 0, 1); }, 0x800A4E33, "The upper value must be >= the lower value.");
checkError("shift", function () { a.Shift1D(x, -5); }, 0x800A4E86, "The shifts must meet: |shifts| < samples.");

var names = ["VNArray", "VNComplex", "VNMatrix", "VNStat", "VNDSP"];
for (var i = 0; i < names.length; i++) {
    var c = new ActiveXObject("VNAnalysisControlsLib." + names[i] + ".1");
    check("create " + names[i], c != null, true);
}

WScript.Echo(passed + " passed, " + failed + " failed");
WScript.Quit(failed);

// VNArray from JScript. JScript arrays are objects, not safe arrays, so a
// script hands the controls a safe array it got from another automation
// object (here a dictionary's Items), and reads results through VBArray.
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

var z = new VBArray(a.AddArray(x, y)).toArray();
check("AddArray length", z.length, 3);
check("AddArray values", z.join(","), "11,22,33");
check("SumArray", a.SumArray(x), 15);
check("MaxArray", a.MaxArray(x), 5);
check("Sort1D", new VBArray(a.Sort1D(safeArray([3, 1, 2]), 1)).toArray().join(","), "3,2,1");
check("result into next call", a.SumArray(a.NegArray(x)), -15);
check("numeric string scalar", new VBArray(a.LinEvArray(x, "2", 0)).toArray().join(","), "2,4,6,8,10");

checkError("JScript array", function () { a.AddArray([1, 2], x); }, 0x800A7597, "The argument is not  an array.");
checkError("divide by zero", function () { a.DivArray(x, safeArray([1, 0])); }, 0x800A4E5C, "Divide by zero error");
checkError("empty", function () { a.SumArray(safeArray([])); }, 0x800A4E23, "The number of samples must be >0.");

var names = ["VNArray", "VNComplex", "VNMatrix", "VNStat", "VNDSP"];
for (var i = 0; i < names.length; i++) {
    var c = new ActiveXObject("VNAnalysisControlsLib." + names[i] + ".1");
    check("create " + names[i], typeof c, "object");
}

WScript.Echo(passed + " passed, " + failed + " failed");
WScript.Quit(failed);

// A host that uses the controls without registering them. Its manifest
// (regfree_client.exe.manifest, embedded as resource 1) depends on the
// assembly VNAnalysisControls, which VNAnalysisControls.manifest next to
// VNMATH.dll in the host's folder describes; COM then finds the classes by
// ProgID and CLSID through the process's activation context.
//
// Prints one line per check and "N passed, M failed"; exits with M.
#include <windows.h>
#include <oleauto.h>

#include <cstdio>
#include <cwchar>

namespace {

int passed = 0, failed = 0;

void Check(bool ok, const char* what) {
    std::printf("%s: %s\n", ok ? "ok" : "FAILED", what);
    (ok ? passed : failed)++;
}

bool Registered(const wchar_t* key) {
    HKEY handle = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key, 0, KEY_READ, &handle) != ERROR_SUCCESS) return false;
    RegCloseKey(handle);
    return true;
}

// VNArray.AddArray({1, 2, 3}, {10, 20, 30}) through IDispatch, as a script
// host would call it; true when the sum comes back.
bool AddArrays(IDispatch* array) {
    OLECHAR* name = const_cast<OLECHAR*>(L"AddArray");
    DISPID id = 0;
    if (FAILED(array->GetIDsOfNames(IID_NULL, &name, 1, LOCALE_USER_DEFAULT, &id))) return false;
    VARIANT args[2];
    const double values[2][3] = {{10, 20, 30}, {1, 2, 3}};  // last argument first
    for (int a = 0; a < 2; ++a) {
        VariantInit(&args[a]);
        SAFEARRAY* block = SafeArrayCreateVector(VT_R8, 0, 3);
        for (LONG i = 0; i < 3; ++i) SafeArrayPutElement(block, &i, const_cast<double*>(&values[a][i]));
        V_VT(&args[a]) = VT_ARRAY | VT_R8;
        V_ARRAY(&args[a]) = block;
    }
    DISPPARAMS params = {args, nullptr, 2, 0};
    VARIANT result;
    VariantInit(&result);
    bool ok = SUCCEEDED(array->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, &result,
                                      nullptr, nullptr)) &&
              V_VT(&result) == (VT_ARRAY | VT_R8);
    for (LONG i = 0; ok && i < 3; ++i) {
        double sum = 0;
        SafeArrayGetElement(V_ARRAY(&result), &i, &sum);
        ok = sum == values[0][i] + values[1][i];
    }
    VariantClear(&result);
    VariantClear(&args[0]);
    VariantClear(&args[1]);
    return ok;
}

}  // namespace

int main() {
    if (FAILED(CoInitialize(nullptr))) return 1;
    const wchar_t* const names[] = {L"VNArray", L"VNComplex", L"VNMatrix", L"VNStat", L"VNDSP"};
    for (const wchar_t* name : names) {
        wchar_t progId[64], versioned[64];
        std::swprintf(progId, 64, L"VNAnalysisControlsLib.%ls", name);
        std::swprintf(versioned, 64, L"VNAnalysisControlsLib.%ls.1", name);
        char what[128];
        std::snprintf(what, sizeof what, "%ls is not in the registry", versioned);
        Check(!Registered(versioned) && !Registered(progId), what);

        CLSID byVersioned = CLSID_NULL, byPlain = CLSID_NULL;
        std::snprintf(what, sizeof what, "both ProgIDs of %ls name one class", name);
        Check(SUCCEEDED(CLSIDFromProgID(versioned, &byVersioned)) && SUCCEEDED(CLSIDFromProgID(progId, &byPlain)) &&
                  IsEqualCLSID(byVersioned, byPlain),
              what);
        IDispatch* control = nullptr;
        std::snprintf(what, sizeof what, "%ls created by CLSID", name);
        Check(SUCCEEDED(CoCreateInstance(byVersioned, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                                         reinterpret_cast<void**>(&control))),
              what);
        if (control) {
            // The type information comes from the DLL itself, not the registry.
            ITypeInfo* info = nullptr;
            std::snprintf(what, sizeof what, "%ls describes its methods", name);
            Check(SUCCEEDED(control->GetTypeInfo(0, LOCALE_USER_DEFAULT, &info)) && info, what);
            if (info) info->Release();
            if (name == names[0]) Check(AddArrays(control), "VNArray.AddArray adds");
            control->Release();
        }
    }
    CoUninitialize();
    std::printf("%d passed, %d failed\n", passed, failed);
    return failed;
}

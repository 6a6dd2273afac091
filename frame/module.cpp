// The in-process server: entry points, class factories and registration.
//
// Registration writes the keys itself rather than through the type-library
// registration API, so that machine-wide and per-user registration work the
// same way, and so that removing one of the 32-bit and 64-bit servers never
// removes the keys that the other still needs: ProgID and TypeLib keys are
// shared between the two registry views, CLSID keys are not.
#include "frame/controls.h"

#include "VNMATH_h.h"
#include "frame/dispatch.h"
#include "frame/errors.h"
#include "frame/ole_control.h"
#include "resource_ids.h"

#include <windows.h>
#include <olectl.h>

#include <string>

namespace vn {

const ControlClass kControlClasses[5] = {
    {&CVNArrayCtrl::Table, L"VNArray", L"VNArray Control", &DIID__DVNArrayEvents},
    {&CVNComplexCtrl::Table, L"VNComplex", L"VNComplex Control", &DIID__DVNComplexEvents},
    {&CVNMatrixCtrl::Table, L"VNMatrix", L"VNMatrix Control", &DIID__DVNMatrixEvents},
    {&CVNStatCtrl::Table, L"VNStat", L"VNStat Control", &DIID__DVNStatEvents},
    {&CVNDSPCtrl::Table, L"VNDSP", L"VNDSP Control", &DIID__DVNDSPEvents},
};

namespace {

HMODULE g_module = nullptr;
LONG g_locks = 0;

// ------------------------------------------------------------ class factory

class ClassFactory final : public IClassFactory {
public:
    explicit ClassFactory(const DispatchTable& table) : table_(table) { AddModuleRef(); }
    ~ClassFactory() { ReleaseModuleRef(); }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IClassFactory)) {
            *object = static_cast<IClassFactory*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&refs_)); }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG refs = InterlockedDecrement(&refs_);
        if (refs == 0) delete this;
        return static_cast<ULONG>(refs);
    }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (outer) return CLASS_E_NOAGGREGATION;
        return CreateControl(table_, iid, object);
    }
    HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
        if (lock)
            InterlockedIncrement(&g_locks);
        else
            InterlockedDecrement(&g_locks);
        return S_OK;
    }

private:
    LONG refs_ = 1;
    const DispatchTable& table_;
};

// ------------------------------------------------------------- registration

std::wstring GuidText(REFGUID guid) {
    wchar_t text[64];
    StringFromGUID2(guid, text, 64);
    return text;
}

std::wstring ModulePath() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(g_module, path, MAX_PATH);
    return std::wstring(path, length);
}

#ifdef _WIN64
constexpr REGSAM kOtherView = KEY_WOW64_32KEY;
constexpr const wchar_t* kPlatformKey = L"win64";
constexpr const wchar_t* kOtherPlatformKey = L"win32";
#else
constexpr REGSAM kOtherView = KEY_WOW64_64KEY;
constexpr const wchar_t* kPlatformKey = L"win32";
constexpr const wchar_t* kOtherPlatformKey = L"win64";
#endif

constexpr const wchar_t* kLibraryVersion = L"1.1";
constexpr const wchar_t* kPSDispatch = L"{00020420-0000-0000-C000-000000000046}";
constexpr const wchar_t* kCategories[] = {
    L"{40FC6ED4-2438-11CF-A3DB-080036F12502}",  // control
    L"{7DD95801-9882-11CF-9FA9-00AA006C42C4}",  // safe for scripting
    L"{7DD95802-9882-11CF-9FA9-00AA006C42C4}",  // safe for initialising
};

class Registry {
public:
    explicit Registry(bool perUser) : perUser_(perUser) {}

    HRESULT Open() {
        if (!perUser_) {
            root_ = HKEY_CLASSES_ROOT;
            return S_OK;
        }
        const LONG rc = RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Classes", 0, nullptr, 0, KEY_ALL_ACCESS,
                                        nullptr, &owned_, nullptr);
        root_ = owned_;
        return HRESULT_FROM_WIN32(rc);
    }
    ~Registry() {
        if (owned_) RegCloseKey(owned_);
    }

    HRESULT Set(const std::wstring& key, const wchar_t* name, const std::wstring& value) {
        HKEY handle = nullptr;
        LONG rc = RegCreateKeyExW(root_, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &handle, nullptr);
        if (rc != ERROR_SUCCESS) return HRESULT_FROM_WIN32(rc);
        rc = RegSetValueExW(handle, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                            static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t)));
        RegCloseKey(handle);
        return HRESULT_FROM_WIN32(rc);
    }

    HRESULT CreateKey(const std::wstring& key) {
        HKEY handle = nullptr;
        const LONG rc = RegCreateKeyExW(root_, key.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &handle, nullptr);
        if (handle) RegCloseKey(handle);
        return HRESULT_FROM_WIN32(rc);
    }

    void DeleteTree(const std::wstring& key, REGSAM view = 0) {
        HKEY handle = nullptr;
        if (RegOpenKeyExW(root_, key.c_str(), 0, KEY_ALL_ACCESS | view, &handle) != ERROR_SUCCESS) return;
        RegDeleteTreeW(handle, nullptr);
        RegCloseKey(handle);
        DeleteKey(key, view);
    }

    // Deletes a key only when it has no subkeys left.
    void DeleteIfEmpty(const std::wstring& key) {
        HKEY handle = nullptr;
        if (RegOpenKeyExW(root_, key.c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS) return;
        DWORD subkeys = 0;
        RegQueryInfoKeyW(handle, nullptr, nullptr, nullptr, &subkeys, nullptr, nullptr, nullptr, nullptr, nullptr,
                         nullptr, nullptr);
        RegCloseKey(handle);
        if (subkeys == 0) DeleteTree(key);
    }

    bool Exists(const std::wstring& key, REGSAM view = 0) {
        HKEY handle = nullptr;
        if (RegOpenKeyExW(root_, key.c_str(), 0, KEY_READ | view, &handle) != ERROR_SUCCESS) return false;
        RegCloseKey(handle);
        return true;
    }

private:
    void DeleteKey(const std::wstring& key, REGSAM view) {
        const std::size_t slash = key.rfind(L'\\');
        const std::wstring parent = slash == std::wstring::npos ? L"" : key.substr(0, slash);
        const std::wstring leaf = slash == std::wstring::npos ? key : key.substr(slash + 1);
        HKEY handle = nullptr;
        if (RegOpenKeyExW(root_, parent.c_str(), 0, KEY_ALL_ACCESS | view, &handle) != ERROR_SUCCESS) return;
        RegDeleteKeyExW(handle, leaf.c_str(), view, 0);
        RegCloseKey(handle);
    }

    bool perUser_;
    HKEY root_ = nullptr;
    HKEY owned_ = nullptr;
};

std::wstring ProgId(const ControlClass& c, bool versioned) {
    std::wstring id = std::wstring(L"VNAnalysisControlsLib.") + c.name;
    return versioned ? id + L".1" : id;
}

HRESULT RegisterAll(bool perUser) {
    Registry reg(perUser);
    HRESULT hr = reg.Open();
    if (FAILED(hr)) return SELFREG_E_CLASS;
    const std::wstring path = ModulePath();
    const std::wstring folder = path.substr(0, path.rfind(L'\\'));
    const std::wstring libid = GuidText(LIBID_VNAnalysisControlsLib);
    auto ok = [&hr](HRESULT r) {
        if (FAILED(r) && SUCCEEDED(hr)) hr = r;
    };
    hr = S_OK;

    // Type library and its interfaces.
    const std::wstring lib = L"TypeLib\\" + libid + L"\\" + kLibraryVersion;
    ok(reg.Set(lib, nullptr, L"VNAnalysisControlsLib"));
    ok(reg.Set(lib + L"\\0\\" + kPlatformKey, nullptr, path));
    ok(reg.Set(lib + L"\\FLAGS", nullptr, L"2"));  // a control's library
    ok(reg.Set(lib + L"\\HELPDIR", nullptr, folder));

    for (int k = 0; k < 5; ++k) {
        const ControlClass& c = kControlClasses[k];
        const DispatchTable& table = c.table();
        const std::wstring clsid = GuidText(*table.clsid);
        const std::wstring key = L"CLSID\\" + clsid;
        ok(reg.Set(key, nullptr, c.description));
        ok(reg.Set(key + L"\\InprocServer32", nullptr, path));
        ok(reg.Set(key + L"\\InprocServer32", L"ThreadingModel", L"Apartment"));
        ok(reg.Set(key + L"\\ProgID", nullptr, ProgId(c, true)));
        ok(reg.Set(key + L"\\VersionIndependentProgID", nullptr, ProgId(c, false)));
        ok(reg.Set(key + L"\\TypeLib", nullptr, libid));
        ok(reg.Set(key + L"\\Version", nullptr, kLibraryVersion));
        ok(reg.CreateKey(key + L"\\Control"));
        ok(reg.Set(key + L"\\MiscStatus", nullptr, L"0"));
        ok(reg.Set(key + L"\\MiscStatus\\1", nullptr, std::to_wstring(kControlMiscStatus)));
        // What a form designer shows: the toolbox picture (a bitmap resource
        // id) and the icon (a negative value is a resource id, not an index).
        ok(reg.Set(key + L"\\ToolboxBitmap32", nullptr, path + L", " + std::to_wstring(IDB_TOOLBOX_FIRST + k)));
        ok(reg.Set(key + L"\\DefaultIcon", nullptr, path + L",-" + std::to_wstring(IDI_CONTROL_FIRST + k)));
        ok(reg.CreateKey(key + L"\\Insertable"));
        for (const wchar_t* category : kCategories) ok(reg.CreateKey(key + L"\\Implemented Categories\\" + category));

        ok(reg.Set(ProgId(c, true), nullptr, c.description));
        ok(reg.Set(ProgId(c, true) + L"\\CLSID", nullptr, clsid));
        ok(reg.Set(ProgId(c, false), nullptr, c.description));
        ok(reg.Set(ProgId(c, false) + L"\\CLSID", nullptr, clsid));
        ok(reg.Set(ProgId(c, false) + L"\\CurVer", nullptr, ProgId(c, true)));

        const std::wstring name = std::wstring(L"_DVN") + (c.name + 2);
        ITypeLib* library = nullptr;
        // The event interface's IID comes from the type library.
        if (SUCCEEDED(GetModuleTypeLib(&library))) {
            ITypeInfo* coclass = nullptr;
            if (SUCCEEDED(library->GetTypeInfoOfGuid(*table.clsid, &coclass))) {
                HREFTYPE ref = 0;
                ITypeInfo* events = nullptr;
                TYPEATTR* attr = nullptr;
                if (SUCCEEDED(coclass->GetRefTypeOfImplType(1, &ref)) &&
                    SUCCEEDED(coclass->GetRefTypeInfo(ref, &events)) && SUCCEEDED(events->GetTypeAttr(&attr))) {
                    const std::wstring eventKey = L"Interface\\" + GuidText(attr->guid);
                    ok(reg.Set(eventKey, nullptr, name + L"Events"));
                    ok(reg.Set(eventKey + L"\\ProxyStubClsid", nullptr, kPSDispatch));
                    ok(reg.Set(eventKey + L"\\ProxyStubClsid32", nullptr, kPSDispatch));
                    ok(reg.Set(eventKey + L"\\TypeLib", nullptr, libid));
                    ok(reg.Set(eventKey + L"\\TypeLib", L"Version", kLibraryVersion));
                    events->ReleaseTypeAttr(attr);
                }
                if (events) events->Release();
                coclass->Release();
            }
            library->Release();
        }
        const std::wstring ifaceKey = L"Interface\\" + GuidText(*table.dispatchIid);
        ok(reg.Set(ifaceKey, nullptr, name));
        ok(reg.Set(ifaceKey + L"\\ProxyStubClsid", nullptr, kPSDispatch));
        ok(reg.Set(ifaceKey + L"\\ProxyStubClsid32", nullptr, kPSDispatch));
        ok(reg.Set(ifaceKey + L"\\TypeLib", nullptr, libid));
        ok(reg.Set(ifaceKey + L"\\TypeLib", L"Version", kLibraryVersion));
    }
    return FAILED(hr) ? SELFREG_E_CLASS : S_OK;
}

HRESULT UnregisterAll(bool perUser) {
    Registry reg(perUser);
    if (FAILED(reg.Open())) return SELFREG_E_CLASS;
    const std::wstring libid = GuidText(LIBID_VNAnalysisControlsLib);
    const std::wstring lib = L"TypeLib\\" + libid + L"\\" + kLibraryVersion;
    bool otherPlatformRemains = false;
    for (const ControlClass& c : kControlClasses) {
        const DispatchTable& table = c.table();
        const std::wstring key = L"CLSID\\" + GuidText(*table.clsid);
        reg.DeleteTree(key);
        // The other bitness may still serve this class through the shared
        // ProgID keys; they go only with the last server.
        if (reg.Exists(key + L"\\InprocServer32", kOtherView)) {
            otherPlatformRemains = true;
            continue;
        }
        reg.DeleteTree(ProgId(c, true));
        reg.DeleteTree(ProgId(c, false));
    }
    reg.DeleteTree(lib + L"\\0\\" + kPlatformKey);
    if (reg.Exists(lib + L"\\0\\" + kOtherPlatformKey)) otherPlatformRemains = true;
    if (!otherPlatformRemains) {
        reg.DeleteTree(lib);
        reg.DeleteIfEmpty(L"TypeLib\\" + libid);
        ITypeLib* library = nullptr;
        if (SUCCEEDED(GetModuleTypeLib(&library))) {
            const UINT count = library->GetTypeInfoCount();
            for (UINT i = 0; i < count; ++i) {
                TYPEKIND kind;
                if (FAILED(library->GetTypeInfoType(i, &kind)) || kind != TKIND_DISPATCH) continue;
                ITypeInfo* info = nullptr;
                TYPEATTR* attr = nullptr;
                if (SUCCEEDED(library->GetTypeInfo(i, &info)) && SUCCEEDED(info->GetTypeAttr(&attr))) {
                    reg.DeleteTree(L"Interface\\" + GuidText(attr->guid));
                    info->ReleaseTypeAttr(attr);
                }
                if (info) info->Release();
            }
            library->Release();
        }
    }
    return S_OK;
}

}  // namespace
}  // namespace vn

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    if (reason == DLL_PROCESS_ATTACH) {
        vn::g_module = instance;
        vn::SetResourceModule(instance);
    }
    return TRUE;
}

extern "C" HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    for (const vn::ControlClass& c : vn::kControlClasses) {
        const vn::DispatchTable& table = c.table();
        if (!IsEqualCLSID(clsid, *table.clsid)) continue;
        vn::ClassFactory* factory = new (std::nothrow) vn::ClassFactory(table);
        if (!factory) return E_OUTOFMEMORY;
        const HRESULT hr = factory->QueryInterface(iid, object);
        factory->Release();
        return hr;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

extern "C" HRESULT STDAPICALLTYPE DllCanUnloadNow() {
    if (vn::LiveObjectCount() != 0 || vn::g_locks != 0) return S_FALSE;
    // No control is alive, so no control window either.
    vn::ReleaseControlWindowClass();
    return S_OK;
}

extern "C" HRESULT STDAPICALLTYPE DllRegisterServer() {
    return vn::RegisterAll(false);
}

extern "C" HRESULT STDAPICALLTYPE DllUnregisterServer() {
    return vn::UnregisterAll(false);
}

// regsvr32 /n /i:user registers for the current user only (no administrator
// rights needed); any other command line means machine-wide.
extern "C" HRESULT STDAPICALLTYPE DllInstall(BOOL install, LPCWSTR commandLine) {
    const bool perUser = commandLine && CompareStringW(LOCALE_INVARIANT, NORM_IGNORECASE, commandLine, -1,
                                                       L"user", -1) == CSTR_EQUAL;
    return install ? vn::RegisterAll(perUser) : vn::UnregisterAll(perUser);
}

// Registration entry points, machine-wide and per user, called the way
// regsvr32 calls them.
#include "client.h"

#include <gtest/gtest.h>

#include <cstdlib>

using namespace vntest;

namespace {

using Entry = HRESULT(STDAPICALLTYPE*)();
using Install = HRESULT(STDAPICALLTYPE*)(BOOL, LPCWSTR);

const wchar_t* const kProgIds[] = {L"VNAnalysisControlsLib.VNArray.1", L"VNAnalysisControlsLib.VNComplex.1",
                                   L"VNAnalysisControlsLib.VNMatrix.1", L"VNAnalysisControlsLib.VNStat.1",
                                   L"VNAnalysisControlsLib.VNDSP.1", L"VNAnalysisControlsLib.VNArray",
                                   L"VNAnalysisControlsLib.VNDSP"};

// GetProcAddress returns a generic function pointer; go through void* to
// the real signature.
template <typename F>
F Proc(HMODULE module, const char* name) {
    return reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

bool KeyExists(HKEY root, const std::wstring& path, REGSAM view = 0) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ | view, &key) != ERROR_SUCCESS) return false;
    RegCloseKey(key);
    return true;
}

std::wstring ClsidKey(const wchar_t* progId) {
    CLSID clsid;
    if (FAILED(CLSIDFromProgID(progId, &clsid))) return L"";
    wchar_t text[64];
    StringFromGUID2(clsid, text, 64);
    return std::wstring(L"CLSID\\") + text;
}

class Registration : public ::testing::Test {
protected:
    void SetUp() override {
        module_ = LoadLibraryW(RegisteredModulePath().c_str());
        ASSERT_NE(module_, nullptr);
        reg_ = Proc<Entry>(module_, "DllRegisterServer");
        unreg_ = Proc<Entry>(module_, "DllUnregisterServer");
        install_ = Proc<Install>(module_, "DllInstall");
        ASSERT_TRUE(reg_ && unreg_ && install_);
        clsidKey_ = ClsidKey(L"VNAnalysisControlsLib.VNMatrix.1");
        ASSERT_FALSE(clsidKey_.empty()) << "the module must be registered before the tests";
    }
    void TearDown() override {
        // Leave the machine registered, whatever happened.
        if (reg_) reg_();
        if (module_) FreeLibrary(module_);
    }
    HMODULE module_ = nullptr;
    Entry reg_ = nullptr, unreg_ = nullptr;
    Install install_ = nullptr;
    std::wstring clsidKey_;
};

TEST_F(Registration, UnregisterRemovesAndRegisterRestores) {
    // The module of the other bitness may be registered in the same prefix;
    // the ProgID and TypeLib keys are shared with it and must then survive.
#ifdef _WIN64
    const REGSAM otherView = KEY_WOW64_32KEY;
#else
    const REGSAM otherView = KEY_WOW64_64KEY;
#endif
    const bool otherRemains = KeyExists(HKEY_CLASSES_ROOT, clsidKey_ + L"\\InprocServer32", otherView);
    ASSERT_EQ(unreg_(), S_OK);
    CLSID clsid;
    for (const wchar_t* progId : kProgIds)
        EXPECT_EQ(SUCCEEDED(CLSIDFromProgID(progId, &clsid)), otherRemains) << Narrow(progId);
    EXPECT_FALSE(KeyExists(HKEY_CLASSES_ROOT, clsidKey_));
    EXPECT_EQ(KeyExists(HKEY_CLASSES_ROOT, L"TypeLib\\{BDA6788C-854D-418A-976E-C18B4971C883}"), otherRemains);
    EXPECT_EQ(unreg_(), S_OK) << "unregistering twice is harmless";

    ASSERT_EQ(reg_(), S_OK);
    for (const wchar_t* progId : kProgIds) {
        SCOPED_TRACE(Narrow(progId));
        Control control(progId);
        EXPECT_TRUE(control.valid()) << std::hex << control.createResult();
    }
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, clsidKey_ + L"\\Control"));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, clsidKey_ + L"\\MiscStatus\\1"));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, clsidKey_ + L"\\InprocServer32"));
    EXPECT_TRUE(KeyExists(HKEY_CLASSES_ROOT, L"TypeLib\\{BDA6788C-854D-418A-976E-C18B4971C883}\\1.1"));
    // Invisible at run time.
    wchar_t misc[32] = {};
    LONG size = sizeof misc;
    ASSERT_EQ(RegQueryValueW(HKEY_CLASSES_ROOT, (clsidKey_ + L"\\MiscStatus\\1").c_str(), misc, &size),
              ERROR_SUCCESS);
    EXPECT_TRUE(_wtol(misc) & OLEMISC_INVISIBLEATRUNTIME);
}

TEST_F(Registration, PerUserRegistrationWritesOnlyTheUsersClasses) {
    const std::wstring userClasses = L"Software\\Classes\\";
    ASSERT_EQ(install_(TRUE, L"user"), S_OK);
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, userClasses + clsidKey_ + L"\\InprocServer32"));
    EXPECT_TRUE(KeyExists(HKEY_CURRENT_USER, userClasses + L"VNAnalysisControlsLib.VNMatrix.1\\CLSID"));
    EXPECT_TRUE(
        KeyExists(HKEY_CURRENT_USER, userClasses + L"TypeLib\\{BDA6788C-854D-418A-976E-C18B4971C883}\\1.1"));
    ASSERT_EQ(install_(FALSE, L"user"), S_OK);
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, userClasses + clsidKey_));
    EXPECT_FALSE(KeyExists(HKEY_CURRENT_USER, userClasses + L"VNAnalysisControlsLib.VNMatrix.1"));
    // The machine-wide registration is untouched.
    Control control(L"VNAnalysisControlsLib.VNMatrix.1");
    EXPECT_TRUE(control.valid());
}

TEST_F(Registration, ClassObjectsAndUnloading) {
    using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
    using CanUnload = HRESULT(STDAPICALLTYPE*)();
    auto getClassObject = Proc<GetClassObject>(module_, "DllGetClassObject");
    auto canUnload = Proc<CanUnload>(module_, "DllCanUnloadNow");
    ASSERT_TRUE(getClassObject && canUnload);
    CLSID clsid;
    ASSERT_EQ(CLSIDFromProgID(L"VNAnalysisControlsLib.VNDSP.1", &clsid), S_OK);
    IClassFactory* factory = nullptr;
    ASSERT_EQ(getClassObject(clsid, IID_IClassFactory, reinterpret_cast<void**>(&factory)), S_OK);
    EXPECT_EQ(canUnload(), S_FALSE);
    IDispatch* object = nullptr;
    ASSERT_EQ(factory->CreateInstance(nullptr, IID_IDispatch, reinterpret_cast<void**>(&object)), S_OK);
    IUnknown* outer = reinterpret_cast<IUnknown*>(object);
    IUnknown* inner = nullptr;
    EXPECT_EQ(factory->CreateInstance(outer, IID_IUnknown, reinterpret_cast<void**>(&inner)),
              CLASS_E_NOAGGREGATION);
    factory->Release();
    EXPECT_EQ(canUnload(), S_FALSE);
    object->Release();
    EXPECT_EQ(canUnload(), S_OK);
    EXPECT_EQ(getClassObject(IID_IDispatch, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
              CLASS_E_CLASSNOTAVAILABLE);
}

}  // namespace

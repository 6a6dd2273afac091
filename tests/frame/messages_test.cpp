// Status codes to automation errors, against the module's own message table.
#include "frame/errors.h"

#include "client.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

namespace {

// Loads the module's resources (the registered VNMATH.dll) into this test.
class MessageTable : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        module_ = LoadLibraryExW(vntest::RegisteredModulePath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        vn::SetResourceModule(module_);
    }
    static HMODULE module_;
};
HMODULE MessageTable::module_ = nullptr;

vn::AutomationError Raise(vn::AnalysisStatus status) {
    try {
        vn::ThrowAnalysisStatus(status);
    } catch (const vn::AutomationError& e) {
        return e;
    }
    return {S_OK, "", false};
}

TEST_F(MessageTable, StatusesBecomeCodesAndTexts) {
    ASSERT_NE(module_, nullptr) << "the module must be registered";
    struct Row {
        vn::AnalysisStatus status;
        HRESULT code;
        const char* text;
    };
    const Row rows[] = {
        {-20003, static_cast<HRESULT>(0x800A4E23), "The number of samples must be >0."},
        {-20001, static_cast<HRESULT>(0x800A4E21), "There is not enough memory to perform the specified routine."},
        {-20009, static_cast<HRESULT>(0x800A4E29),
         "The size of the input array must be a power of two:  size = 2^m, 0<m<23."},
        {-20102, static_cast<HRESULT>(0x800A4E86), "The shifts must meet: |shifts| < samples."},
        {-20999, static_cast<HRESULT>(0x800A5207), "Serious algorithm failure. Call Quorvex support."},
        {-30103, static_cast<HRESULT>(0x800A7597), "The argument is not  an array."},
        {-23000, static_cast<HRESULT>(0x800A59D8), "The starting error codes of engineering math."},
        // No resource: the default text, the code kept.
        {-20005, static_cast<HRESULT>(0x800A4E25), "No error text exists for this error number."},
        {-20100, static_cast<HRESULT>(0x800A4E84), "No error text exists for this error number."},
        // Outside 1000..32767: reported as code 30000.
        {-5, static_cast<HRESULT>(0x800A7530), "An unexpected error has occurred."},
        {-999, static_cast<HRESULT>(0x800A7530), "An unexpected error has occurred."},
        {-32768, static_cast<HRESULT>(0x800A7530), "An unexpected error has occurred."},
        {-2147483647 - 1, static_cast<HRESULT>(0x800A7530), "An unexpected error has occurred."},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.status);
        const vn::AutomationError e = Raise(row.status);
        EXPECT_EQ(e.code, row.code) << std::hex << e.code;
        EXPECT_TRUE(e.hasDescription);
        EXPECT_EQ(e.description, row.text);
    }
    EXPECT_EQ(Raise(0).code, S_OK);
    EXPECT_EQ(Raise(1).code, S_OK);
    EXPECT_EQ(Raise(20001).code, S_OK);  // a warning is not an error
}

TEST_F(MessageTable, SystemCodesCarryNoDescription) {
    struct Row {
        HRESULT code;
        bool described;
    };
    const Row rows[] = {
        {E_OUTOFMEMORY, false},
        {DISP_E_TYPEMISMATCH, false},
        {static_cast<HRESULT>(0x80040200), true},  // interface facility
        {static_cast<HRESULT>(0x800A4E23), true},  // control facility
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.code);
        try {
            vn::ThrowAutomationError(row.code, "text", -1);
            ADD_FAILURE() << "did not raise";
        } catch (const vn::AutomationError& e) {
            EXPECT_EQ(e.code, row.code);
            EXPECT_EQ(e.hasDescription, row.described);
            EXPECT_EQ(e.description, row.described ? "text" : "");
        }
    }
    EXPECT_NO_THROW(vn::ThrowAutomationError(S_FALSE, "text", -1));
    try {
        vn::ThrowAutomationError(static_cast<HRESULT>(0x800A4E23), nullptr, -1);
    } catch (const vn::AutomationError& e) {
        EXPECT_TRUE(e.hasDescription);
        EXPECT_EQ(e.description, "");
    }
}

BOOL CALLBACK CollectName(HMODULE, LPCSTR, LPSTR name, LONG_PTR param) {
    if (IS_INTRESOURCE(name))
        reinterpret_cast<std::vector<int>*>(param)->push_back(static_cast<int>(reinterpret_cast<ULONG_PTR>(name)));
    return TRUE;
}

TEST_F(MessageTable, RawDataResourcesAreUnterminatedUtf16) {
    ASSERT_NE(module_, nullptr);
    std::vector<int> ids;
    EnumResourceNamesA(module_, MAKEINTRESOURCEA(10), CollectName, reinterpret_cast<LONG_PTR>(&ids));
    // Every message of the library (the device messages of the shared table
    // are not part of it).
    EXPECT_EQ(ids.size(), 91u);
    for (int id : ids) {
        SCOPED_TRACE(id);
        EXPECT_TRUE((id >= 20001 && id <= 20103) || id == 20999 || id == 23000 || (id >= 30000 && id <= 30104));
        HRSRC res = FindResourceA(module_, MAKEINTRESOURCEA(id), MAKEINTRESOURCEA(10));
        ASSERT_NE(res, nullptr);
        const DWORD size = SizeofResource(module_, res);
        ASSERT_GT(size, 0u);
        EXPECT_EQ(size % 2, 0u);
        const wchar_t* text = static_cast<const wchar_t*>(LockResource(LoadResource(module_, res)));
        const std::wstring w(text, size / 2);
        EXPECT_EQ(w.find(L'\0'), std::wstring::npos) << "no terminator inside the resource";
        EXPECT_EQ(vn::LoadAnalysisMessage(static_cast<short>(id)), std::string(w.begin(), w.end()));
        EXPECT_EQ(vn::LoadAnalysisMessage(static_cast<short>(-id)), vn::LoadAnalysisMessage(static_cast<short>(id)));
    }
    for (int missing : {20005, 20067, 20079, 20087, 20100, 30001})
        EXPECT_EQ(FindResourceA(module_, MAKEINTRESOURCEA(missing), MAKEINTRESOURCEA(10)), nullptr) << missing;
}

TEST_F(MessageTable, FrameStrings) {
    EXPECT_EQ(vn::LoadFrameString(8037), "No error text exists for this error number.");
    EXPECT_EQ(vn::LoadFrameString(9000), "1.1");
    EXPECT_EQ(vn::LoadFrameString(9001), "About Vornal Analysis Library");
    EXPECT_EQ(vn::LoadFrameString(8021), "Remove not uspported");
    EXPECT_EQ(vn::LoadFrameString(8011),
              "Error loading control.  A newer version needed.  The default settings for the control will be used.");
}

}  // namespace

// The controls seen by a form container: creation through OleCreate with a
// client site, verbs and in-place activation (windowless and windowed),
// drawing at design time and at run time, the three kinds of persistence,
// connection points, quick activation, and the module unloading afterwards.
#include "client.h"

#include <gtest/gtest.h>
#include <ocidl.h>
#include <olectl.h>
#include <ole2.h>

#include <cstring>
#include <map>
#include <string>
#include <vector>

using namespace vntest;

namespace {

const wchar_t* const kControls[] = {L"VNAnalysisControlsLib.VNArray.1", L"VNAnalysisControlsLib.VNComplex.1",
                                    L"VNAnalysisControlsLib.VNMatrix.1", L"VNAnalysisControlsLib.VNStat.1",
                                    L"VNAnalysisControlsLib.VNDSP.1"};

// The background colour of every icon (scripts/make-icons.sh).
constexpr COLORREF kIconColour = RGB(0x1d, 0x4f, 0x91);
constexpr COLORREF kPaper = RGB(0xff, 0x00, 0xff);

constexpr HRESULT kNewerVersion = static_cast<HRESULT>(0x800A0000u | 8011);
constexpr HRESULT kLoadErrors = static_cast<HRESULT>(0x800A0000u | 8012);
const wchar_t* const kNewerVersionText =
    L"Error loading control.  A newer version needed.  The default settings for the control will be used.";
const wchar_t* const kLoadErrorsText = L"Errors loading control.  The default settings for the control will be used.";
// 32 pixels at 96 per inch in HIMETRIC.
constexpr LONG kDefaultExtent = 847;

template <typename T>
struct Ptr {
    T* p = nullptr;
    ~Ptr() { reset(); }
    void reset() {
        if (p) p->Release();
        p = nullptr;
    }
    T** out() {
        reset();
        return &p;
    }
    void** outv() { return reinterpret_cast<void**>(out()); }
    T* operator->() const { return p; }
    explicit operator bool() const { return p != nullptr; }
};

CLSID ClsidOf(const wchar_t* progId) {
    CLSID clsid = CLSID_NULL;
    CLSIDFromProgID(progId, &clsid);
    return clsid;
}

// A container's site: ambient UserMode, windowless or windowed in-place
// activation, and a record of the calls a control made.
class Site final : public IOleClientSite, public IOleInPlaceSiteWindowless, public IDispatch {
public:
    bool userMode = true;
    bool allowWindowless = true;
    HWND parent = nullptr;
    RECT position = {10, 20, 42, 52};
    int activations = 0, windowlessActivations = 0, deactivations = 0;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = nullptr;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IOleClientSite))
            *object = static_cast<IOleClientSite*>(this);
        else if (IsEqualIID(iid, IID_IDispatch))
            *object = static_cast<IDispatch*>(this);
        else if (IsEqualIID(iid, IID_IOleWindow) || IsEqualIID(iid, IID_IOleInPlaceSite) ||
                 IsEqualIID(iid, IID_IOleInPlaceSiteEx) ||
                 (allowWindowless && IsEqualIID(iid, IID_IOleInPlaceSiteWindowless)))
            *object = static_cast<IOleInPlaceSiteWindowless*>(this);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs; }  // lives on the test's stack
    LONG refs = 1;

    // IOleClientSite
    HRESULT STDMETHODCALLTYPE SaveObject() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetContainer(IOleContainer** c) override {
        *c = nullptr;
        return E_NOINTERFACE;
    }
    HRESULT STDMETHODCALLTYPE ShowObject() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnShowWindow(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE RequestNewObjectLayout() override { return E_NOTIMPL; }

    // IOleWindow, IOleInPlaceSite(Ex)
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* w) override {
        *w = parent;
        return parent ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CanInPlaceActivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnInPlaceActivate() override {
        ++activations;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnUIActivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetWindowContext(IOleInPlaceFrame** frame, IOleInPlaceUIWindow** doc, LPRECT pos,
                                               LPRECT clip, LPOLEINPLACEFRAMEINFO) override {
        *frame = nullptr;
        *doc = nullptr;
        *pos = position;
        *clip = position;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Scroll(SIZE) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnUIDeactivate(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnInPlaceDeactivate() override {
        ++deactivations;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE DiscardUndoState() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE DeactivateAndUndo() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnPosRectChange(LPCRECT) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnInPlaceActivateEx(BOOL* noRedraw, DWORD flags) override {
        if (noRedraw) *noRedraw = FALSE;
        ++activations;
        if (flags & ACTIVATE_WINDOWLESS) ++windowlessActivations;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnInPlaceDeactivateEx(BOOL) override {
        ++deactivations;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE RequestUIActivate() override { return S_OK; }

    // IOleInPlaceSiteWindowless
    HRESULT STDMETHODCALLTYPE CanWindowlessActivate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetCapture() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetCapture(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetFocus() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE SetFocus(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetDC(LPCRECT, DWORD, HDC*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ReleaseDC(HDC) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE InvalidateRect(LPCRECT, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE InvalidateRgn(HRGN, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ScrollRect(INT, INT, LPCRECT, LPCRECT) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE AdjustRect(LPRECT) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnDefWindowMessage(UINT, WPARAM, LPARAM, LRESULT*) override { return S_FALSE; }

    // IDispatch: the ambient properties; only UserMode is known.
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override {
        *n = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result, EXCEPINFO*,
                                     UINT*) override {
        if (id != DISPID_AMBIENT_USERMODE || !result) return DISP_E_MEMBERNOTFOUND;
        V_VT(result) = VT_BOOL;
        V_BOOL(result) = userMode ? VARIANT_TRUE : VARIANT_FALSE;
        return S_OK;
    }
};

// A sink that implements only IDispatch (what an event sink of an empty
// dispinterface is asked for) or nothing at all.
class Sink final : public IDispatch {
public:
    explicit Sink(const IID& accepts) : accepts_(accepts) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, accepts_)) {
            *object = static_cast<IDispatch*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++refs; }
    ULONG STDMETHODCALLTYPE Release() override { return --refs; }
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* n) override {
        *n = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*) override {
        return E_NOTIMPL;
    }
    LONG refs = 1;

private:
    IID accepts_;
};

// A property bag in memory, with an error log that keeps what it is told.
class Bag final : public IPropertyBag, public IErrorLog {
public:
    std::map<std::wstring, Var> values;
    std::vector<std::pair<std::wstring, std::wstring>> errors;  // property, description

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IPropertyBag))
            *object = static_cast<IPropertyBag*>(this);
        else if (IsEqualIID(iid, IID_IErrorLog))
            *object = static_cast<IErrorLog*>(this);
        else
            return *object = nullptr, E_NOINTERFACE;
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE Read(LPCOLESTR name, VARIANT* value, IErrorLog*) override {
        auto it = values.find(name);
        if (it == values.end()) return E_INVALIDARG;
        const VARTYPE wanted = V_VT(value);
        VariantInit(value);
        if (wanted == VT_EMPTY) return VariantCopy(value, it->second.get());
        return VariantChangeType(value, it->second.get(), 0, wanted);
    }
    HRESULT STDMETHODCALLTYPE Write(LPCOLESTR name, VARIANT* value) override {
        Var copy;
        VariantCopy(copy.get(), value);
        values[name] = copy;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE AddError(LPCOLESTR name, EXCEPINFO* excep) override {
        errors.emplace_back(name ? name : L"", excep && excep->bstrDescription ? excep->bstrDescription : L"");
        return S_OK;
    }
};

std::wstring ErrorDescription() {
    IErrorInfo* info = nullptr;
    std::wstring text;
    if (GetErrorInfo(0, &info) == S_OK && info) {
        BSTR description = nullptr;
        if (SUCCEEDED(info->GetDescription(&description)) && description) text = description;
        SysFreeString(description);
        info->Release();
    }
    return text;
}

IStream* StreamOf(const std::vector<DWORD>& words) {
    IStream* stream = nullptr;
    CreateStreamOnHGlobal(nullptr, TRUE, &stream);
    ULONG written = 0;
    if (!words.empty())
        stream->Write(words.data(), static_cast<ULONG>(words.size() * sizeof(DWORD)), &written);
    LARGE_INTEGER zero = {};
    stream->Seek(zero, STREAM_SEEK_SET, nullptr);
    return stream;
}

ULONGLONG PositionOf(IStream* stream) {
    LARGE_INTEGER zero = {};
    ULARGE_INTEGER at = {};
    stream->Seek(zero, STREAM_SEEK_CUR, &at);
    return at.QuadPart;
}

std::vector<DWORD> WordsOf(IStream* stream) {
    STATSTG stat = {};
    stream->Stat(&stat, STATFLAG_NONAME);
    std::vector<DWORD> words(static_cast<std::size_t>(stat.cbSize.QuadPart / sizeof(DWORD)));
    LARGE_INTEGER zero = {};
    stream->Seek(zero, STREAM_SEEK_SET, nullptr);
    ULONG got = 0;
    if (!words.empty()) stream->Read(words.data(), static_cast<ULONG>(words.size() * sizeof(DWORD)), &got);
    return words;
}

// A 48 x 48 top-down 32-bit bitmap painted with kPaper.
class Canvas {
public:
    static constexpr int kSide = 48;
    Canvas() {
        BITMAPINFO info = {};
        info.bmiHeader.biSize = sizeof info.bmiHeader;
        info.bmiHeader.biWidth = kSide;
        info.bmiHeader.biHeight = -kSide;
        info.bmiHeader.biPlanes = 1;
        info.bmiHeader.biBitCount = 32;
        info.bmiHeader.biCompression = BI_RGB;
        dc_ = CreateCompatibleDC(nullptr);
        bitmap_ = CreateDIBSection(dc_, &info, DIB_RGB_COLORS, reinterpret_cast<void**>(&bits_), nullptr, 0);
        old_ = SelectObject(dc_, bitmap_);
        for (int i = 0; i < kSide * kSide; ++i) bits_[i] = Pixel(kPaper);
    }
    ~Canvas() {
        SelectObject(dc_, old_);
        DeleteObject(bitmap_);
        DeleteDC(dc_);
    }
    HDC dc() const { return dc_; }
    // Pixels of `colour` inside and outside `r`.
    std::pair<int, int> Count(COLORREF colour, const RECTL& r) const {
        GdiFlush();
        int inside = 0, outside = 0;
        for (int y = 0; y < kSide; ++y)
            for (int x = 0; x < kSide; ++x) {
                if ((bits_[y * kSide + x] & 0xffffff) != Pixel(colour)) continue;
                (x >= r.left && x < r.right && y >= r.top && y < r.bottom ? inside : outside)++;
            }
        return {inside, outside};
    }

private:
    static DWORD Pixel(COLORREF c) { return (GetRValue(c) << 16) | (GetGValue(c) << 8) | GetBValue(c); }
    HDC dc_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_ = nullptr;
    DWORD* bits_ = nullptr;
};

using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();

class OleContainer : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(OleInitialize(nullptr))); }
    void TearDown() override { OleUninitialize(); }

    // OleCreate with the site, in an in-memory storage.
    HRESULT Create(const wchar_t* progId, Site& site, Ptr<IOleObject>& object) {
        Ptr<ILockBytes> bytes;
        HRESULT hr = CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.out());
        if (FAILED(hr)) return hr;
        hr = StgCreateDocfileOnILockBytes(bytes.p, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0,
                                          storage_.out());
        if (FAILED(hr)) return hr;
        return OleCreate(ClsidOf(progId), IID_IOleObject, OLERENDER_NONE, nullptr, &site, storage_.p,
                         object.outv());
    }
    Ptr<IStorage> storage_;
};

template <typename T>
T* As(IUnknown* object, const IID& iid) {
    T* typed = nullptr;
    object->QueryInterface(iid, reinterpret_cast<void**>(&typed));
    return typed;
}

TEST_F(OleContainer, EveryControlAnswersWhatContainersAskFor) {
    const IID* asked[] = {&IID_IOleObject, &IID_IOleControl, &IID_IOleInPlaceObject, &IID_IOleInPlaceObjectWindowless,
                          &IID_IOleInPlaceActiveObject, &IID_IViewObject, &IID_IViewObject2, &IID_IPersistStreamInit,
                          &IID_IPersistStorage, &IID_IPersistPropertyBag, &IID_IQuickActivate,
                          &IID_IProvideClassInfo2, &IID_IConnectionPointContainer, &IID_ISpecifyPropertyPages,
                          &IID_IDispatch};
    for (const wchar_t* progId : kControls) {
        SCOPED_TRACE(Narrow(progId));
        Site site;
        Ptr<IOleObject> object;
        ASSERT_EQ(Create(progId, site, object), S_OK);
        Ptr<IUnknown> identity;
        ASSERT_EQ(object->QueryInterface(IID_IUnknown, identity.outv()), S_OK);
        for (const IID* iid : asked) {
            Ptr<IUnknown> face;
            ASSERT_EQ(object->QueryInterface(*iid, face.outv()), S_OK);
            Ptr<IUnknown> back;
            ASSERT_EQ(face->QueryInterface(IID_IUnknown, back.outv()), S_OK);
            EXPECT_EQ(back.p, identity.p) << "one identity";
        }
        DWORD misc = 0;
        EXPECT_EQ(object->GetMiscStatus(DVASPECT_CONTENT, &misc), S_OK);
        EXPECT_EQ(misc & (OLEMISC_INVISIBLEATRUNTIME | OLEMISC_ACTSLIKELABEL | OLEMISC_SETCLIENTSITEFIRST),
                  DWORD(OLEMISC_INVISIBLEATRUNTIME | OLEMISC_ACTSLIKELABEL | OLEMISC_SETCLIENTSITEFIRST));
        Ptr<IOleClientSite> held;
        EXPECT_EQ(object->GetClientSite(held.out()), S_OK);
        EXPECT_EQ(held.p, static_cast<IOleClientSite*>(&site)) << "OleCreate handed the site over";
        held.reset();

        Ptr<ISpecifyPropertyPages> pages;
        ASSERT_EQ(object->QueryInterface(IID_ISpecifyPropertyPages, pages.outv()), S_OK);
        CAUUID none = {7, nullptr};
        EXPECT_EQ(pages->GetPages(&none), S_OK);
        EXPECT_EQ(none.cElems, 0u);
        Ptr<IOleControl> control;
        ASSERT_EQ(object->QueryInterface(IID_IOleControl, control.outv()), S_OK);
        CONTROLINFO info = {};
        info.cb = sizeof info;
        info.cAccel = 9;
        EXPECT_EQ(control->GetControlInfo(&info), S_OK);
        EXPECT_EQ(info.cAccel, 0);
        LPOLESTR type = nullptr;
        ASSERT_EQ(object->GetUserType(USERCLASSTYPE_SHORT, &type), S_OK);
        EXPECT_EQ(std::wstring(progId).find(type), std::wstring(L"VNAnalysisControlsLib.").size());
        CoTaskMemFree(type);
        EXPECT_EQ(object->Close(OLECLOSE_NOSAVE), S_OK);
        EXPECT_EQ(object->SetClientSite(nullptr), S_OK);
    }
}

TEST_F(OleContainer, RegistryDescribesAnInsertableInvisibleControl) {
    for (int k = 0; k < 5; ++k) {
        SCOPED_TRACE(Narrow(kControls[k]));
        wchar_t text[64];
        StringFromGUID2(ClsidOf(kControls[k]), text, 64);
        const std::wstring key = std::wstring(L"CLSID\\") + text;
        HKEY handle = nullptr;
        ASSERT_EQ(RegOpenKeyExW(HKEY_CLASSES_ROOT, (key + L"\\Insertable").c_str(), 0, KEY_READ, &handle),
                  ERROR_SUCCESS);
        RegCloseKey(handle);
        wchar_t value[MAX_PATH + 16] = {};
        LONG size = sizeof value;
        ASSERT_EQ(RegQueryValueW(HKEY_CLASSES_ROOT, (key + L"\\MiscStatus\\1").c_str(), value, &size),
                  ERROR_SUCCESS);
        DWORD misc = 0;
        {
            Site site;
            Ptr<IOleObject> object;
            ASSERT_EQ(Create(kControls[k], site, object), S_OK);
            object->GetMiscStatus(DVASPECT_CONTENT, &misc);
            object->SetClientSite(nullptr);
        }
        EXPECT_EQ(static_cast<DWORD>(_wtol(value)), misc) << "registry and object agree";
        // ToolboxBitmap32 is "module path, resource id" of a 16 x 15 bitmap.
        size = sizeof value;
        ASSERT_EQ(RegQueryValueW(HKEY_CLASSES_ROOT, (key + L"\\ToolboxBitmap32").c_str(), value, &size),
                  ERROR_SUCCESS);
        const std::wstring entry = value;
        const std::size_t comma = entry.rfind(L',');
        ASSERT_NE(comma, std::wstring::npos);
        HMODULE module = LoadLibraryExW(entry.substr(0, comma).c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
        ASSERT_NE(module, nullptr);
        HBITMAP bitmap = static_cast<HBITMAP>(
            LoadImageW(module, MAKEINTRESOURCEW(_wtoi(entry.c_str() + comma + 1)), IMAGE_BITMAP, 0, 0, 0));
        ASSERT_NE(bitmap, nullptr);
        BITMAP shape = {};
        GetObjectW(bitmap, sizeof shape, &shape);
        EXPECT_EQ(shape.bmWidth, 16);
        EXPECT_EQ(shape.bmHeight, 15);
        DeleteObject(bitmap);
        FreeLibrary(module);
    }
}

struct VerbRow {
    LONG verb;
    HRESULT result;
    bool active;  // in place afterwards
};

TEST_F(OleContainer, VerbsActivateWindowlessInPlace) {
    const VerbRow rows[] = {
        {OLEIVERB_INPLACEACTIVATE, S_OK, true}, {OLEIVERB_HIDE, S_OK, false},
        {OLEIVERB_PRIMARY, S_OK, true},          {OLEIVERB_HIDE, S_OK, false},
        {OLEIVERB_SHOW, S_OK, true},             {OLEIVERB_UIACTIVATE, S_OK, true},
        {OLEIVERB_OPEN, E_NOTIMPL, true},        {OLEIVERB_PROPERTIES, E_NOTIMPL, true},
        {OLEIVERB_DISCARDUNDOSTATE, S_OK, true}, {OLEIVERB_HIDE, S_OK, false},
        {7, OLEOBJ_S_INVALIDVERB, true},         {OLEIVERB_HIDE, S_OK, false},
    };
    Site site;
    Ptr<IOleObject> object;
    ASSERT_EQ(Create(kControls[4], site, object), S_OK);
    Ptr<IOleInPlaceObject> inPlace;
    ASSERT_EQ(object->QueryInterface(IID_IOleInPlaceObject, inPlace.outv()), S_OK);
    int expectedActivations = 0, expectedDeactivations = 0;
    bool active = false;
    for (const VerbRow& row : rows) {
        SCOPED_TRACE(row.verb);
        EXPECT_EQ(object->DoVerb(row.verb, nullptr, &site, 0, nullptr, &site.position), row.result);
        if (row.active && !active) ++expectedActivations;
        if (!row.active && active) ++expectedDeactivations;
        active = row.active;
        EXPECT_EQ(site.activations, expectedActivations);
        EXPECT_EQ(site.windowlessActivations, expectedActivations) << "never with a window";
        EXPECT_EQ(site.deactivations, expectedDeactivations);
        HWND window = reinterpret_cast<HWND>(1);
        EXPECT_EQ(inPlace->GetWindow(&window), E_FAIL);
        EXPECT_EQ(window, nullptr);
    }
    IEnumOLEVERB* verbs = nullptr;
    EXPECT_EQ(object->EnumVerbs(&verbs), OLEOBJ_E_NOVERBS);
    EXPECT_EQ(verbs, nullptr);
    object->Close(OLECLOSE_NOSAVE);
    object->SetClientSite(nullptr);
    inPlace.reset();
    object.reset();
    EXPECT_EQ(site.refs, 1) << "the control released the site";
}

TEST_F(OleContainer, WindowedActivationHidesTheWindowAtRunTime) {
    HWND parent = CreateWindowExW(0, L"STATIC", L"form", WS_OVERLAPPEDWINDOW, 0, 0, 200, 200, nullptr, nullptr,
                                  nullptr, nullptr);
    if (!parent) GTEST_SKIP() << "no windows in this session";
    for (const bool userMode : {true, false}) {
        SCOPED_TRACE(userMode ? "run time" : "design time");
        Site site;
        site.allowWindowless = false;
        site.userMode = userMode;
        site.parent = parent;
        Ptr<IOleObject> object;
        ASSERT_EQ(Create(kControls[0], site, object), S_OK);
        ASSERT_EQ(object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, parent, &site.position), S_OK);
        EXPECT_EQ(site.activations, 1);
        EXPECT_EQ(site.windowlessActivations, 0);
        Ptr<IOleInPlaceObject> inPlace;
        ASSERT_EQ(object->QueryInterface(IID_IOleInPlaceObject, inPlace.outv()), S_OK);
        HWND window = nullptr;
        ASSERT_EQ(inPlace->GetWindow(&window), S_OK);
        ASSERT_TRUE(IsWindow(window));
        EXPECT_EQ(GetParent(window), parent);
        EXPECT_EQ(IsWindowVisible(window) != FALSE, !userMode && IsWindowVisible(parent));
        EXPECT_EQ((GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) != 0, !userMode);
        // A designer switching between design and run mode tells the
        // control through the ambient UserMode.
        Ptr<IOleControl> control;
        ASSERT_EQ(object->QueryInterface(IID_IOleControl, control.outv()), S_OK);
        site.userMode = !userMode;
        EXPECT_EQ(control->OnAmbientPropertyChange(DISPID_AMBIENT_USERMODE), S_OK);
        EXPECT_EQ((GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) != 0, userMode);
        site.userMode = userMode;
        EXPECT_EQ(control->OnAmbientPropertyChange(DISPID_UNKNOWN), S_OK);
        EXPECT_EQ((GetWindowLongW(window, GWL_STYLE) & WS_VISIBLE) != 0, !userMode);
        RECT moved = {5, 6, 45, 56};
        EXPECT_EQ(inPlace->SetObjectRects(&moved, &moved), S_OK);
        RECT now = {};
        GetWindowRect(window, &now);
        MapWindowPoints(nullptr, parent, reinterpret_cast<POINT*>(&now), 2);
        EXPECT_EQ(now.left, 5);
        EXPECT_EQ(now.bottom, 56);
        EXPECT_EQ(inPlace->InPlaceDeactivate(), S_OK);
        EXPECT_FALSE(IsWindow(window));
        EXPECT_EQ(site.deactivations, 1);
        object->Close(OLECLOSE_NOSAVE);
        object->SetClientSite(nullptr);
    }
    DestroyWindow(parent);
}

struct DrawRow {
    const char* name;
    bool userMode;
    DWORD aspect;
    RECTL bounds;
    HRESULT result;
    int minimumIconPixels;  // of kIconColour inside the bounds
};

TEST_F(OleContainer, DrawsItsIconAtDesignTimeOnly) {
    const DrawRow rows[] = {
        {"design time", false, DVASPECT_CONTENT, {8, 8, 40, 40}, S_OK, 32 * 32 / 2},
        {"design time, small bounds", false, DVASPECT_CONTENT, {3, 5, 13, 15}, S_OK, 10 * 10 / 2},
        {"run time", true, DVASPECT_CONTENT, {8, 8, 40, 40}, S_OK, 0},
        {"icon aspect at run time", true, DVASPECT_ICON, {8, 8, 40, 40}, S_OK, 32 * 32 / 2},
        {"thumbnail", false, DVASPECT_THUMBNAIL, {8, 8, 40, 40}, DV_E_DVASPECT, 0},
    };
    for (const wchar_t* progId : kControls) {
        for (const DrawRow& row : rows) {
            SCOPED_TRACE(Narrow(progId) + ": " + row.name);
            Site site;
            site.userMode = row.userMode;
            Ptr<IOleObject> object;
            ASSERT_EQ(Create(progId, site, object), S_OK);
            Ptr<IViewObject2> view;
            ASSERT_EQ(object->QueryInterface(IID_IViewObject2, view.outv()), S_OK);
            Canvas canvas;
            EXPECT_EQ(view->Draw(row.aspect, -1, nullptr, nullptr, nullptr, canvas.dc(), &row.bounds, nullptr,
                                 nullptr, 0),
                      row.result);
            const auto icon = canvas.Count(kIconColour, row.bounds);
            const auto paper = canvas.Count(kPaper, row.bounds);
            const int area = (row.bounds.right - row.bounds.left) * (row.bounds.bottom - row.bounds.top);
            EXPECT_EQ(paper.second, Canvas::kSide * Canvas::kSide - area) << "nothing drawn outside the bounds";
            if (row.minimumIconPixels == 0) {
                EXPECT_EQ(paper.first, area) << "nothing drawn";
            } else {
                EXPECT_GE(icon.first, row.minimumIconPixels);
            }
            object->SetClientSite(nullptr);
        }
    }
}

TEST_F(OleContainer, ExtentIsReportedBySizeAndContent) {
    Site site;
    Ptr<IOleObject> object;
    ASSERT_EQ(Create(kControls[2], site, object), S_OK);
    SIZEL size = {};
    ASSERT_EQ(object->GetExtent(DVASPECT_CONTENT, &size), S_OK);
    EXPECT_EQ(size.cx, kDefaultExtent);
    EXPECT_EQ(size.cy, kDefaultExtent);
    SIZEL wanted = {2000, 1000};
    ASSERT_EQ(object->SetExtent(DVASPECT_CONTENT, &wanted), S_OK);
    Ptr<IViewObject2> view;
    ASSERT_EQ(object->QueryInterface(IID_IViewObject2, view.outv()), S_OK);
    ASSERT_EQ(view->GetExtent(DVASPECT_CONTENT, -1, nullptr, &size), S_OK);
    EXPECT_EQ(size.cx, 2000);
    EXPECT_EQ(size.cy, 1000);
    SIZEL negative = {-1, 5};
    EXPECT_EQ(object->SetExtent(DVASPECT_CONTENT, &negative), E_INVALIDARG);
    EXPECT_EQ(object->SetExtent(DVASPECT_ICON, &wanted), DV_E_DVASPECT);
    object->SetClientSite(nullptr);
}

// Persistence: a control created by the container saves through one kind of
// persistence; a second one loads it and reports the same extent.
TEST_F(OleContainer, StateRoundTripsThroughStreamStorageAndPropertyBag) {
    Site site;
    Ptr<IOleObject> source;
    ASSERT_EQ(Create(kControls[3], site, source), S_OK);
    SIZEL extent = {1234, 567};
    ASSERT_EQ(source->SetExtent(DVASPECT_CONTENT, &extent), S_OK);
    Ptr<IPersistStreamInit> sourceStream;
    ASSERT_EQ(source->QueryInterface(IID_IPersistStreamInit, sourceStream.outv()), S_OK);
    EXPECT_EQ(sourceStream->IsDirty(), S_OK);

    auto loaded = [&](auto load) {
        Ptr<IOleObject> target;
        EXPECT_EQ(CoCreateInstance(ClsidOf(kControls[3]), nullptr, CLSCTX_INPROC_SERVER, IID_IOleObject,
                                   target.outv()),
                  S_OK);
        load(target.p);
        SIZEL size = {};
        target->GetExtent(DVASPECT_CONTENT, &size);
        return size;
    };

    // Stream: the stamp 1.1, the byte count, the extent.
    Ptr<IStream> stream;
    ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.out()), S_OK);
    ASSERT_EQ(sourceStream->Save(stream.p, TRUE), S_OK);
    EXPECT_EQ(sourceStream->IsDirty(), S_FALSE);
    EXPECT_EQ(WordsOf(stream.p), (std::vector<DWORD>{0x00010001, 8, 1234, 567}));
    ULARGE_INTEGER maximum = {};
    EXPECT_EQ(sourceStream->GetSizeMax(&maximum), S_OK);
    EXPECT_EQ(maximum.QuadPart, 16u);
    SIZEL size = loaded([&](IOleObject* target) {
        LARGE_INTEGER zero = {};
        stream->Seek(zero, STREAM_SEEK_SET, nullptr);
        Ptr<IPersistStreamInit> persist;
        ASSERT_EQ(target->QueryInterface(IID_IPersistStreamInit, persist.outv()), S_OK);
        EXPECT_EQ(persist->Load(stream.p), S_OK);
        EXPECT_EQ(persist->IsDirty(), S_FALSE);
    });
    EXPECT_EQ(size.cx, 1234);
    EXPECT_EQ(size.cy, 567);

    // Storage, through OleSave and OleLoad as a container does it.
    Ptr<IPersistStorage> sourceStorage;
    ASSERT_EQ(source->QueryInterface(IID_IPersistStorage, sourceStorage.outv()), S_OK);
    Ptr<ILockBytes> bytes;
    ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.out()), S_OK);
    Ptr<IStorage> storage;
    ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.p, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0,
                                           storage.out()),
              S_OK);
    ASSERT_EQ(OleSave(sourceStorage.p, storage.p, FALSE), S_OK);
    EXPECT_EQ(sourceStorage->SaveCompleted(nullptr), S_OK);
    Ptr<IOleObject> reloaded;
    Site site2;
    ASSERT_EQ(OleLoad(storage.p, IID_IOleObject, &site2, reloaded.outv()), S_OK);
    size = {};
    reloaded->GetExtent(DVASPECT_CONTENT, &size);
    EXPECT_EQ(size.cx, 1234);
    EXPECT_EQ(size.cy, 567);
    reloaded->SetClientSite(nullptr);

    // Property bag.
    Bag bag;
    Ptr<IPersistPropertyBag> sourceBag;
    ASSERT_EQ(source->QueryInterface(IID_IPersistPropertyBag, sourceBag.outv()), S_OK);
    ASSERT_EQ(sourceBag->Save(&bag, TRUE, TRUE), S_OK);
    EXPECT_EQ(Only(bag.values[L"_Version"]), 65537.0);
    EXPECT_EQ(Only(bag.values[L"_ExtentX"]), 1234.0);
    EXPECT_EQ(Only(bag.values[L"_ExtentY"]), 567.0);
    size = loaded([&](IOleObject* target) {
        Ptr<IPersistPropertyBag> persist;
        ASSERT_EQ(target->QueryInterface(IID_IPersistPropertyBag, persist.outv()), S_OK);
        EXPECT_EQ(persist->Load(&bag, &bag), S_OK);
    });
    EXPECT_EQ(size.cx, 1234);
    EXPECT_EQ(size.cy, 567);
    EXPECT_TRUE(bag.errors.empty());
    source->SetClientSite(nullptr);
}

struct StreamLoadRow {
    const char* name;
    std::vector<DWORD> words;
    HRESULT result;
    const wchar_t* text;
    ULONGLONG position;  // where the stream is left
    SIZEL extent;        // afterwards
};

TEST_F(OleContainer, StreamStateFromOtherVersionsAndDamagedState) {
    const StreamLoadRow rows[] = {
        {"1.0", {0x00010000, 8, 100, 200, 0xDEADBEEF}, S_OK, nullptr, 16, {100, 200}},
        {"a later 1.1 with more fields", {0x00010001, 12, 100, 200, 77, 0xDEADBEEF}, S_OK, nullptr, 20, {100, 200}},
        {"newer minor version", {0x00010002, 8, 100, 200, 0xDEADBEEF}, kNewerVersion, kNewerVersionText, 16,
         {kDefaultExtent, kDefaultExtent}},
        {"newer major version", {0x00020000, 12, 1, 2, 3, 0xDEADBEEF}, kNewerVersion, kNewerVersionText, 20,
         {kDefaultExtent, kDefaultExtent}},
        {"truncated header", {0x00010001}, kLoadErrors, kLoadErrorsText, 4, {kDefaultExtent, kDefaultExtent}},
        {"truncated extent", {0x00010001, 8, 100}, kLoadErrors, kLoadErrorsText, 12, {kDefaultExtent, kDefaultExtent}},
        {"not a stamp", {0, 8, 100, 200}, kLoadErrors, kLoadErrorsText, 16, {kDefaultExtent, kDefaultExtent}},
        {"negative extent", {0x00010001, 8, static_cast<DWORD>(-5), 200}, kLoadErrors, kLoadErrorsText, 16,
         {kDefaultExtent, kDefaultExtent}},
        {"empty", {}, kLoadErrors, kLoadErrorsText, 0, {kDefaultExtent, kDefaultExtent}},
    };
    for (const StreamLoadRow& row : rows) {
        SCOPED_TRACE(row.name);
        Ptr<IPersistStreamInit> persist;
        ASSERT_EQ(CoCreateInstance(ClsidOf(kControls[1]), nullptr, CLSCTX_INPROC_SERVER, IID_IPersistStreamInit,
                                   persist.outv()),
                  S_OK);
        ASSERT_EQ(persist->InitNew(), S_OK);
        Ptr<IOleObject> object;
        ASSERT_EQ(persist->QueryInterface(IID_IOleObject, object.outv()), S_OK);
        SIZEL other = {9, 9};
        object->SetExtent(DVASPECT_CONTENT, &other);  // must not survive a failed load
        SetErrorInfo(0, nullptr);
        Ptr<IStream> stream;
        stream.p = StreamOf(row.words);
        EXPECT_EQ(persist->Load(stream.p), row.result);
        if (row.text) {
            EXPECT_EQ(ErrorDescription(), row.text);
        }
        EXPECT_EQ(PositionOf(stream.p), row.position);
        SIZEL size = {};
        object->GetExtent(DVASPECT_CONTENT, &size);
        if (row.result == S_OK) {
            EXPECT_EQ(size.cx, row.extent.cx);
            EXPECT_EQ(size.cy, row.extent.cy);
        } else {
            EXPECT_EQ(size.cx, kDefaultExtent) << "the defaults are used";
            EXPECT_EQ(size.cy, kDefaultExtent);
        }
    }
}

TEST_F(OleContainer, StorageAndPropertyBagReportNewerVersions) {
    // Storage: a "Contents" stream from version 2.0, and a storage without it.
    for (const bool withContents : {true, false}) {
        SCOPED_TRACE(withContents ? "newer Contents" : "no Contents");
        Ptr<ILockBytes> bytes;
        ASSERT_EQ(CreateILockBytesOnHGlobal(nullptr, TRUE, bytes.out()), S_OK);
        Ptr<IStorage> storage;
        ASSERT_EQ(StgCreateDocfileOnILockBytes(bytes.p, STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE, 0,
                                               storage.out()),
                  S_OK);
        if (withContents) {
            Ptr<IStream> contents;
            ASSERT_EQ(storage->CreateStream(L"Contents", STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE, 0, 0,
                                            contents.out()),
                      S_OK);
            const DWORD block[] = {0x00020000, 8, 1, 2};
            ULONG written = 0;
            contents->Write(block, sizeof block, &written);
        }
        Ptr<IPersistStorage> persist;
        ASSERT_EQ(CoCreateInstance(ClsidOf(kControls[0]), nullptr, CLSCTX_INPROC_SERVER, IID_IPersistStorage,
                                   persist.outv()),
                  S_OK);
        SetErrorInfo(0, nullptr);
        EXPECT_EQ(persist->Load(storage.p), withContents ? kNewerVersion : kLoadErrors);
        EXPECT_EQ(ErrorDescription(), withContents ? kNewerVersionText : kLoadErrorsText);
    }

    struct BagRow {
        const char* name;
        std::vector<std::pair<const wchar_t*, Var>> values;
        HRESULT result;
        const wchar_t* property;  // named in the error log
        SIZEL extent;
    };
    const BagRow rows[] = {
        {"nothing saved", {}, S_OK, nullptr, {kDefaultExtent, kDefaultExtent}},
        {"extent only", {{L"_ExtentX", Var(300)}, {L"_ExtentY", Var(400)}}, S_OK, nullptr, {300, 400}},
        {"extent as text", {{L"_ExtentX", Var(L"300")}, {L"_ExtentY", Var(400.0)}}, S_OK, nullptr, {300, 400}},
        {"newer version", {{L"_Version", Var(131072)}, {L"_ExtentX", Var(300)}}, kNewerVersion, L"_Version",
         {kDefaultExtent, kDefaultExtent}},
        {"unreadable extent", {{L"_Version", Var(65537)}, {L"_ExtentX", Var(L"wide")}}, kLoadErrors, L"_ExtentX",
         {kDefaultExtent, kDefaultExtent}},
        {"negative extent", {{L"_ExtentY", Var(-1)}}, kLoadErrors, L"_ExtentY", {kDefaultExtent, kDefaultExtent}},
    };
    for (const BagRow& row : rows) {
        SCOPED_TRACE(row.name);
        Bag bag;
        for (const auto& value : row.values) bag.values[value.first] = value.second;
        Ptr<IPersistPropertyBag> persist;
        ASSERT_EQ(CoCreateInstance(ClsidOf(kControls[4]), nullptr, CLSCTX_INPROC_SERVER, IID_IPersistPropertyBag,
                                   persist.outv()),
                  S_OK);
        EXPECT_EQ(persist->Load(&bag, &bag), row.result);
        if (row.property) {
            ASSERT_EQ(bag.errors.size(), 1u);
            EXPECT_EQ(bag.errors[0].first, row.property);
            EXPECT_EQ(bag.errors[0].second, row.result == kNewerVersion ? kNewerVersionText : kLoadErrorsText);
        } else {
            EXPECT_TRUE(bag.errors.empty());
        }
        Ptr<IOleObject> object;
        ASSERT_EQ(persist->QueryInterface(IID_IOleObject, object.outv()), S_OK);
        SIZEL size = {};
        object->GetExtent(DVASPECT_CONTENT, &size);
        EXPECT_EQ(size.cx, row.extent.cx);
        EXPECT_EQ(size.cy, row.extent.cy);
    }
}

TEST_F(OleContainer, ConnectionPointsAndQuickActivation) {
    for (const wchar_t* progId : kControls) {
        SCOPED_TRACE(Narrow(progId));
        Ptr<IConnectionPointContainer> container;
        ASSERT_EQ(CoCreateInstance(ClsidOf(progId), nullptr, CLSCTX_INPROC_SERVER, IID_IConnectionPointContainer,
                                   container.outv()),
                  S_OK);
        // The events interface the class info names is the type library's
        // source interface of the coclass.
        Ptr<IProvideClassInfo2> classInfo;
        ASSERT_EQ(container->QueryInterface(IID_IProvideClassInfo2, classInfo.outv()), S_OK);
        IID events = IID_NULL;
        ASSERT_EQ(classInfo->GetGUID(GUIDKIND_DEFAULT_SOURCE_DISP_IID, &events), S_OK);
        Ptr<ITypeInfo> coclass;
        ASSERT_EQ(classInfo->GetClassInfo(coclass.out()), S_OK);
        HREFTYPE ref = 0;
        ASSERT_EQ(coclass->GetRefTypeOfImplType(1, &ref), S_OK);
        Ptr<ITypeInfo> source;
        ASSERT_EQ(coclass->GetRefTypeInfo(ref, source.out()), S_OK);
        TYPEATTR* attr = nullptr;
        ASSERT_EQ(source->GetTypeAttr(&attr), S_OK);
        EXPECT_TRUE(IsEqualIID(attr->guid, events));
        EXPECT_EQ(attr->cFuncs, 0) << "the event interface is empty";
        source->ReleaseTypeAttr(attr);

        Ptr<IEnumConnectionPoints> points;
        ASSERT_EQ(container->EnumConnectionPoints(points.out()), S_OK);
        std::vector<IID> found;
        IConnectionPoint* point = nullptr;
        while (points->Next(1, &point, nullptr) == S_OK) {
            IID iid;
            EXPECT_EQ(point->GetConnectionInterface(&iid), S_OK);
            found.push_back(iid);
            Ptr<IConnectionPointContainer> back;
            EXPECT_EQ(point->GetConnectionPointContainer(back.out()), S_OK);
            EXPECT_EQ(back.p, container.p);
            point->Release();
        }
        ASSERT_EQ(found.size(), 2u);
        EXPECT_TRUE(IsEqualIID(found[0], events));
        EXPECT_TRUE(IsEqualIID(found[1], IID_IPropertyNotifySink));
        EXPECT_EQ(points->Skip(1), S_FALSE);

        Ptr<IConnectionPoint> eventPoint;
        ASSERT_EQ(container->FindConnectionPoint(events, eventPoint.out()), S_OK);
        Ptr<IConnectionPoint> unknownPoint;
        EXPECT_EQ(container->FindConnectionPoint(IID_IDispatch, unknownPoint.out()), CONNECT_E_NOCONNECTION);
        Sink sink(events), stranger(IID_IPropertyNotifySink);
        DWORD cookie = 0, refused = 7;
        EXPECT_EQ(eventPoint->Advise(&stranger, &refused), CONNECT_E_CANNOTCONNECT);
        EXPECT_EQ(refused, 0u);
        ASSERT_EQ(eventPoint->Advise(&sink, &cookie), S_OK);
        EXPECT_NE(cookie, 0u);
        EXPECT_GT(sink.refs, 1);
        EXPECT_EQ(eventPoint->Unadvise(cookie), S_OK);
        EXPECT_EQ(sink.refs, 1);
        EXPECT_EQ(eventPoint->Unadvise(cookie), CONNECT_E_NOCONNECTION);

        // Quick activation hands over the site and advises the event sink.
        Ptr<IQuickActivate> quick;
        ASSERT_EQ(container->QueryInterface(IID_IQuickActivate, quick.outv()), S_OK);
        Site site;
        QACONTAINER qc = {};
        qc.cbSize = sizeof qc;
        qc.pClientSite = &site;
        qc.pUnkEventSink = &sink;
        QACONTROL qa = {};
        qa.cbSize = sizeof qa;
        ASSERT_EQ(quick->QuickActivate(&qc, &qa), S_OK);
        EXPECT_TRUE(qa.dwMiscStatus & OLEMISC_INVISIBLEATRUNTIME);
        EXPECT_NE(qa.dwEventCookie, 0u);
        EXPECT_EQ(qa.dwPropNotifyCookie, 0u);
        EXPECT_GT(site.refs, 1);
        EXPECT_EQ(eventPoint->Unadvise(qa.dwEventCookie), S_OK);
        Ptr<IOleObject> object;
        ASSERT_EQ(container->QueryInterface(IID_IOleObject, object.outv()), S_OK);
        object->SetClientSite(nullptr);
        EXPECT_EQ(site.refs, 1);
    }
}

TEST_F(OleContainer, ModuleUnloadsOnceEverythingIsReleased) {
    {
        Site site;
        Ptr<IOleObject> object;
        ASSERT_EQ(Create(kControls[0], site, object), S_OK);
        ASSERT_EQ(object->DoVerb(OLEIVERB_INPLACEACTIVATE, nullptr, &site, 0, nullptr, &site.position), S_OK);
        Ptr<IConnectionPointContainer> container;
        ASSERT_EQ(object->QueryInterface(IID_IConnectionPointContainer, container.outv()), S_OK);
        Ptr<IEnumConnectionPoints> points;
        ASSERT_EQ(container->EnumConnectionPoints(points.out()), S_OK);
        HMODULE module = GetModuleHandleW(L"VNMATH.dll");
        ASSERT_NE(module, nullptr);
        auto canUnload = reinterpret_cast<CanUnloadNow>(reinterpret_cast<void*>(GetProcAddress(module, "DllCanUnloadNow")));
        ASSERT_NE(canUnload, nullptr);
        object->Close(OLECLOSE_NOSAVE);
        object->SetClientSite(nullptr);
        object.reset();
        container.reset();
        EXPECT_EQ(canUnload(), S_FALSE) << "the enumerator still holds the control";
        points.reset();
        storage_.reset();
        EXPECT_EQ(canUnload(), S_OK);
        EXPECT_EQ(site.refs, 1);
    }
}

}  // namespace

namespace {

// The client tests run without a display: AboutBox must come back by
// itself (the desktop case is tests/frame/desktop/about_box.cpp).
DWORD WINAPI CallAboutBox(void* result) {
    CoInitialize(nullptr);
    {
        Control array(kControls[0]);
        *static_cast<HRESULT*>(result) = array.valid() ? array.Invoke(-552, {}).hr : E_FAIL;
    }
    CoUninitialize();
    return 0;
}

TEST(AboutBoxWithoutDesktop, ReturnsAtOnce) {
    HRESULT result = E_PENDING;
    HANDLE thread = CreateThread(nullptr, 0, &CallAboutBox, &result, 0, nullptr);
    ASSERT_NE(thread, nullptr);
    const DWORD waited = WaitForSingleObject(thread, 20000);
    if (waited != WAIT_OBJECT_0) {
        if (HWND dialog = FindWindowW(nullptr, L"About Vornal Analysis Library"))
            PostMessageW(dialog, WM_COMMAND, IDOK, 0);
        WaitForSingleObject(thread, 5000);
    }
    CloseHandle(thread);
    EXPECT_EQ(waited, WAIT_OBJECT_0) << "AboutBox waited for a click nobody can give";
    EXPECT_EQ(result, S_OK);
}

}  // namespace

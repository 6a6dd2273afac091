#include "frame/ole_control.h"

#include "frame/controls.h"
#include "frame/dispatch.h"
#include "frame/errors.h"
#include "resource_ids.h"

#include <ocidl.h>
#include <olectl.h>
#include <ole2.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace vn {

namespace {

// Persisted state, version 1.1: the stamp (major in the high word, minor in
// the low word), the byte count of what follows, then the extent in HIMETRIC
// (cx, cy as 32-bit integers). The byte count lets a reader skip a newer
// version's state and leave a shared stream positioned after it.
constexpr DWORD kStateStamp = 0x00010001;
constexpr DWORD kOldestStamp = 0x00010000;  // 1.0 wrote the same layout
constexpr DWORD kExtentBytes = 8;
constexpr ULONG kStateBytes = 8 + kExtentBytes;

constexpr UINT kNewerVersionText = 8011;
constexpr UINT kLoadErrorsText = 8012;

constexpr int kIconPixels = 32;
// 32 x 32 pixels at 96 pixels per inch, in HIMETRIC (0.01 mm): the size a
// designer gives a new control.
constexpr LONG kDefaultExtent = (kIconPixels * 2540 + 48) / 96;

constexpr const wchar_t* kWindowClass = L"VNAnalysisControlWindow";
ATOM g_windowClass = 0;

std::wstring Widen(const std::string& text) {
    const int chars = MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<std::size_t>(chars > 0 ? chars : 0), L'\0');
    if (chars > 0) MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), &wide[0], chars);
    return wide;
}

wchar_t* CoTaskCopy(const std::wstring& text) {
    const std::size_t bytes = (text.size() + 1) * sizeof(wchar_t);
    wchar_t* copy = static_cast<wchar_t*>(CoTaskMemAlloc(bytes));
    if (copy) std::memcpy(copy, text.c_str(), bytes);
    return copy;
}

template <typename T>
void ReleaseAndClear(T*& p) {
    if (p) p->Release();
    p = nullptr;
}

// Draws icon `index` at the top left of `bounds`, at 32 pixels or less when
// the bounds are smaller, so nothing lands outside them.
void DrawControlIcon(HDC dc, int index, const RECTL& bounds) {
    const LONG width = bounds.right - bounds.left, height = bounds.bottom - bounds.top;
    const int size = static_cast<int>(std::min<LONG>({kIconPixels, width, height}));
    if (size <= 0) return;
    HICON icon = static_cast<HICON>(
        LoadImageW(ResourceModule(), MAKEINTRESOURCEW(IDI_CONTROL_FIRST + index), IMAGE_ICON, size, size, 0));
    if (!icon) return;
    DrawIconEx(dc, static_cast<int>(bounds.left), static_cast<int>(bounds.top), icon, size, size, 0, nullptr,
               DI_NORMAL);
    DestroyIcon(icon);
}

// ------------------------------------------------------- connection points

// A connection point living inside its control: its reference count is the
// control's, so it cannot outlive it. Events are never fired (the event
// interfaces are empty); the sinks are only held.
class ConnectionPoint final : public IConnectionPoint {
public:
    void Init(IConnectionPointContainer* owner, const IID& iid) {
        owner_ = owner;
        iid_ = iid;
    }
    ~ConnectionPoint() {
        for (IUnknown*& sink : sinks_) ReleaseAndClear(sink);
    }
    const IID& Iid() const { return iid_; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IConnectionPoint)) {
            *object = static_cast<IConnectionPoint*>(this);
            AddRef();
            return S_OK;
        }
        *object = nullptr;
        return E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return owner_->AddRef(); }
    ULONG STDMETHODCALLTYPE Release() override { return owner_->Release(); }

    HRESULT STDMETHODCALLTYPE GetConnectionInterface(IID* iid) override {
        if (!iid) return E_POINTER;
        *iid = iid_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetConnectionPointContainer(IConnectionPointContainer** container) override {
        if (!container) return E_POINTER;
        *container = owner_;
        owner_->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Advise(IUnknown* sink, DWORD* cookie) override {
        if (!cookie) return E_POINTER;
        *cookie = 0;
        if (!sink) return E_POINTER;
        IUnknown* typed = nullptr;
        if (FAILED(sink->QueryInterface(iid_, reinterpret_cast<void**>(&typed))) || !typed)
            return CONNECT_E_CANNOTCONNECT;
        try {
            auto free = std::find(sinks_.begin(), sinks_.end(), nullptr);
            if (free == sinks_.end()) free = sinks_.insert(sinks_.end(), nullptr);
            *free = typed;
            *cookie = static_cast<DWORD>(free - sinks_.begin()) + 1;
        } catch (const std::bad_alloc&) {
            typed->Release();
            return E_OUTOFMEMORY;
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD cookie) override {
        if (cookie == 0 || cookie > sinks_.size() || !sinks_[cookie - 1]) return CONNECT_E_NOCONNECTION;
        ReleaseAndClear(sinks_[cookie - 1]);
        return S_OK;
    }
    // Optional for a connection point; nothing is ever sent to the sinks.
    HRESULT STDMETHODCALLTYPE EnumConnections(IEnumConnections** connections) override {
        if (connections) *connections = nullptr;
        return E_NOTIMPL;
    }

private:
    IConnectionPointContainer* owner_ = nullptr;
    IID iid_ = IID_NULL;
    std::vector<IUnknown*> sinks_;
};

class ConnectionPointEnum final : public IEnumConnectionPoints {
public:
    ConnectionPointEnum(IConnectionPoint* const* points, ULONG count, ULONG position)
        : count_(count), position_(position) {
        for (ULONG i = 0; i < count_; ++i) {
            points_[i] = points[i];
            points_[i]->AddRef();
        }
    }
    ~ConnectionPointEnum() {
        for (ULONG i = 0; i < count_; ++i) points_[i]->Release();
    }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IEnumConnectionPoints)) {
            *object = static_cast<IEnumConnectionPoints*>(this);
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
    HRESULT STDMETHODCALLTYPE Next(ULONG wanted, IConnectionPoint** out, ULONG* fetched) override {
        if (!out || (wanted != 1 && !fetched)) return E_POINTER;
        ULONG n = 0;
        while (n < wanted && position_ < count_) {
            out[n] = points_[position_++];
            out[n++]->AddRef();
        }
        if (fetched) *fetched = n;
        return n == wanted ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
        const ULONG left = count_ - position_;
        position_ += std::min(count, left);
        return count <= left ? S_OK : S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Reset() override {
        position_ = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Clone(IEnumConnectionPoints** copy) override {
        if (!copy) return E_POINTER;
        *copy = new (std::nothrow) ConnectionPointEnum(points_, count_, position_);
        return *copy ? S_OK : E_OUTOFMEMORY;
    }

private:
    LONG refs_ = 1;
    IConnectionPoint* points_[2] = {};
    ULONG count_;
    ULONG position_;
};

// ------------------------------------------------------------------ control

class OleControl final : public IDispatch,
                         public IOleObject,
                         public IOleControl,
                         public IOleInPlaceObjectWindowless,
                         public IOleInPlaceActiveObject,
                         public IViewObject2,
                         public IPersistStreamInit,
                         public IPersistStorage,
                         public IPersistPropertyBag,
                         public IQuickActivate,
                         public IProvideClassInfo2,
                         public IConnectionPointContainer,
                         public ISpecifyPropertyPages,
                         public ISupportErrorInfo {
public:
    OleControl(const ControlClass& cls, int index) : class_(cls), table_(cls.table()), index_(index) {
        AddModuleRef();
        events_.Init(this, *cls.eventIid);
        propertyNotify_.Init(this, IID_IPropertyNotifySink);
        ResetState();
    }
    ~OleControl() {
        DestroyControlWindow();
        ReleaseAndClear(inPlaceSite_);
        ReleaseAndClear(site_);
        ReleaseAndClear(viewSink_);
        ReleaseAndClear(adviseHolder_);
        ReleaseModuleRef();
    }

    // ---------------------------------------------------------- IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        if (!object) return E_POINTER;
        *object = Find(iid);
        if (!*object) return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&refs_)); }
    ULONG STDMETHODCALLTYPE Release() override {
        const LONG refs = InterlockedDecrement(&refs_);
        if (refs == 0) delete this;
        return static_cast<ULONG>(refs);
    }

    // ---------------------------------------------------------- IDispatch
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
        if (!count) return E_POINTER;
        *count = 1;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        if (index != 0) return DISP_E_BADINDEX;
        return TypeInfoOfGuid(*table_.dispatchIid, info);
    }
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID iid, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
        return DispatchGetIDsOfNames(table_, iid, names, count, ids);
    }
    HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* params, VARIANT* result,
                                     EXCEPINFO* excep, UINT* argErr) override {
        return DispatchInvoke(table_, id, iid, flags, params, result, excep, argErr);
    }

    // --------------------------------------------------------- IOleObject
    HRESULT STDMETHODCALLTYPE SetClientSite(IOleClientSite* site) override {
        if (site) site->AddRef();
        ReleaseAndClear(site_);
        site_ = site;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetClientSite(IOleClientSite** site) override {
        if (!site) return E_POINTER;
        *site = site_;
        if (site_) site_->AddRef();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetHostNames(LPCOLESTR, LPCOLESTR) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE Close(DWORD saveOption) override {
        InPlaceDeactivate();
        if (dirty_ && site_ &&
            (saveOption == OLECLOSE_SAVEIFDIRTY || saveOption == OLECLOSE_PROMPTSAVE))
            site_->SaveObject();
        if (adviseHolder_) adviseHolder_->SendOnClose();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetMoniker(DWORD, IMoniker*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetMoniker(DWORD, DWORD, IMoniker** moniker) override {
        if (moniker) *moniker = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE InitFromData(IDataObject*, BOOL, DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetClipboardData(DWORD, IDataObject** data) override {
        if (data) *data = nullptr;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE DoVerb(LONG verb, LPMSG, IOleClientSite* activeSite, LONG, HWND,
                                     LPCRECT position) override {
        switch (verb) {
        case OLEIVERB_PRIMARY:
        case OLEIVERB_SHOW:
        case OLEIVERB_INPLACEACTIVATE:
        case OLEIVERB_UIACTIVATE:  // activated in place, never UI-active
            return InPlaceActivate(activeSite ? activeSite : site_, position);
        case OLEIVERB_HIDE:
            return InPlaceDeactivate();
        case OLEIVERB_DISCARDUNDOSTATE:
            return S_OK;  // nothing is ever undoable
        case OLEIVERB_OPEN:        // no window of its own to open
        case OLEIVERB_PROPERTIES:  // no property pages
            return E_NOTIMPL;
        default:
            if (verb < 0) return E_NOTIMPL;
            // An unknown positive verb is the primary verb.
            {
                const HRESULT hr = InPlaceActivate(activeSite ? activeSite : site_, position);
                return FAILED(hr) ? hr : OLEOBJ_S_INVALIDVERB;
            }
        }
    }
    // No verbs of its own: no properties to show, nothing to open.
    HRESULT STDMETHODCALLTYPE EnumVerbs(IEnumOLEVERB** verbs) override {
        if (!verbs) return E_POINTER;
        *verbs = nullptr;
        return OLEOBJ_E_NOVERBS;
    }
    HRESULT STDMETHODCALLTYPE Update() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE IsUpToDate() override { return S_OK; }
    HRESULT STDMETHODCALLTYPE GetUserClassID(CLSID* clsid) override { return GetClassID(clsid); }
    // From the module itself rather than the registry, so registration-free
    // hosts get the same names.
    HRESULT STDMETHODCALLTYPE GetUserType(DWORD form, LPOLESTR* type) override {
        if (!type) return E_POINTER;
        const std::wstring text = form == USERCLASSTYPE_SHORT    ? std::wstring(class_.name)
                                  : form == USERCLASSTYPE_APPNAME ? std::wstring(L"VNAnalysisControlsLib")
                                                                  : std::wstring(class_.description);
        *type = CoTaskCopy(text);
        return *type ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE SetExtent(DWORD aspect, SIZEL* size) override {
        if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
        if (!size) return E_POINTER;
        if (size->cx < 0 || size->cy < 0) return E_INVALIDARG;
        if (size->cx != extent_.cx || size->cy != extent_.cy) dirty_ = true;
        extent_ = *size;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD aspect, SIZEL* size) override {
        if (!size) return E_POINTER;
        if (aspect != DVASPECT_CONTENT) return DV_E_DVASPECT;
        *size = extent_;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Advise(IAdviseSink* sink, DWORD* connection) override {
        if (!adviseHolder_) {
            const HRESULT hr = CreateOleAdviseHolder(&adviseHolder_);
            if (FAILED(hr)) return hr;
        }
        return adviseHolder_->Advise(sink, connection);
    }
    HRESULT STDMETHODCALLTYPE Unadvise(DWORD connection) override {
        return adviseHolder_ ? adviseHolder_->Unadvise(connection) : OLE_E_NOCONNECTION;
    }
    HRESULT STDMETHODCALLTYPE EnumAdvise(IEnumSTATDATA** advise) override {
        if (!advise) return E_POINTER;
        *advise = nullptr;
        return adviseHolder_ ? adviseHolder_->EnumAdvise(advise) : S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetMiscStatus(DWORD, DWORD* status) override {
        if (!status) return E_POINTER;
        *status = kControlMiscStatus;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetColorScheme(LOGPALETTE*) override { return E_NOTIMPL; }

    // -------------------------------------------------------- IOleControl
    HRESULT STDMETHODCALLTYPE GetControlInfo(CONTROLINFO* info) override {
        if (!info) return E_POINTER;
        info->hAccel = nullptr;
        info->cAccel = 0;
        info->dwFlags = 0;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE OnMnemonic(MSG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE OnAmbientPropertyChange(DISPID id) override {
        // A designer switching to run mode (or back) changes what is drawn.
        if (hwnd_ && (id == DISPID_AMBIENT_USERMODE || id == DISPID_UNKNOWN)) {
            ShowWindow(hwnd_, UserMode() ? SW_HIDE : SW_SHOWNA);
            InvalidateRect(hwnd_, nullptr, TRUE);
        }
        if (viewSink_) viewSink_->OnViewChange(DVASPECT_CONTENT, -1);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE FreezeEvents(BOOL) override { return S_OK; }  // fires none

    // ------------------------------------------- IOleWindow (both kinds)
    HRESULT STDMETHODCALLTYPE GetWindow(HWND* window) override {
        if (!window) return E_POINTER;
        *window = hwnd_;
        return hwnd_ ? S_OK : E_FAIL;
    }
    HRESULT STDMETHODCALLTYPE ContextSensitiveHelp(BOOL) override { return E_NOTIMPL; }

    // ------------------------------------ IOleInPlaceObject(Windowless)
    HRESULT STDMETHODCALLTYPE InPlaceDeactivate() override {
        if (!inPlaceSite_) return S_OK;
        DestroyControlWindow();
        IOleInPlaceSite* site = inPlaceSite_;
        inPlaceSite_ = nullptr;
        IOleInPlaceSiteEx* ex = nullptr;
        if (SUCCEEDED(site->QueryInterface(IID_IOleInPlaceSiteEx, reinterpret_cast<void**>(&ex))) && ex) {
            ex->OnInPlaceDeactivateEx(TRUE);
            ex->Release();
        } else {
            site->OnInPlaceDeactivate();
        }
        site->Release();
        windowless_ = false;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE UIDeactivate() override { return S_OK; }  // never UI-active
    HRESULT STDMETHODCALLTYPE SetObjectRects(LPCRECT position, LPCRECT) override {
        if (!position) return E_POINTER;
        position_ = *position;
        if (hwnd_)
            SetWindowPos(hwnd_, nullptr, position->left, position->top, position->right - position->left,
                         position->bottom - position->top, SWP_NOZORDER | SWP_NOACTIVATE);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE ReactivateAndUndo() override { return INPLACE_E_NOTUNDOABLE; }
    HRESULT STDMETHODCALLTYPE OnWindowMessage(UINT, WPARAM, LPARAM, LRESULT* result) override {
        if (result) *result = 0;
        return S_FALSE;  // handles no input
    }
    HRESULT STDMETHODCALLTYPE GetDropTarget(IDropTarget** target) override {
        if (!target) return E_POINTER;
        *target = nullptr;
        return E_NOTIMPL;
    }

    // ------------------------------------------- IOleInPlaceActiveObject
    HRESULT STDMETHODCALLTYPE TranslateAccelerator(LPMSG) override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE OnFrameWindowActivate(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE OnDocWindowActivate(BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE ResizeBorder(LPCRECT, IOleInPlaceUIWindow*, BOOL) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE EnableModeless(BOOL) override { return S_OK; }

    // ------------------------------------------------------- IViewObject2
    HRESULT STDMETHODCALLTYPE Draw(DWORD aspect, LONG, void*, DVTARGETDEVICE*, HDC, HDC dc, LPCRECTL bounds,
                                   LPCRECTL, BOOL(STDMETHODCALLTYPE*)(ULONG_PTR), ULONG_PTR) override {
        if (aspect != DVASPECT_CONTENT && aspect != DVASPECT_ICON) return DV_E_DVASPECT;
        if (!dc) return E_INVALIDARG;
        RECTL area;
        if (bounds) {
            area = *bounds;
        } else if (inPlaceSite_ && windowless_) {
            area = {position_.left, position_.top, position_.right, position_.bottom};
        } else {
            return E_INVALIDARG;
        }
        if (aspect == DVASPECT_ICON || !UserMode()) DrawControlIcon(dc, index_, area);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetColorSet(DWORD, LONG, void*, DVTARGETDEVICE*, HDC, LOGPALETTE** colors) override {
        if (colors) *colors = nullptr;
        return S_FALSE;
    }
    HRESULT STDMETHODCALLTYPE Freeze(DWORD, LONG, void*, DWORD* freeze) override {
        if (freeze) *freeze = 0;
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE Unfreeze(DWORD) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetAdvise(DWORD aspects, DWORD flags, IAdviseSink* sink) override {
        if (sink) sink->AddRef();
        ReleaseAndClear(viewSink_);
        viewSink_ = sink;
        viewAspects_ = aspects;
        viewFlags_ = flags;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetAdvise(DWORD* aspects, DWORD* flags, IAdviseSink** sink) override {
        if (aspects) *aspects = viewAspects_;
        if (flags) *flags = viewFlags_;
        if (sink) {
            *sink = viewSink_;
            if (viewSink_) viewSink_->AddRef();
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetExtent(DWORD aspect, LONG, DVTARGETDEVICE*, LPSIZEL size) override {
        return GetExtent(aspect, size);
    }

    // ---------------------------------------- IPersist and its three kinds
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* clsid) override {
        if (!clsid) return E_POINTER;
        *clsid = *table_.clsid;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return dirty_ ? S_OK : S_FALSE; }
    HRESULT STDMETHODCALLTYPE InitNew() override {
        ResetState();
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE Load(IStream* stream) override {
        if (!stream) return E_POINTER;
        DWORD header[2] = {};
        ULONG got = 0;
        if (FAILED(stream->Read(header, sizeof header, &got)) || got != sizeof header)
            return LoadFailed(kLoadErrorsText, IID_IPersistStreamInit);
        const DWORD stamp = header[0], bytes = header[1];
        if (stamp > kStateStamp) {
            Skip(stream, bytes);
            return LoadFailed(kNewerVersionText, IID_IPersistStreamInit);
        }
        if (stamp < kOldestStamp || bytes < kExtentBytes) {
            Skip(stream, bytes);
            return LoadFailed(kLoadErrorsText, IID_IPersistStreamInit);
        }
        LONG extent[2] = {};
        if (FAILED(stream->Read(extent, sizeof extent, &got)) || got != sizeof extent || extent[0] < 0 ||
            extent[1] < 0)
            return LoadFailed(kLoadErrorsText, IID_IPersistStreamInit);
        // A later 1.x may append fields this version does not know.
        Skip(stream, bytes - kExtentBytes);
        extent_ = {extent[0], extent[1]};
        dirty_ = false;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Save(IStream* stream, BOOL clearDirty) override {
        if (!stream) return E_POINTER;
        const DWORD block[4] = {kStateStamp, kExtentBytes, static_cast<DWORD>(extent_.cx),
                                static_cast<DWORD>(extent_.cy)};
        ULONG written = 0;
        HRESULT hr = stream->Write(block, sizeof block, &written);
        if (SUCCEEDED(hr) && written != sizeof block) hr = STG_E_MEDIUMFULL;
        if (FAILED(hr)) return hr;
        if (clearDirty) dirty_ = false;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER* size) override {
        if (!size) return E_POINTER;
        size->QuadPart = kStateBytes;
        return S_OK;
    }

    HRESULT STDMETHODCALLTYPE InitNew(IStorage* storage) override {
        if (!storage) return E_POINTER;
        ResetState();
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Load(IStorage* storage) override {
        if (!storage) return E_POINTER;
        IStream* stream = nullptr;
        if (FAILED(storage->OpenStream(L"Contents", nullptr, STGM_READ | STGM_SHARE_EXCLUSIVE, 0, &stream)))
            return LoadFailed(kLoadErrorsText, IID_IPersistStorage);
        HRESULT hr = Load(stream);
        stream->Release();
        if (FAILED(hr)) {
            // Report it as the storage's failure (same text and code).
            hr = LoadFailed(static_cast<UINT>(HRESULT_CODE(hr)), IID_IPersistStorage);
        }
        return hr;
    }
    HRESULT STDMETHODCALLTYPE Save(IStorage* storage, BOOL sameAsLoad) override {
        if (!storage) return E_POINTER;
        IStream* stream = nullptr;
        HRESULT hr = storage->CreateStream(L"Contents", STGM_CREATE | STGM_WRITE | STGM_SHARE_EXCLUSIVE, 0, 0,
                                           &stream);
        if (FAILED(hr)) return hr;
        hr = Save(stream, sameAsLoad);
        stream->Release();
        return hr;
    }
    HRESULT STDMETHODCALLTYPE SaveCompleted(IStorage*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE HandsOffStorage() override { return S_OK; }

    // Property bag: "_Version" (the stamp as a number, 65537 for 1.1),
    // "_ExtentX", "_ExtentY" (HIMETRIC) and "_StockProps" (0: none). A
    // missing value keeps its default.
    HRESULT STDMETHODCALLTYPE Load(IPropertyBag* bag, IErrorLog* log) override {
        if (!bag) return E_POINTER;
        LONG version = static_cast<LONG>(kStateStamp);
        LONG extent[2] = {kDefaultExtent, kDefaultExtent};
        const wchar_t* const names[3] = {L"_Version", L"_ExtentX", L"_ExtentY"};
        LONG* const targets[3] = {&version, &extent[0], &extent[1]};
        for (int k = 0; k < 3; ++k) {
            VARIANT value;
            VariantInit(&value);
            V_VT(&value) = VT_I4;
            const HRESULT hr = bag->Read(names[k], &value, log);
            if (SUCCEEDED(hr) && V_VT(&value) != VT_I4 && FAILED(VariantChangeType(&value, &value, 0, VT_I4))) {
                VariantClear(&value);
                return LoadFailed(kLoadErrorsText, IID_IPersistPropertyBag, log, names[k]);
            }
            if (FAILED(hr) && hr != E_INVALIDARG)  // E_INVALIDARG: no such value
                return LoadFailed(kLoadErrorsText, IID_IPersistPropertyBag, log, names[k]);
            if (SUCCEEDED(hr)) *targets[k] = V_I4(&value);
            VariantClear(&value);
            if (k == 0 && static_cast<DWORD>(version) > kStateStamp)
                return LoadFailed(kNewerVersionText, IID_IPersistPropertyBag, log, names[0]);
            if (k == 0 && static_cast<DWORD>(version) < kOldestStamp)
                return LoadFailed(kLoadErrorsText, IID_IPersistPropertyBag, log, names[0]);
            if (k > 0 && *targets[k] < 0)
                return LoadFailed(kLoadErrorsText, IID_IPersistPropertyBag, log, names[k]);
        }
        extent_ = {extent[0], extent[1]};
        dirty_ = false;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Save(IPropertyBag* bag, BOOL clearDirty, BOOL) override {
        if (!bag) return E_POINTER;
        const wchar_t* const names[4] = {L"_Version", L"_ExtentX", L"_ExtentY", L"_StockProps"};
        const LONG values[4] = {static_cast<LONG>(kStateStamp), extent_.cx, extent_.cy, 0};
        for (int k = 0; k < 4; ++k) {
            VARIANT value;
            VariantInit(&value);
            V_VT(&value) = VT_I4;
            V_I4(&value) = values[k];
            const HRESULT hr = bag->Write(names[k], &value);
            if (FAILED(hr)) return hr;
        }
        if (clearDirty) dirty_ = false;
        return S_OK;
    }

    // ----------------------------------------------------- IQuickActivate
    HRESULT STDMETHODCALLTYPE QuickActivate(QACONTAINER* container, QACONTROL* control) override {
        if (!container || !control) return E_POINTER;
        if (control->cbSize < sizeof(QACONTROL)) return E_UNEXPECTED;
        SetClientSite(container->pClientSite);
        if (container->pAdviseSink) SetAdvise(DVASPECT_CONTENT, 0, container->pAdviseSink);
        control->dwMiscStatus = kControlMiscStatus;
        // Not opaque: it draws at most its icon and leaves the rest of its
        // area to the container.
        control->dwViewStatus = 0;
        control->dwEventCookie = 0;
        control->dwPropNotifyCookie = 0;
        control->dwPointerActivationPolicy = 0;
        if (container->pUnkEventSink) events_.Advise(container->pUnkEventSink, &control->dwEventCookie);
        if (container->pPropertyNotifySink)
            propertyNotify_.Advise(container->pPropertyNotifySink, &control->dwPropNotifyCookie);
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetContentExtent(LPSIZEL size) override { return SetExtent(DVASPECT_CONTENT, size); }
    HRESULT STDMETHODCALLTYPE GetContentExtent(LPSIZEL size) override { return GetExtent(DVASPECT_CONTENT, size); }

    // ------------------------------------------------- IProvideClassInfo2
    HRESULT STDMETHODCALLTYPE GetClassInfo(ITypeInfo** info) override {
        if (!info) return E_POINTER;
        *info = nullptr;
        return TypeInfoOfGuid(*table_.clsid, info);
    }
    HRESULT STDMETHODCALLTYPE GetGUID(DWORD kind, GUID* guid) override {
        if (!guid) return E_POINTER;
        if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) {
            *guid = GUID_NULL;
            return E_INVALIDARG;
        }
        *guid = *class_.eventIid;
        return S_OK;
    }

    // ------------------------------------------ IConnectionPointContainer
    HRESULT STDMETHODCALLTYPE EnumConnectionPoints(IEnumConnectionPoints** points) override {
        if (!points) return E_POINTER;
        IConnectionPoint* const all[2] = {&events_, &propertyNotify_};
        *points = new (std::nothrow) ConnectionPointEnum(all, 2, 0);
        return *points ? S_OK : E_OUTOFMEMORY;
    }
    HRESULT STDMETHODCALLTYPE FindConnectionPoint(REFIID iid, IConnectionPoint** point) override {
        if (!point) return E_POINTER;
        *point = nullptr;
        if (IsEqualIID(iid, events_.Iid()))
            *point = &events_;
        else if (IsEqualIID(iid, IID_IPropertyNotifySink))
            *point = &propertyNotify_;
        else
            return CONNECT_E_NOCONNECTION;
        (*point)->AddRef();
        return S_OK;
    }

    // ---------------------------------------------- ISpecifyPropertyPages
    HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pages) override {
        if (!pages) return E_POINTER;
        pages->cElems = 0;
        pages->pElems = nullptr;
        return S_OK;
    }

    // -------------------------------------------------- ISupportErrorInfo
    HRESULT STDMETHODCALLTYPE InterfaceSupportsErrorInfo(REFIID iid) override {
        const bool supported = IsEqualIID(iid, IID_IDispatch) || IsEqualIID(iid, *table_.dispatchIid) ||
                               IsEqualIID(iid, IID_IPersistStreamInit) || IsEqualIID(iid, IID_IPersistStorage) ||
                               IsEqualIID(iid, IID_IPersistPropertyBag);
        return supported ? S_OK : S_FALSE;
    }

    // Painting of the windowed form.
    void Paint(HDC dc, const RECT& client) {
        if (!UserMode()) DrawControlIcon(dc, index_, {client.left, client.top, client.right, client.bottom});
    }

private:
    void* Find(REFIID iid) {
        if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) || IsEqualIID(iid, *table_.dispatchIid))
            return static_cast<IDispatch*>(this);
        if (IsEqualIID(iid, IID_IOleObject)) return static_cast<IOleObject*>(this);
        if (IsEqualIID(iid, IID_IOleControl)) return static_cast<IOleControl*>(this);
        if (IsEqualIID(iid, IID_IOleWindow) || IsEqualIID(iid, IID_IOleInPlaceObject) ||
            IsEqualIID(iid, IID_IOleInPlaceObjectWindowless))
            return static_cast<IOleInPlaceObjectWindowless*>(this);
        if (IsEqualIID(iid, IID_IOleInPlaceActiveObject)) return static_cast<IOleInPlaceActiveObject*>(this);
        if (IsEqualIID(iid, IID_IViewObject) || IsEqualIID(iid, IID_IViewObject2))
            return static_cast<IViewObject2*>(this);
        if (IsEqualIID(iid, IID_IPersist) || IsEqualIID(iid, IID_IPersistStreamInit))
            return static_cast<IPersistStreamInit*>(this);
        // A plain IPersistStream is the same format without InitNew.
        if (IsEqualIID(iid, IID_IPersistStream)) return static_cast<IPersistStreamInit*>(this);
        if (IsEqualIID(iid, IID_IPersistStorage)) return static_cast<IPersistStorage*>(this);
        if (IsEqualIID(iid, IID_IPersistPropertyBag)) return static_cast<IPersistPropertyBag*>(this);
        if (IsEqualIID(iid, IID_IQuickActivate)) return static_cast<IQuickActivate*>(this);
        if (IsEqualIID(iid, IID_IProvideClassInfo) || IsEqualIID(iid, IID_IProvideClassInfo2))
            return static_cast<IProvideClassInfo2*>(this);
        if (IsEqualIID(iid, IID_IConnectionPointContainer)) return static_cast<IConnectionPointContainer*>(this);
        if (IsEqualIID(iid, IID_ISpecifyPropertyPages)) return static_cast<ISpecifyPropertyPages*>(this);
        if (IsEqualIID(iid, IID_ISupportErrorInfo)) return static_cast<ISupportErrorInfo*>(this);
        return nullptr;
    }

    void ResetState() {
        extent_ = {kDefaultExtent, kDefaultExtent};
        dirty_ = false;
    }

    static void Skip(IStream* stream, DWORD bytes) {
        LARGE_INTEGER move;
        move.QuadPart = bytes;
        stream->Seek(move, STREAM_SEEK_CUR, nullptr);
    }

    // A state that cannot be used: the defaults stay in force, the string
    // table's text goes to the error object (and to the host's error log of
    // a property bag), and the load answers 0x800A0000 | id.
    HRESULT LoadFailed(UINT id, REFIID iid, IErrorLog* log = nullptr, const wchar_t* property = nullptr) {
        ResetState();
        const HRESULT code = MAKE_HRESULT(SEVERITY_ERROR, FACILITY_CONTROL, id);
        const std::wstring text = Widen(LoadFrameString(id));
        ICreateErrorInfo* create = nullptr;
        if (SUCCEEDED(CreateErrorInfo(&create)) && create) {
            create->SetGUID(iid);
            create->SetSource(const_cast<LPOLESTR>(table_.progId));
            create->SetDescription(const_cast<LPOLESTR>(text.c_str()));
            IErrorInfo* info = nullptr;
            if (SUCCEEDED(create->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info))) && info) {
                SetErrorInfo(0, info);
                info->Release();
            }
            create->Release();
        }
        if (log) {
            EXCEPINFO excep;
            std::memset(&excep, 0, sizeof excep);
            excep.scode = code;
            excep.bstrSource = SysAllocString(table_.progId);
            excep.bstrDescription = SysAllocString(text.c_str());
            log->AddError(property, &excep);
            SysFreeString(excep.bstrSource);
            SysFreeString(excep.bstrDescription);
        }
        return code;
    }

    // The container's ambient UserMode; a container without ambient
    // properties is taken to be running a form, not designing one.
    bool UserMode() const {
        if (!site_) return true;
        IDispatch* ambient = nullptr;
        if (FAILED(site_->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&ambient))) || !ambient) return true;
        VARIANT value;
        VariantInit(&value);
        DISPPARAMS none = {nullptr, nullptr, 0, 0};
        HRESULT hr = ambient->Invoke(DISPID_AMBIENT_USERMODE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET,
                                     &none, &value, nullptr, nullptr);
        ambient->Release();
        if (SUCCEEDED(hr)) hr = VariantChangeType(&value, &value, 0, VT_BOOL);
        const bool userMode = FAILED(hr) || V_BOOL(&value) != VARIANT_FALSE;
        VariantClear(&value);
        return userMode;
    }

    HRESULT InPlaceActivate(IOleClientSite* clientSite, LPCRECT requested) {
        if (inPlaceSite_) {
            if (requested) SetObjectRects(requested, requested);
            return S_OK;
        }
        if (!clientSite) return E_UNEXPECTED;
        IOleInPlaceSite* site = nullptr;
        if (FAILED(clientSite->QueryInterface(IID_IOleInPlaceSite, reinterpret_cast<void**>(&site))) || !site)
            return OLE_E_NOT_INPLACEACTIVE;
        if (site->CanInPlaceActivate() != S_OK) {
            site->Release();
            return E_FAIL;
        }
        IOleInPlaceSiteWindowless* windowless = nullptr;
        IOleInPlaceSiteEx* ex = nullptr;
        site->QueryInterface(IID_IOleInPlaceSiteWindowless, reinterpret_cast<void**>(&windowless));
        site->QueryInterface(IID_IOleInPlaceSiteEx, reinterpret_cast<void**>(&ex));
        windowless_ = windowless && windowless->CanWindowlessActivate() == S_OK;
        BOOL noRedraw = FALSE;
        HRESULT hr = windowless_ ? windowless->OnInPlaceActivateEx(&noRedraw, ACTIVATE_WINDOWLESS)
                     : ex        ? ex->OnInPlaceActivateEx(&noRedraw, 0)
                                 : site->OnInPlaceActivate();
        ReleaseAndClear(windowless);
        ReleaseAndClear(ex);
        if (FAILED(hr)) {
            site->Release();
            windowless_ = false;
            return hr;
        }
        inPlaceSite_ = site;

        IOleInPlaceFrame* frame = nullptr;
        IOleInPlaceUIWindow* document = nullptr;
        RECT position = {}, clip = {};
        OLEINPLACEFRAMEINFO frameInfo;
        std::memset(&frameInfo, 0, sizeof frameInfo);
        frameInfo.cb = sizeof frameInfo;
        if (SUCCEEDED(site->GetWindowContext(&frame, &document, &position, &clip, &frameInfo)))
            position_ = requested ? *requested : position;
        else if (requested)
            position_ = *requested;
        ReleaseAndClear(frame);
        ReleaseAndClear(document);

        if (!windowless_) {
            HWND parent = nullptr;
            hr = site->GetWindow(&parent);
            if (SUCCEEDED(hr)) hr = CreateControlWindow(parent);
            if (FAILED(hr)) {
                InPlaceDeactivate();
                return hr;
            }
        }
        return S_OK;
    }

    HRESULT CreateControlWindow(HWND parent) {
        if (!g_windowClass) {
            WNDCLASSEXW wc;
            std::memset(&wc, 0, sizeof wc);
            wc.cbSize = sizeof wc;
            wc.style = CS_HREDRAW | CS_VREDRAW;
            wc.lpfnWndProc = &WindowProc;
            wc.hInstance = ResourceModule();
            wc.hCursor = LoadCursorW(nullptr, MAKEINTRESOURCEW(32512));  // the arrow
            wc.lpszClassName = kWindowClass;
            g_windowClass = RegisterClassExW(&wc);
            if (!g_windowClass) return HRESULT_FROM_WIN32(GetLastError());
        }
        // Hidden at run time: an invisible control keeps its window only so
        // that a container insisting on a window gets one.
        const DWORD style = WS_CHILD | WS_CLIPSIBLINGS | (UserMode() ? 0 : WS_VISIBLE);
        hwnd_ = CreateWindowExW(0, kWindowClass, class_.name, style, position_.left, position_.top,
                                position_.right - position_.left, position_.bottom - position_.top, parent, nullptr,
                                ResourceModule(), this);
        return hwnd_ ? S_OK : HRESULT_FROM_WIN32(GetLastError());
    }

    void DestroyControlWindow() {
        if (!hwnd_) return;
        SetWindowLongPtrW(hwnd_, GWLP_USERDATA, 0);
        DestroyWindow(hwnd_);
        hwnd_ = nullptr;
    }

    static LRESULT CALLBACK WindowProc(HWND hwnd, UINT message, WPARAM wp, LPARAM lp) {
        if (message == WM_NCCREATE) {
            const CREATESTRUCTW* create = reinterpret_cast<const CREATESTRUCTW*>(lp);
            SetWindowLongPtrW(hwnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(create->lpCreateParams));
        }
        if (message == WM_PAINT) {
            PAINTSTRUCT paint;
            HDC dc = BeginPaint(hwnd, &paint);
            auto* control = reinterpret_cast<OleControl*>(GetWindowLongPtrW(hwnd, GWLP_USERDATA));
            RECT client;
            GetClientRect(hwnd, &client);
            if (control && dc) control->Paint(dc, client);
            EndPaint(hwnd, &paint);
            return 0;
        }
        return DefWindowProcW(hwnd, message, wp, lp);
    }

    LONG refs_ = 1;
    const ControlClass& class_;
    const DispatchTable& table_;
    const int index_;
    ConnectionPoint events_;
    ConnectionPoint propertyNotify_;

    IOleClientSite* site_ = nullptr;
    IOleInPlaceSite* inPlaceSite_ = nullptr;  // set while in-place active
    bool windowless_ = false;
    HWND hwnd_ = nullptr;
    RECT position_ = {};
    IOleAdviseHolder* adviseHolder_ = nullptr;
    IAdviseSink* viewSink_ = nullptr;
    DWORD viewAspects_ = 0;
    DWORD viewFlags_ = 0;

    SIZEL extent_ = {};
    bool dirty_ = false;
};

}  // namespace

HRESULT CreateControl(const DispatchTable& table, REFIID iid, void** object) {
    if (!object) return E_POINTER;
    *object = nullptr;
    for (int k = 0; k < 5; ++k) {
        const ControlClass& cls = kControlClasses[k];
        if (&cls.table() != &table) continue;
        OleControl* control = new (std::nothrow) OleControl(cls, k);
        if (!control) return E_OUTOFMEMORY;
        const HRESULT hr = control->QueryInterface(iid, object);
        control->Release();
        return hr;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

void ReleaseControlWindowClass() {
    if (g_windowClass && UnregisterClassW(kWindowClass, ResourceModule())) g_windowClass = 0;
}

}  // namespace vn

#include "input/WindowsCapture.h"

#ifdef _WIN32

#include <chrono>
#include <cstdio>
#include <cstring>
#include <d3d11.h>
#include <dwmapi.h>
#include <dxgi1_2.h>
#include <mutex>
#include <thread>
#include <windows.h>

namespace selvane::win {

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kWindowBufferBytes = 3840u * 2160u * 4u;  // one 4K BGRA picture
constexpr std::size_t kMonitorBufferBytes = 7680u * 4320u * 4u; // one 8K BGRA picture
constexpr int kMaxTitle = 384;

template <typename T> void release(T *&p)
{
    if (p) {
        p->Release();
        p = nullptr;
    }
}

// ---- the companion library ----

using CreateFn = void *(*)(HWND);
using CreateMonitorFn = void *(*)(HMONITOR);
using DestroyFn = void (*)(void *);
using CopyFn = std::int32_t (*)(void *, std::uint8_t *, std::uint32_t, std::uint32_t *,
                                std::uint32_t *, std::int64_t *);

struct WgcBindings
{
    bool tried = false;
    bool ready = false;
    std::string message;
    HMODULE module = nullptr;
    CreateFn create = nullptr;
    CreateMonitorFn createMonitor = nullptr; // optional
    DestroyFn destroy = nullptr;
    CopyFn copy = nullptr;
};

WgcBindings &bindings()
{
    static WgcBindings b;
    return b;
}
std::mutex g_loadMutex;

template <typename F> F resolve(HMODULE module, const char *name)
{
    return reinterpret_cast<F>(reinterpret_cast<void *>(GetProcAddress(module, name)));
}

bool fileExists(const std::wstring &path)
{
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_DIRECTORY);
}

// The copy loop shared by window capture and the library's monitor capture.
void copyLoop(void *capture, std::size_t bufferBytes, const char *tooLarge,
              const CaptureHooks &hooks)
{
    std::vector<std::uint8_t> buffer(bufferBytes, 0);
    std::int64_t lastTime = -1;
    while (!hooks.stop()) {
        hooks.flushIfAsked();
        if (hooks.paused()) {
            std::this_thread::sleep_for(25ms);
            continue;
        }
        std::uint32_t width = 0, height = 0;
        std::int64_t time = 0;
        const std::int32_t status = bindings().copy(
            capture, buffer.data(), std::uint32_t(buffer.size()), &width, &height, &time);
        if (status == -1) {
            std::this_thread::sleep_for(1500us);
            continue;
        }
        if (status == -4) {
            hooks.report(tooLarge);
            std::this_thread::sleep_for(5ms);
            continue;
        }
        if (status != 0) {
            std::this_thread::sleep_for(5ms);
            continue;
        }
        if (width > 0 && height > 0 && time != lastTime) {
            lastTime = time;
            hooks.deliver(buffer.data(), int(width), int(height), time / 10); // 100 ns -> us
        }
    }
}

// ---- desktop duplication ----

struct Duplication
{
    ID3D11Device *device = nullptr;
    ID3D11DeviceContext *context = nullptr;
    IDXGIOutputDuplication *duplication = nullptr;
    ID3D11Texture2D *staging = nullptr;
    int width = 0;
    int height = 0;

    ~Duplication() { clear(); }
    void clear()
    {
        release(staging);
        release(duplication);
        release(context);
        release(device);
        width = height = 0;
    }
};

struct FoundOutput
{
    IDXGIAdapter1 *adapter = nullptr;
    IDXGIOutput1 *output = nullptr;
};

// The output with this index, counted over all adapters; empty result with the message.
bool findOutput(int index, FoundOutput *found, std::string *message)
{
    IDXGIFactory1 *factory = nullptr;
    if (FAILED(CreateDXGIFactory1(__uuidof(IDXGIFactory1), reinterpret_cast<void **>(&factory)))) {
        *message = "no DXGI output (is the graphics driver working?)";
        return false;
    }
    int seen = 0;
    IDXGIAdapter1 *adapter = nullptr;
    for (UINT a = 0; factory->EnumAdapters1(a, &adapter) != DXGI_ERROR_NOT_FOUND; ++a) {
        IDXGIOutput *output = nullptr;
        for (UINT o = 0; adapter->EnumOutputs(o, &output) != DXGI_ERROR_NOT_FOUND; ++o) {
            if (seen++ == index) {
                IDXGIOutput1 *output1 = nullptr;
                output->QueryInterface(__uuidof(IDXGIOutput1), reinterpret_cast<void **>(&output1));
                release(output);
                found->adapter = adapter;
                found->output = output1;
                release(factory);
                return output1 != nullptr;
            }
            release(output);
        }
        release(adapter);
    }
    release(factory);
    *message = seen == 0 ? "no DXGI output (is the graphics driver working?)"
                         : "no monitor with that index";
    return false;
}

bool openDuplication(int monitor, Duplication *d, std::string *message)
{
    d->clear();
    if (monitor < 0) {
        *message = "no monitor with that index";
        return false;
    }
    FoundOutput found;
    if (!findOutput(monitor, &found, message))
        return false;
    const HRESULT created = D3D11CreateDevice(found.adapter, D3D_DRIVER_TYPE_UNKNOWN, nullptr,
                                              D3D11_CREATE_DEVICE_BGRA_SUPPORT, nullptr, 0,
                                              D3D11_SDK_VERSION, &d->device, nullptr, &d->context);
    release(found.adapter);
    if (FAILED(created)) {
        release(found.output);
        *message = "D3D11CreateDevice failed";
        return false;
    }
    const HRESULT duplicated = found.output->DuplicateOutput(d->device, &d->duplication);
    release(found.output);
    if (FAILED(duplicated)) {
        *message = "DuplicateOutput refused (a full-screen program, another duplication, or a "
                   "session without it)";
        return false;
    }
    DXGI_OUTDUPL_DESC description{};
    d->duplication->GetDesc(&description);
    d->width = int(description.ModeDesc.Width);
    d->height = int(description.ModeDesc.Height);
    if (d->width <= 0 || d->height <= 0) {
        *message = "the duplicated desktop has no size";
        return false;
    }
    D3D11_TEXTURE2D_DESC texture{};
    texture.Width = UINT(d->width);
    texture.Height = UINT(d->height);
    texture.MipLevels = 1;
    texture.ArraySize = 1;
    texture.Format = DXGI_FORMAT_B8G8R8A8_UNORM;
    texture.SampleDesc.Count = 1;
    texture.Usage = D3D11_USAGE_STAGING;
    texture.CPUAccessFlags = D3D11_CPU_ACCESS_READ;
    if (FAILED(d->device->CreateTexture2D(&texture, nullptr, &d->staging))) {
        *message = "CreateTexture2D (the capture buffer) failed";
        return false;
    }
    return true;
}

BOOL CALLBACK collectWindow(HWND window, LPARAM list)
{
    if (!IsWindow(window) || !IsWindowVisible(window) || IsIconic(window) ||
        GetWindow(window, GW_OWNER) != nullptr)
        return TRUE;
    DWORD cloaked = 0;
    if (SUCCEEDED(DwmGetWindowAttribute(window, DWMWA_CLOAKED, &cloaked, sizeof cloaked)) &&
        cloaked != 0)
        return TRUE;
    wchar_t title[kMaxTitle + 1] = {};
    const int length = GetWindowTextW(window, title, kMaxTitle + 1);
    if (length <= 0)
        return TRUE;
    reinterpret_cast<std::vector<TopLevelWindow> *>(list)->push_back(
        {std::uint64_t(reinterpret_cast<std::uintptr_t>(window)), std::wstring(title, length)});
    return TRUE;
}

BOOL CALLBACK collectMonitor(HMONITOR monitor, HDC, LPRECT, LPARAM list)
{
    reinterpret_cast<std::vector<HMONITOR> *>(list)->push_back(monitor);
    return TRUE;
}

} // namespace

std::vector<Output> listOutputs()
{
    std::vector<Output> outputs;
    IDXGIFactory1 *factory = nullptr;
    if (FAILED(CreateDXGIFactory1(__uuidof(IDXGIFactory1), reinterpret_cast<void **>(&factory))))
        return outputs;
    IDXGIAdapter1 *adapter = nullptr;
    for (UINT a = 0; factory->EnumAdapters1(a, &adapter) != DXGI_ERROR_NOT_FOUND; ++a) {
        IDXGIOutput *output = nullptr;
        for (UINT o = 0; adapter->EnumOutputs(o, &output) != DXGI_ERROR_NOT_FOUND; ++o) {
            DXGI_OUTPUT_DESC description{};
            output->GetDesc(&description);
            const RECT r = description.DesktopCoordinates;
            outputs.push_back({int(outputs.size()), description.DeviceName, int(r.left), int(r.top),
                               int(r.right - r.left), int(r.bottom - r.top)});
            release(output);
        }
        release(adapter);
    }
    release(factory);
    return outputs;
}

std::vector<TopLevelWindow> listTopLevelWindows()
{
    std::vector<TopLevelWindow> windows;
    EnumWindows(collectWindow, reinterpret_cast<LPARAM>(&windows));
    return windows;
}

std::wstring windowLabel(const TopLevelWindow &window)
{
    wchar_t handle[32] = {};
    std::swprintf(handle, 32, L"%llx", static_cast<unsigned long long>(window.handle));
    return window.title + L"  [0x" + handle + L"]";
}

bool loadWgcLibrary(const std::wstring &applicationDirectory, std::string *message)
{
    const std::lock_guard lock(g_loadMutex);
    WgcBindings &b = bindings();
    if (b.tried) {
        *message = b.message;
        return b.ready;
    }
    b.tried = true;
    for (const std::wstring &candidate :
         {applicationDirectory + L"/WgcCapture.dll", applicationDirectory + L"/../WgcCapture.dll",
          std::wstring(L"WgcCapture.dll")}) {
        const bool bare = candidate == L"WgcCapture.dll";
        if (!bare && !fileExists(candidate))
            continue;
        b.module = LoadLibraryW(candidate.c_str());
        if (b.module)
            break;
    }
    if (!b.module) {
        b.message = "WgcCapture.dll not found beside selvane.exe";
        *message = b.message;
        return false;
    }
    b.create = resolve<CreateFn>(b.module, "wgc_capture_create");
    b.createMonitor = resolve<CreateMonitorFn>(b.module, "wgc_capture_create_monitor");
    b.destroy = resolve<DestroyFn>(b.module, "wgc_capture_destroy");
    b.copy = resolve<CopyFn>(b.module, "wgc_capture_copy_bgra");
    if (!b.create || !b.destroy || !b.copy) {
        FreeLibrary(b.module);
        b.module = nullptr;
        b.message =
            "WgcCapture.dll lacks wgc_capture_create, wgc_capture_destroy or wgc_capture_copy_bgra";
        *message = b.message;
        return false;
    }
    b.ready = true;
    return true;
}

void captureWindowLoop(std::uint64_t handle, const CaptureHooks &hooks)
{
    if (!bindings().ready) {
        hooks.report("WgcCapture.dll is not loaded");
        return;
    }
    HWND window = reinterpret_cast<HWND>(static_cast<std::uintptr_t>(handle));
    if (handle == 0 || !IsWindow(window)) {
        hooks.report("wgc:// needs the hwnd of an existing window (decimal or 0x hexadecimal)");
        return;
    }
    window = GetAncestor(window, GA_ROOT);
    void *capture = bindings().create(window);
    if (!capture) {
        hooks.report(
            "Windows Graphics Capture did not start (Windows 10 or later, a visible window)");
        return;
    }
    copyLoop(capture, kWindowBufferBytes, "the window is larger than 4K: pictures dropped", hooks);
    bindings().destroy(capture);
}

void captureDesktopLoop(int monitor, bool preferWgc, const CaptureHooks &hooks)
{
    if (preferWgc && bindings().ready && bindings().createMonitor) {
        std::vector<HMONITOR> monitors;
        EnumDisplayMonitors(nullptr, nullptr, collectMonitor, reinterpret_cast<LPARAM>(&monitors));
        if (monitor >= 0 && std::size_t(monitor) < monitors.size()) {
            if (void *capture = bindings().createMonitor(monitors[std::size_t(monitor)])) {
                copyLoop(capture, kMonitorBufferBytes,
                         "the monitor is larger than 8K: pictures dropped", hooks);
                bindings().destroy(capture);
                return;
            }
        }
        // Otherwise: desktop duplication, without a word.
    }
    Duplication d;
    std::string message;
    if (!openDuplication(monitor, &d, &message)) {
        hooks.report(message);
        return;
    }
    std::vector<std::uint8_t> buffer(std::size_t(d.width) * std::size_t(d.height) * 4u, 0);
    LARGE_INTEGER frequency{};
    QueryPerformanceFrequency(&frequency);
    bool accessLost = false;
    while (!hooks.stop()) {
        hooks.flushIfAsked();
        if (hooks.paused()) {
            std::this_thread::sleep_for(25ms);
            continue;
        }
        DXGI_OUTDUPL_FRAME_INFO info{};
        IDXGIResource *resource = nullptr;
        const HRESULT acquired = d.duplication->AcquireNextFrame(25, &info, &resource);
        if (FAILED(acquired)) {
            accessLost = accessLost || acquired == DXGI_ERROR_ACCESS_LOST;
            if (accessLost) {
                // A full-screen switch, a mode change or the secure desktop: build it again.
                accessLost = false;
                if (!openDuplication(monitor, &d, &message)) {
                    hooks.report(message);
                    return;
                }
                buffer.assign(std::size_t(d.width) * std::size_t(d.height) * 4u, 0);
            }
            std::this_thread::sleep_for(1500us);
            continue;
        }
        ID3D11Texture2D *texture = nullptr;
        resource->QueryInterface(__uuidof(ID3D11Texture2D), reinterpret_cast<void **>(&texture));
        release(resource);
        if (texture) {
            d.context->CopyResource(d.staging, texture);
            release(texture);
            D3D11_MAPPED_SUBRESOURCE mapped{};
            if (SUCCEEDED(d.context->Map(d.staging, 0, D3D11_MAP_READ, 0, &mapped))) {
                const std::size_t row = std::size_t(d.width) * 4u;
                for (int y = 0; y < d.height; ++y)
                    std::memcpy(buffer.data() + std::size_t(y) * row,
                                static_cast<const std::uint8_t *>(mapped.pData) +
                                    std::size_t(y) * mapped.RowPitch,
                                row);
                d.context->Unmap(d.staging, 0);
                LARGE_INTEGER now{};
                QueryPerformanceCounter(&now);
                hooks.deliver(buffer.data(), d.width, d.height,
                              std::int64_t(now.QuadPart * 1000000 / frequency.QuadPart));
            }
        }
        d.duplication->ReleaseFrame();
        std::this_thread::sleep_for(12ms); // about 80 pictures a second at most
    }
}

} // namespace selvane::win

#endif

// The Windows side of ScreenCapture.h: monitors and windows through DXGI and user32, and the
// gdigrab input that grabs them when the system's own capture is refused.

#include "input/ScreenCapture.h"

#ifdef _WIN32

#include "input/SourceAddress.h"
#include "input/WindowsCapture.h"

#include <windows.h>

namespace selvane {

namespace {

HWND toWindow(quint64 handle)
{
    return reinterpret_cast<HWND>(static_cast<std::uintptr_t>(handle));
}

std::optional<QSize> clientSize(quint64 handle)
{
    const HWND window = toWindow(handle);
    RECT client{};
    if (handle == 0 || !IsWindow(window) || !GetClientRect(window, &client))
        return std::nullopt;
    return QSize(int(client.right - client.left), int(client.bottom - client.top));
}

BOOL CALLBACK collectMonitor(HMONITOR monitor, HDC, LPRECT, LPARAM list)
{
    MONITORINFOEXW info{};
    info.cbSize = sizeof info;
    if (GetMonitorInfoW(monitor, &info)) {
        auto *monitors = reinterpret_cast<QList<CaptureMonitor> *>(list);
        const RECT r = info.rcMonitor;
        monitors->append({int(monitors->size()), QString::fromWCharArray(info.szDevice),
                          QRect(r.left, r.top, r.right - r.left, r.bottom - r.top)});
    }
    return TRUE;
}

} // namespace

bool hasCaptureDisplay()
{
    return GetSystemMetrics(SM_CMONITORS) > 0;
}

QList<CaptureMonitor> listCaptureMonitors()
{
    // DXGI's order is the order desktop duplication counts in; user32 lists monitors where no
    // adapter reports its outputs (basic display drivers, some virtual machines).
    QList<CaptureMonitor> monitors;
    for (const win::Output &output : win::listOutputs())
        monitors.append({output.index, QString::fromStdWString(output.name),
                         QRect(output.x, output.y, output.width, output.height)});
    if (monitors.isEmpty())
        EnumDisplayMonitors(nullptr, nullptr, collectMonitor, reinterpret_cast<LPARAM>(&monitors));
    return monitors;
}

QList<CaptureWindow> listCaptureWindows()
{
    QList<CaptureWindow> windows;
    for (const win::TopLevelWindow &window : win::listTopLevelWindows())
        windows.append({window.handle, QString::fromStdWString(window.title)});
    return windows;
}

std::optional<QSize> captureWindowSize(quint64 handle)
{
    return clientSize(handle);
}

GrabInput grabInputFor(const SourceAddress &address, int framesPerSecond)
{
    GrabInput grab;
    grab.options << std::pair{QByteArray("framerate"), QByteArray::number(framesPerSecond)};
    grab.options << std::pair{QByteArray("draw_mouse"),
                              QByteArray(address.drawsCursor() ? "1" : "0")};
    if (address.kind() == SourceKind::WindowCapture) {
        const quint64 handle = address.window();
        const std::optional<QSize> size = handle ? clientSize(handle) : std::nullopt;
        wchar_t title[385] = {};
        const int length = size ? GetWindowTextW(toWindow(handle), title, 385) : 0;
        if (!size || size->isEmpty() || length <= 0) {
            grab.error = SourceError::CaptureWindowInvalid;
            return grab;
        }
        // gdigrab finds a window by its title only: the first window of that title.
        grab.window = handle;
        grab.size = *size;
        grab.url = "title=" + QString::fromWCharArray(title, length).toUtf8();
        return grab;
    }
    const int index = address.monitor();
    const QList<CaptureMonitor> monitors = listCaptureMonitors();
    if (index < 0 || index >= monitors.size()) {
        grab.error =
            monitors.isEmpty() ? SourceError::CaptureNoDisplay : SourceError::CaptureMonitorInvalid;
        return grab;
    }
    // gdigrab's offsets are desktop coordinates, negative for a monitor left of the main one.
    const QRect area = monitors[index].geometry;
    grab.url = "desktop";
    grab.size = area.size();
    grab.options << std::pair{QByteArray("offset_x"), QByteArray::number(area.x())};
    grab.options << std::pair{QByteArray("offset_y"), QByteArray::number(area.y())};
    grab.options << std::pair{
        QByteArray("video_size"),
        QStringLiteral("%1x%2").arg(area.width()).arg(area.height()).toLatin1()};
    return grab;
}

struct WindowSizeWatch::Connection
{
};

WindowSizeWatch::WindowSizeWatch(quint64 window) : m_window(window) {}
WindowSizeWatch::~WindowSizeWatch() = default;

std::optional<QSize> WindowSizeWatch::size()
{
    return clientSize(m_window);
}

} // namespace selvane

#endif

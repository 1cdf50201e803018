#pragma once

// Monitors and top-level windows of the X11 display (or of the Windows desktop), and how a
// display or window capture address opens as an "x11grab" (or "gdigrab") input.
//
// "desktop://capture?monitor=N" grabs monitor N's rectangle (monitors in the server's RandR
// order; the whole screen when RandR lists none). "wgc://capture?hwnd=0x…" grabs one X11
// window by its id. Both take "cursor=0" to leave the mouse pointer out. The display is the one
// DISPLAY names; without one (a Wayland session without XWayland) nothing is listed and
// captures fail with CaptureNoDisplay. On Windows the monitors are DXGI's outputs (user32's
// when DXGI lists none), the windows user32's; gdigrab grabs a monitor's rectangle of the
// desktop, and a window by its title ("title=…", the first window of that title), which is
// what the system's own capture (see NativeCaptureRun) falls back to.
//
// Free functions; any thread. Each call opens its own short connection to the display.

#include "input/SourceAddress.h"
#include "input/SourceError.h"

#include <QByteArray>
#include <QImage>
#include <QList>
#include <QRect>
#include <QSize>
#include <QString>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace selvane {

struct CaptureMonitor
{
    int index = 0;
    QString name; // the output's name ("HDMI-1"), or "screen"
    QRect geometry;
};

struct CaptureWindow
{
    quint64 handle = 0;
    QString title;
};

// The list label of a window: its title, two spaces and its handle in hexadecimal.
QString captureWindowLabel(const CaptureWindow &window);

// False when there is no X11 display to capture from.
bool hasCaptureDisplay();
QList<CaptureMonitor> listCaptureMonitors();
// Top-level windows an operator would pick: viewable, not minimised, not owned by another
// window (dialogs, tool windows), not override-redirect (menus, tips), with a title.
QList<CaptureWindow> listCaptureWindows();
// The size of a window, or nothing when it is gone.
std::optional<QSize> captureWindowSize(quint64 handle);

// What a display or window capture address opens: the x11grab input name and its options.
struct GrabInput
{
    SourceError error = SourceError::None;
    QByteArray url;
    QList<std::pair<QByteArray, QByteArray>> options;
    quint64 window = 0; // the window grabbed, 0 for a display
    QSize size;
};
GrabInput grabInputFor(const SourceAddress &address, int framesPerSecond = 30);
// The FFmpeg input device that opens a GrabInput: "x11grab", or "gdigrab" on Windows.
const char *grabFormatName();

// Connecting to the display is not thread-safe (libXau keeps a static buffer): every
// connection of ours, and every opening of an x11grab input, holds this lock while it connects.
std::unique_lock<std::mutex> lockDisplayConnect();

// A window's size, asked again and again over one connection (the watch of a window capture).
class WindowSizeWatch
{
public:
    explicit WindowSizeWatch(quint64 window);
    ~WindowSizeWatch();
    WindowSizeWatch(const WindowSizeWatch &) = delete;
    WindowSizeWatch &operator=(const WindowSizeWatch &) = delete;
    // Nothing when the window is gone (or there is no display).
    std::optional<QSize> size();

private:
    struct Connection;
    std::unique_ptr<Connection> m_connection;
    quint64 m_window = 0;
};

// One picture of a display or window capture address, fitted into `fit` (null when it cannot
// be grabbed). Blocks for one grab (tens of milliseconds): never on the window thread.
QImage grabStill(const SourceAddress &address, QSize fit);

} // namespace selvane

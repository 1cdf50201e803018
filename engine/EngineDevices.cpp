// The system's capture devices, displays and windows as the engine offers them to the faces, and
// the address check, on behalf of Engine's static interface.

#include "engine/Engine.h"
#include "engine/SourceChecks.h"
#include "input/CaptureDevices.h"
#include "input/ScreenCapture.h"

namespace selvane {

namespace {

QList<CaptureDevice> toCaptureDevices(const QList<ListedDevice> &listed)
{
    QList<CaptureDevice> devices;
    for (const ListedDevice &d : listed)
        devices << CaptureDevice{d.name, d.deviceId};
    return devices;
}

} // namespace

QList<CaptureDevice> Engine::cameras()
{
    return toCaptureDevices(listCameras());
}

QList<CaptureDevice> Engine::microphones()
{
    return toCaptureDevices(listMicrophones());
}

bool Engine::hasCaptureDisplay()
{
    return selvane::hasCaptureDisplay();
}

QList<CaptureTarget> Engine::displays()
{
    QList<CaptureTarget> targets;
    for (const CaptureMonitor &monitor : listCaptureMonitors()) {
        CaptureTarget target;
        target.address = QStringLiteral("desktop://capture?monitor=%1").arg(monitor.index);
        target.name = monitor.name;
        target.geometry = monitor.geometry;
        targets << target;
    }
    return targets;
}

QList<CaptureTarget> Engine::windows()
{
    QList<CaptureTarget> targets;
    for (const CaptureWindow &window : listCaptureWindows()) {
        CaptureTarget target;
        target.address = QStringLiteral("wgc://capture?hwnd=0x%1").arg(window.handle, 0, 16);
        target.name = window.title;
        target.label = captureWindowLabel(window);
        target.window = window.handle;
        targets << target;
    }
    return targets;
}

QImage Engine::captureStill(const QString &address, QSize fit)
{
    return grabStill(address, fit);
}

Problem Engine::checkSourceAddress(const QString &typed)
{
    return selvane::checkSourceAddress(typed);
}

} // namespace selvane

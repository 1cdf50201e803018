// The system's capture devices, displays, windows and speakers as the faces list them, and the
// check of a typed address.

#include "engine/CaptureSources.h"

#include "engine/SourceChecks.h"
#include "input/CaptureDevices.h"
#include "input/ScreenCapture.h"

#include <QAudioDevice>
#include <QMediaDevices>

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

QList<CaptureDevice> CaptureSources::cameras()
{
    return toCaptureDevices(listCameras());
}

QList<CaptureDevice> CaptureSources::microphones()
{
    return toCaptureDevices(listMicrophones());
}

bool CaptureSources::hasCaptureDisplay()
{
    return selvane::hasCaptureDisplay();
}

QList<CaptureTarget> CaptureSources::displays()
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

QList<CaptureTarget> CaptureSources::windows()
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

QImage CaptureSources::captureStill(const QString &address, QSize fit)
{
    return grabStill(SourceAddress(address), fit);
}

Problem CaptureSources::checkAddress(const QString &typed)
{
    return selvane::checkSourceAddress(SourceAddress(typed));
}

QList<AudioOutputDevice> CaptureSources::audioOutputs()
{
    QList<AudioOutputDevice> devices;
    const QAudioDevice preferred = QMediaDevices::defaultAudioOutput();
    for (const QAudioDevice &device : QMediaDevices::audioOutputs())
        devices << AudioOutputDevice{device.id(), device.description(), device == preferred};
    return devices;
}

} // namespace selvane

#pragma once

// The cameras and microphones the system offers, as libavdevice lists them: V4L2 video devices
// and PulseAudio sources on Linux, DirectShow devices on Windows. Each entry carries the
// friendly name that capture addresses use and the device the system opens. Any thread; each
// call asks the system anew (a few milliseconds; no PulseAudio server means no microphones).

#include <QList>
#include <QString>

namespace selvane {

struct ListedDevice
{
    QString name;     // the friendly description, or the device name when there is none
    QString deviceId; // what the input device opens
};

QList<ListedDevice> listCameras();
QList<ListedDevice> listMicrophones();

} // namespace selvane

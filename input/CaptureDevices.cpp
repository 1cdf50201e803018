#include "input/CaptureDevices.h"

#include <mutex>

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/dict.h>
}

namespace selvane {

namespace {

QList<ListedDevice> listSources(const char *formatName)
{
    static std::once_flag registered;
    std::call_once(registered, [] { avdevice_register_all(); });
    QList<ListedDevice> devices;
    const AVInputFormat *format = av_find_input_format(formatName);
    if (!format)
        return devices;
    AVDeviceInfoList *list = nullptr;
    if (avdevice_list_input_sources(format, nullptr, nullptr, &list) >= 0 && list) {
        for (int i = 0; i < list->nb_devices; ++i) {
            const AVDeviceInfo *info = list->devices[i];
            ListedDevice device;
            device.deviceId = QString::fromUtf8(info->device_name);
            device.name = QString::fromUtf8(info->device_description).trimmed();
            if (device.name.isEmpty())
                device.name = device.deviceId;
            if (!device.deviceId.isEmpty())
                devices << device;
        }
    }
    avdevice_free_list_devices(&list);
    return devices;
}

} // namespace

QList<ListedDevice> listCameras()
{
#ifdef _WIN32
    return listSources("dshow");
#else
    return listSources("v4l2");
#endif
}

QList<ListedDevice> listMicrophones()
{
#ifdef _WIN32
    return listSources("dshow");
#else
    // Monitor sources are what a sink plays; a remapped one is a microphone like any other.
    QList<ListedDevice> sources = listSources("pulse");
    sources.removeIf([](const ListedDevice &d) { return d.deviceId.endsWith(".monitor"); });
    return sources;
#endif
}

} // namespace selvane

// The speaker outputs the preview can play on, and the operator's choice among them.

#include "audio/PreviewAudioMixer.h"
#include "engine/Engine.h"

#include <QAudioDevice>
#include <QMediaDevices>

namespace selvane {

QList<AudioOutputDevice> Engine::audioOutputDevices()
{
    QList<AudioOutputDevice> devices;
    const QAudioDevice preferred = QMediaDevices::defaultAudioOutput();
    for (const QAudioDevice &device : QMediaDevices::audioOutputs())
        devices << AudioOutputDevice{device.id(), device.description(), device == preferred};
    return devices;
}

void Engine::setPreviewAudioDevice(const QByteArray &id)
{
    m_previewDevice = id;
    if (m_mixer)
        QMetaObject::invokeMethod(m_mixer, "setOutputDevice", Qt::QueuedConnection,
                                  Q_ARG(QByteArray, id));
}

} // namespace selvane

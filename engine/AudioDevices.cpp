// The operator's choice of the speaker output the preview plays on.

#include "audio/PreviewAudioMixer.h"
#include "engine/Engine.h"

namespace selvane {

void Engine::setPreviewAudioDevice(const QByteArray &id)
{
    m_previewDevice = id;
    if (m_mixer)
        QMetaObject::invokeMethod(m_mixer, "setOutputDevice", Qt::QueuedConnection,
                                  Q_ARG(QByteArray, id));
}

} // namespace selvane

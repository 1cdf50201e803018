// The engine's sound: the audio thread with the preview and the program bus, and the volumes
// of channels, overlay videos and the program.

#include "audio/PreviewAudioMixer.h"
#include "engine/ChannelSet.h"
#include "engine/Engine.h"
#include "engine/OutputSession.h"
#include "engine/OverlaySlots.h"

#include <QThread>

namespace selvane {

void Engine::startAudio()
{
    if (!m_audioThread || m_audioThread->isRunning())
        return;
    m_audioThread->start();
    QMetaObject::invokeMethod(m_mixer, "start", Qt::QueuedConnection);
}

void Engine::shutdownAudio()
{
    if (!m_audioThread)
        return;
    if (m_output)
        m_output->setMixer(nullptr);
    m_mixer->setProgramTap(nullptr);
    if (m_audioThread->isRunning()) {
        // The sink is closed inside the thread's event loop, and only then does the loop end:
        // a quit posted beside the cleanup could end the loop first, and the sink would then be
        // destroyed while the thread winds down, which crashed now and then.
        QMetaObject::invokeMethod(m_mixer, "cleanup", Qt::QueuedConnection);
        QMetaObject::invokeMethod(
            m_mixer, [thread = m_audioThread] { thread->quit(); }, Qt::QueuedConnection);
        if (!m_audioThread->wait(2000)) {
            qWarning("Preview audio thread shutdown exceeded 2 seconds");
            m_audioThread->requestInterruption();
            m_audioThread->quit();
            m_audioThread->wait(1000);
        }
    } else {
        qInfo("Preview audio thread already stopped before mixer cleanup");
        m_mixer->cleanup();
        delete m_mixer; // it never ran, so its thread will not delete it
    }
    m_mixer = nullptr;
    m_audioThread->quit();
    if (!m_audioThread->wait(3000)) {
        qWarning("Preview audio thread did not stop before window destruction");
        m_audioThread->setParent(nullptr);
        connect(m_audioThread, &QThread::finished, m_audioThread, &QObject::deleteLater);
    } else {
        delete m_audioThread;
    }
    m_audioThread = nullptr;
}

void Engine::setChannelVolume(int channel, float volume)
{
    if (!ChannelSet::isChannel(channel))
        return;
    m_channelVolumes[std::size_t(channel)] = volume;
    if (m_mixer)
        m_mixer->setChannelVolume(channel, m_channelMuted[std::size_t(channel)] ? 0.0f : volume);
}

void Engine::setChannelMuted(int channel, bool muted)
{
    if (!ChannelSet::isChannel(channel))
        return;
    m_channelMuted[std::size_t(channel)] = muted;
    setChannelVolume(channel, m_channelVolumes[std::size_t(channel)]);
}

void Engine::setProgramVolume(float volume)
{
    m_programVolume = volume;
    if (m_mixer)
        m_mixer->setProgramVolume(m_programMuted ? 0.0f : volume);
}

void Engine::setProgramMuted(bool muted)
{
    m_programMuted = muted;
    setProgramVolume(m_programVolume);
}

void Engine::setProgramGain(float gain)
{
    if (m_mixer)
        m_mixer->setProgramGain(gain);
}

void Engine::setOverlayVolume(int mediaId, float previewVolume, float programVolume)
{
    OverlayAudio &audio = m_overlayAudio[mediaId];
    audio.preview = previewVolume;
    audio.program = programVolume;
    applyOverlayAudio(mediaId);
}

void Engine::setOverlayOnProgram(int mediaId, bool onProgram)
{
    m_overlayAudio[mediaId].onProgram = onProgram;
    applyOverlayAudio(mediaId);
}

void Engine::setOverlayMuted(int mediaId, bool muted)
{
    m_overlayAudio[mediaId].muted = muted;
    applyOverlayAudio(mediaId);
}

void Engine::applyOverlayAudio(int mediaId)
{
    const int slot = m_overlaySlots->slotOf(mediaId);
    if (slot < 0 || !m_mixer)
        return;
    const OverlayAudio audio = m_overlayAudio.value(mediaId);
    m_mixer->setOverlayPreviewVolume(slot, audio.muted ? 0.0f : audio.preview);
    m_mixer->setOverlayProgramVolume(slot, audio.muted ? 0.0f : audio.program);
    m_mixer->setOverlayOnProgram(slot, audio.onProgram);
}

// ---- outputs ----

} // namespace selvane

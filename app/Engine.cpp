#include "app/Engine.h"

#include "audio/PreviewAudioMixer.h"
#include "compose/FramePipeline.h"
#include "compose/FrameToken.h"
#include "compose/OverlayManager.h"
#include "compose/TextOverlayData.h"

#include <QDebug>
#include <QImage>
#include <QThread>

Engine::Engine(QObject *parent) : QObject(parent)
{
    m_overlays = new OverlayManager(this);
    m_pipeline = new FramePipeline(this);
    m_pipeline->setOverlayManager(m_overlays);
    m_mixer = new PreviewAudioMixer(m_pipeline);
    m_pipeline->setPreviewAudioMixerForOutput(m_mixer);
    m_audioThread = new QThread(this);
    m_audioThread->setObjectName("PreviewAudio");
    m_mixer->moveToThread(m_audioThread);
    connect(m_audioThread, &QThread::finished, m_mixer, &QObject::deleteLater);
}

Engine::~Engine()
{
    shutdownAudio();
    // The pipeline stops its decoders and outputs before the registry they report into goes.
    delete m_pipeline;
    m_pipeline = nullptr;
}

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
    if (m_pipeline)
        m_pipeline->setPreviewAudioMixerForOutput(nullptr);
    if (m_audioThread->isRunning()) {
        QMetaObject::invokeMethod(m_mixer, "cleanup", Qt::QueuedConnection);
        m_audioThread->quit();
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

void registerEngineMetaTypes()
{
    qRegisterMetaType<FrameTokenPtr>("FrameTokenPtr");
    qRegisterMetaType<QImage>("QImage");
    registerTextOverlayMetaType();
}

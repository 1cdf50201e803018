#include "app/Engine.h"

#include "compose/FramePipeline.h"
#include "compose/FrameToken.h"
#include "compose/OverlayManager.h"

#include <QImage>

Engine::Engine(QObject *parent) : QObject(parent)
{
    m_overlays = new OverlayManager(this);
    m_pipeline = new FramePipeline(this);
    m_pipeline->setOverlayManager(m_overlays);
}

Engine::~Engine()
{
    // The pipeline stops its decoders before the overlay registry they report into goes away.
    delete m_pipeline;
    m_pipeline = nullptr;
}

void registerEngineMetaTypes()
{
    qRegisterMetaType<FrameTokenPtr>("FrameTokenPtr");
    qRegisterMetaType<QImage>("QImage");
}

#pragma once

// The engine facade both faces drive: it owns the overlay registry and the frame pipeline (and,
// as they arrive, the audio mixer and the schedule runner) and wires them together. Lives on the
// GUI thread.

#include <QObject>

class FramePipeline;
class OverlayManager;

class Engine : public QObject
{
    Q_OBJECT

public:
    explicit Engine(QObject *parent = nullptr);
    ~Engine() override;

    FramePipeline *pipeline() const { return m_pipeline; }
    OverlayManager *overlays() const { return m_overlays; }

private:
    OverlayManager *m_overlays = nullptr;
    FramePipeline *m_pipeline = nullptr;
};

// Meta types that cross threads in queued signals; called once before any engine object exists.
void registerEngineMetaTypes();

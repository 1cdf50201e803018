#pragma once

// The engine facade both faces drive: it owns the overlay registry, the frame pipeline and the
// preview audio mixer (on a thread of its own) and wires them together. Lives on the GUI thread.

#include <QObject>

class FramePipeline;
class OverlayManager;
class PreviewAudioMixer;
class QThread;

class Engine : public QObject
{
    Q_OBJECT

public:
    explicit Engine(QObject *parent = nullptr);
    ~Engine() override;

    FramePipeline *pipeline() const { return m_pipeline; }
    OverlayManager *overlays() const { return m_overlays; }
    // Lives on the audio thread: call its setters (atomic stores) from anywhere, the rest there.
    PreviewAudioMixer *mixer() const { return m_mixer; }

    // Starts the audio thread and the mixer on it (preview device and program bus).
    void startAudio();
    // Stops the mixer and its thread within fixed time limits; never blocks longer than about
    // six seconds, and never forever.
    void shutdownAudio();

private:
    OverlayManager *m_overlays = nullptr;
    FramePipeline *m_pipeline = nullptr;
    PreviewAudioMixer *m_mixer = nullptr;
    QThread *m_audioThread = nullptr;
};

// Meta types that cross threads in queued signals; called once before any engine object exists.
void registerEngineMetaTypes();

#pragma once

// One run of the outputs: the output router (encoder, recording, stream targets) fed by the
// program switcher's frames and the mixer's program bus, both stamped by the program clock.
// Starting probes the encoder and the recording folder and stopping writes trailers; both can
// take a while, so they run on a pool thread and report back with signals. Program frames are
// stamped with their tick's program time minus the tick the outputs started on, the program
// sound likewise: both run on one clock.
//
// While the outputs run it forecasts, once a second, how long each recording's disk lasts at the
// bitrate it is written at, and warns at 10 and 2 minutes left (diskForecastChanged).
//
// Threads: the session lives on the GUI thread; every method is called there and every signal
// is emitted there. The router's callbacks arrive from its workers and are posted here.

#include "engine/DiskForecast.h"
#include "engine/EngineTypes.h"
#include "engine/Problem.h"

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <memory>

class OutputRouter;
class PreviewAudioMixer;

namespace selvane {

class ProgramSwitcher;

class OutputSession : public QObject
{
    Q_OBJECT

public:
    explicit OutputSession(ProgramSwitcher &switcher, QObject *parent = nullptr);
    ~OutputSession() override;

    void setMixer(PreviewAudioMixer *mixer) { m_mixer = mixer; }

    // Starts the outputs at `size`; false when they run, start or stop already.
    bool start(const EncoderSettings &settings, QSize size);
    // Stops them; trailers are written before stopped() is emitted.
    void stop();
    // Blocks until a stop under way has finished (shutdown only).
    void waitForStop();

    bool isActive() const { return m_state != State::Idle; }
    bool isRunning() const { return m_state == State::Running; }
    bool isStopping() const { return m_state == State::Stopping; }
    // How many pictures the encode queue may hold while the outputs run.
    int queueDepth() const;
    OutputStats stats() const;
    // Stream target `index` tries again at once if it is waiting to reconnect.
    bool reconnectTargetNow(int index);

signals:
    void started(QSize size);
    void failed(selvane::Problem problem);
    void stopped();
    void streamStatusChanged(int index, QString status);
    // The disk of the recording (or of its twin) has about 10 or 2 minutes left at the current
    // bitrate, or room again (level 0).
    void diskForecastChanged(bool twin, int level, qint64 secondsLeft, QString path);

private:
    enum class State
    {
        Idle,
        Starting,
        Running,
        Stopping,
    };

    void onStarted(std::shared_ptr<OutputRouter> router, bool ok);
    void onRouterFailure();
    void finishStop();
    // Once a second while running: the time left on each recording's disk.
    void forecastDisks();

    ProgramSwitcher &m_switcher;
    qint64 m_startUs = 0; // the program time the outputs started at
    PreviewAudioMixer *m_mixer = nullptr;
    State m_state = State::Idle;
    bool m_stopAfterStart = false;
    std::shared_ptr<OutputRouter> m_router;
    EncoderSettings m_settings;
    QSize m_size;
    QStringList m_status;
    QElapsedTimer m_elapsed;
    class QTimer *m_forecastTimer = nullptr;
    DiskForecast m_fileForecast;
    DiskForecast m_twinForecast;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace selvane

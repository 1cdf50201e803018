#pragma once

// One run of the outputs: an output router (encoder, recording, stream targets) for each
// encode the run needs (OutputPlan: one per profile in use, one per channel recorded on its
// own), fed by the program switcher's frames (or the multiview made from them, or a channel's
// own pictures) and the mixer's program bus (or a channel's own sound), all stamped by the
// program clock. Starting probes every encoder and the recording folders and stopping writes
// trailers; both can take a while, so they run on a pool thread and report back with signals.
// Program frames are stamped with their tick's program time minus the tick the outputs started
// on, the sound likewise: every file and stream of the run starts on the same tick, and every
// recording carries the same timecode origin.
//
// An encode none of whose outputs opens leaves the others running (its targets read
// "stopped"); the run fails as a whole only when no encode has anything to write to.
//
// While the outputs run it forecasts, once a second, how long each recording's disk lasts at the
// bitrate it is written at, and warns at 10 and 2 minutes left (diskForecastChanged).
//
// Threads: the session lives on the GUI thread; every method is called there and every signal
// is emitted there. The routers' callbacks arrive from their workers and are posted here.

#include "engine/DiskForecast.h"
#include "engine/EngineTypes.h"
#include "engine/OutputPlan.h"
#include "engine/Problem.h"

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <array>
#include <atomic>
#include <limits>
#include <memory>
#include <vector>

class OutputRouter;
class PreviewAudioMixer;

namespace selvane {

class MultiviewFeed;
class ProgramSwitcher;

class OutputSession : public QObject
{
    Q_OBJECT

public:
    explicit OutputSession(ProgramSwitcher &switcher, QObject *parent = nullptr);
    ~OutputSession() override;

    void setMixer(PreviewAudioMixer *mixer) { m_mixer = mixer; }
    // What a multiview shows under each channel, and the channel on preview (its tally).
    void setChannelLabels(const std::array<QString, kChannelCount> &labels);
    void setPreviewChannel(int channel);

    // Starts the outputs with the program at `size`; false when they run, start or stop
    // already. They begin at the first tick of the program at or after `beginUs` (program
    // time), or at the first tick after they have opened when that is later: a start opened
    // ahead lands on its frame.
    bool start(const EncoderSettings &settings, QSize size, qint64 beginUs = -1);
    // The outputs take no picture nor sound from the first tick at or after `programUs` on;
    // stop() closes them (a stop set ahead lands on its frame). Running only.
    void endAt(qint64 programUs);
    // The program time of the outputs' first picture; 0 until they run.
    qint64 startUs() const { return m_span->startUs.load(); }
    // Stops them; trailers are written before stopped() is emitted.
    void stop();
    // Blocks until a stop under way has finished (shutdown only).
    void waitForStop();

    bool isActive() const { return m_state != State::Idle; }
    bool isRunning() const { return m_state == State::Running; }
    bool isStopping() const { return m_state == State::Stopping; }
    // How many pictures the encode queues may hold between them while the outputs run.
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

    struct Encode
    {
        PlannedEncode plan;
        std::shared_ptr<OutputRouter> router;
        bool failed = false;
    };

    void onStarted(bool ok);
    void onRouterFailure(std::size_t encode);
    void connectSources();
    void disconnectSources();
    void finishStop();
    // Once a second while running: the time left on each recording's disk.
    void forecastDisks();
    // The encode that writes the program recording, or the first one (null when none).
    const Encode *primary() const;

    // The first tick after `us` (program time) on the program's grid of ticks.
    qint64 tickAtOrAfter(qint64 us) const;

    // What the program's frames and sound are cut to: [startUs, endUs) in program time. Shared
    // with the program thread and the audio thread, which read it for every frame and chunk.
    struct Span
    {
        std::atomic<qint64> startUs{0};
        std::atomic<qint64> endUs{std::numeric_limits<qint64>::max()};
    };

    ProgramSwitcher &m_switcher;
    std::shared_ptr<Span> m_span = std::make_shared<Span>();
    qint64 m_beginUs = -1; // asked for by start()
    PreviewAudioMixer *m_mixer = nullptr;
    State m_state = State::Idle;
    bool m_stopAfterStart = false;
    std::vector<Encode> m_encodes;
    std::shared_ptr<MultiviewFeed> m_multiview;
    std::array<QString, kChannelCount> m_labels;
    int m_previewChannel = -1;
    EncoderSettings m_settings;
    QSize m_size;
    QStringList m_status;
    QElapsedTimer m_elapsed;
    qint64 m_startedAtMs = 0; // wall clock of the first picture
    class QTimer *m_forecastTimer = nullptr;
    DiskForecast m_fileForecast;
    DiskForecast m_twinForecast;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

} // namespace selvane

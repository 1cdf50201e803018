#include "schedule/ScheduleRunner.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHash>
#include <QTimer>
#include <algorithm>

ScheduleClock::ScheduleClock(ElapsedMs elapsed) : m_elapsed(std::move(elapsed))
{
    if (!m_elapsed) {
        auto timer = std::make_shared<QElapsedTimer>();
        timer->start();
        m_elapsed = [timer] {
            return timer->elapsed();
        };
    }
}

void ScheduleClock::start(qint64 ms)
{
    set(ms);
    m_running = true;
    m_lastReading = m_elapsed();
}

void ScheduleClock::tick()
{
    if (!m_running)
        return;
    const qint64 now = m_elapsed();
    const qint64 step = now - m_lastReading;
    m_lastReading = now;
    if (step >= 1 && step <= kMaxTickGapMs)
        m_ms += step;
}

qint64 ScheduleClock::msNow() const
{
    if (!m_running)
        return m_ms;
    const qint64 step = m_elapsed() - m_lastReading;
    return step >= 1 && step <= kMaxTickGapMs ? m_ms + step : m_ms;
}

ScheduleRunner::ScheduleRunner(ProgramControl *control, QObject *parent)
    : QObject(parent), m_control(control)
{
    m_timer = new QTimer(this);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, [this] {
        // A playing video drives the clock by its position; the timer drives it otherwise (and
        // again once the video stops reporting).
        const SceneClip *base = currentBase();
        if (base && base->kind == SceneClip::SceneVideo && m_sinceMediaDrive.isValid() &&
            m_sinceMediaDrive.elapsed() < kMediaDriveTimeoutMs) {
            armTimer();
            return;
        }
        tick();
        armTimer();
    });
    // The timer runs while a schedule does: a stopped clock would take nothing from its ticks.
}

ScheduleRunner::~ScheduleRunner() = default;

const SceneClip *ScheduleRunner::currentBase() const
{
    if (!m_running || m_currentBase < 0)
        return nullptr;
    return &m_arrangement.sceneClips.at(m_currentBase);
}

bool ScheduleRunner::start(const ProgramArrangement &arrangement, QString *error)
{
    if (arrangement.sceneClips.isEmpty()) {
        if (error)
            *error = QCoreApplication::translate("ProgramArrangement",
                                                 "Add at least one valid base clip.");
        return false;
    }
    stop();
    m_arrangement = arrangement;
    const auto byStart = [](const auto &a, const auto &b) {
        return a.startMs < b.startMs;
    };
    std::stable_sort(m_arrangement.sceneClips.begin(), m_arrangement.sceneClips.end(), byStart);
    std::stable_sort(m_arrangement.overlayClips.begin(), m_arrangement.overlayClips.end(), byStart);
    m_baseTimeline.build(m_arrangement.sceneClips);
    m_overlayTimeline.build(m_arrangement.overlayClips);
    QHash<QString, int> firstWithId;
    firstWithId.reserve(m_arrangement.sceneClips.size());
    m_baseKey.assign(std::size_t(m_arrangement.sceneClips.size()), -1);
    for (qsizetype place = 0; place < m_arrangement.sceneClips.size(); ++place) {
        const QString &id = m_arrangement.sceneClips.at(place).id;
        if (id.isEmpty())
            continue;
        auto first = firstWithId.constFind(id);
        if (first == firstWithId.cend())
            first = firstWithId.insert(id, int(place));
        m_baseKey[std::size_t(place)] = first.value();
    }
    m_baseCursor = m_prerollCursor = 0;
    m_running = true;
    emit programArrangementRunningChanged(true);
    m_clock.start(0);
    applyAt(0);
    armTimer();
    return true;
}

void ScheduleRunner::stop()
{
    if (!m_running)
        return;
    for (const QString &id : std::as_const(m_activeOverlays))
        m_control->removeOverlay(id);
    m_running = false;
    m_arrangement = ProgramArrangement{};
    m_baseTimeline = {};
    m_overlayTimeline = {};
    m_baseKey.clear();
    m_currentBaseId.clear();
    m_currentBase = -1;
    m_preparedId.clear();
    m_showingBlack = false;
    m_activeOverlays.clear();
    m_clock.stop();
    m_timer->stop();
    emit programArrangementRunningChanged(false);
}

void ScheduleRunner::armTimer()
{
    if (!m_running)
        return;
    const qint64 now = m_clock.ms();
    const qint64 next = m_baseTimeline.nextChangeAfter(now);
    m_timer->start(next < 0 ? kTickMs : int(std::clamp<qint64>(next - now, 1, kTickMs)));
}

void ScheduleRunner::tick()
{
    m_clock.tick();
    if (m_running)
        applyAt(m_clock.ms());
}

void ScheduleRunner::advanceBySlide(int slidesShown, qint64 intervalMs)
{
    const SceneClip *base = currentBase();
    if (!base || base->kind != SceneClip::ImagePlay)
        return;
    // Each slide puts the clock where that slide belongs: the slides' own interval paces the
    // schedule, and the timer's ticks in between are not counted twice.
    m_clock.start(base->startMs + slidesShown * intervalMs);
    applyAt(m_clock.ms());
}

void ScheduleRunner::resyncToBasePosition(qint64 positionUs)
{
    const SceneClip *base = currentBase();
    if (!base)
        return;
    // The video's position counts from the clip's start on the schedule.
    m_clock.start(base->startMs + positionUs / 1000);
    m_sinceMediaDrive.start();
    applyAt(m_clock.ms());
}

void ScheduleRunner::restartClock(qint64 ms)
{
    if (m_running)
        m_clock.start(ms);
}

void ScheduleRunner::applyAt(qint64 t)
{
    if (!m_running)
        return;
    const int winner = baseAt(t, m_baseCursor);
    if (winner < 0) {
        if (!m_showingBlack || !m_currentBaseId.isEmpty()) {
            m_currentBaseId.clear();
            m_currentBase = -1;
            m_showingBlack = true;
            m_control->showBlack();
            emit baseClipChanged(QString());
        }
    } else if (m_baseKey[std::size_t(winner)] != m_currentBase) {   // a clip of another id
        const SceneClip clip = m_arrangement.sceneClips.at(winner); // the control may call back
        m_currentBaseId = clip.id;
        m_currentBase = m_baseKey[std::size_t(winner)];
        m_sinceMediaDrive.start(); // the new clip's player gets its chance to report
        m_showingBlack = false;
        switch (clip.kind) {
        case SceneClip::ImagePlay:
            m_control->playImages(clip.paths, clip.intervalMs, clip.imageLoop);
            break;
        case SceneClip::SceneVideo:
            m_control->playVideo(clip.sceneVideoPath, clip.sceneVideoLoop);
            break;
        default:
            m_control->showChannel(clip.channel, clip.transition.value_or(m_defaultTransition));
            break;
        }
        emit baseClipChanged(clip.id);
    }
    if (!m_running)
        return; // stopped by the control
    // Open the next video clip ahead, unless a video clip is on air (they share a player).
    const SceneClip *current = currentBase();
    if (!current || current->kind != SceneClip::SceneVideo) {
        const int place = baseAt(t + kPrerollMs, m_prerollCursor);
        const SceneClip *next = place < 0 ? nullptr : &m_arrangement.sceneClips.at(place);
        if (next && next->kind == SceneClip::SceneVideo && next->id != m_currentBaseId &&
            next->id != m_preparedId) {
            m_preparedId = next->id;
            const SceneClip clip = *next;
            m_control->prepareVideo(clip.sceneVideoPath, clip.sceneVideoLoop);
        }
    }
    applyOverlaysAt(t);
}

void ScheduleRunner::applyOverlaysAt(qint64 t)
{
    // The overlays on air are those on where the timeline is: only the clips that start or end
    // between there and `t` can change.
    std::vector<int> places;
    m_overlayTimeline.moveTo(t, places);
    for (const int place : places) {
        if (!m_running)
            return; // stopped by the control
        const OverlayClip &clip = m_arrangement.overlayClips.at(place);
        const bool active = selvane::schedule::OverlayTimeline::isOn(clip, t);
        const bool shown = m_activeOverlays.contains(clip.id);
        if (active && !shown) {
            m_activeOverlays.insert(clip.id);
            if (clip.kind == OverlayClip::Text)
                m_control->showTextOverlay(clip.id, clip.textData);
            else
                m_control->showMediaOverlay(clip.id, clip.kind, clip.path,
                                            QRectF(clip.x, clip.y, clip.w, clip.h), clip.opacity);
        } else if (!active && shown) {
            m_activeOverlays.remove(clip.id);
            m_control->removeOverlay(clip.id);
        }
    }
}

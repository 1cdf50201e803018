// The engine's production controls: the preview bus, takes with a transition, the T-bar and
// fade to black. The pictures and sound of a transition are made on the program and audio
// threads from the feeds' bus; here the operator's requests become the bus's switches.

#include "engine/ChannelSet.h"
#include "engine/Engine.h"
#include "engine/OutputSession.h"
#include "engine/ProgramSwitcher.h"
#include "engine/SlideShow.h"
#include "engine/StingerCache.h"
#include "media/TransitionWords.h"
#include "schedule/ScheduleRunner.h"

#include <QDebug>
#include <algorithm>

namespace selvane {

void Engine::setPreviewChannel(int channel)
{
    const int preview = ChannelSet::isChannel(channel) ? channel : -1;
    if (preview == m_previewChannel)
        return;
    if (m_tbar > 0.0) {
        // The bar was riding towards the old preview: that transition is cancelled.
        m_switcher->holdTransition(m_previewChannel, m_transition, 0.0);
        m_tbar = 0.0;
        emit tbarChanged(0.0);
    }
    m_previewChannel = preview;
    m_output->setPreviewChannel(preview);
    m_switcher->setFullRateChannel(preview); // the preview monitor moves at the program's rate
    emit previewChannelChanged(preview);
}

void Engine::setUpStingers()
{
    m_stingers = new StingerCache(this);
    connect(m_stingers, &StingerCache::loaded, this,
            [this](const QString &file, int cutMs, const StingerClipPtr &clip) {
                emit stingerLoaded(file, cutMs, clip->durationMs());
            });
    connect(m_stingers, &StingerCache::failed, this, &Engine::stingerFailed);
}

void Engine::prepareStingers(const ProgramArrangement &arrangement)
{
    for (const SceneClip &clip : arrangement.sceneClips)
        if (clip.transition && clip.transition->kind == TransitionKind::Stinger)
            m_stingers->prepare(clip.transition->stingerFile, clip.transition->cutMs);
}

StingerInfo Engine::stingerInfo(const QString &file, int cutMs) const
{
    StingerInfo info;
    switch (m_stingers->state(file, cutMs)) {
    case StingerCache::State::Absent:
        return info;
    case StingerCache::State::Loading:
        info.state = QStringLiteral("loading");
        return info;
    case StingerCache::State::Failed:
        info.state = QStringLiteral("failed");
        info.failure = m_stingers->failure(file, cutMs);
        return info;
    case StingerCache::State::Ready:
        break;
    }
    const StingerClipPtr clip = m_stingers->clip(file, cutMs);
    info.state = QStringLiteral("ready");
    info.durationMs = clip->durationMs();
    info.cutMs = int(clip->cutUs / 1000);
    info.hasAlpha = clip->hasAlpha;
    return info;
}

Transition Engine::withStinger(Transition transition, TransitionKind fallback) const
{
    if (transition.kind != TransitionKind::Stinger)
        return transition;
    transition.stinger = m_stingers->clip(transition.stingerFile, transition.cutMs);
    if (transition.stinger) {
        transition.durationMs = std::max(Transition::kMinMs, transition.stinger->durationMs());
        return transition;
    }
    qWarning("Stinger %s is not ready (%s): %s instead", qPrintable(transition.stingerFile),
             qPrintable(stingerInfo(transition.stingerFile, transition.cutMs).state),
             qPrintable(transitions::kindWord(fallback)));
    m_stingers->prepare(transition.stingerFile, transition.cutMs);
    transition.kind = fallback;
    return transition;
}

void Engine::setTransition(Transition transition)
{
    transition.durationMs =
        std::clamp(transition.durationMs, Transition::kMinMs, Transition::kMaxMs);
    transition.stinger.reset();
    if (transition.kind == TransitionKind::Stinger)
        m_stingers->prepare(transition.stingerFile, transition.cutMs);
    if (transition == m_transition)
        return;
    m_transition = transition;
    updateFailoverTransition();
    emit transitionChanged(transition);
}

void Engine::setDirectTakesUseTransition(bool use)
{
    m_directTakesUseTransition = use;
}

int Engine::transitionTarget() const
{
    return m_feeds.bus().target();
}

void Engine::take()
{
    finishRunningTake();
    if (m_previewChannel >= 0)
        goToAir(m_previewChannel, m_transition, true);
}

void Engine::cutToPreview()
{
    finishRunningTake();
    if (m_previewChannel >= 0)
        goToAir(m_previewChannel, Transition{}, true);
}

void Engine::transitionTo(int channel, const Transition &transition)
{
    if (!ChannelSet::isChannel(channel))
        return;
    finishRunningTake();
    goToAir(channel, transition, channel == m_previewChannel);
}

void Engine::finishRunningTake()
{
    // A take is never left half done: the next switch finishes it at once (the bus does so
    // for the pictures and sound), and its swap of preview and program happens now.
    if (m_awaitedChannel < 0 || transitionTarget() != m_awaitedChannel)
        return;
    const int channel = m_awaitedChannel;
    m_awaitedChannel = -1;
    ++m_transitionsDone;
    if (m_swapOnFinish != kNoSwap && channel == m_previewChannel)
        setPreviewChannel(m_swapOnFinish);
    m_swapOnFinish = kNoSwap;
}

void Engine::goToAir(int channel, const Transition &wanted, bool swap)
{
    const Transition transition = withStinger(wanted, TransitionKind::Cut);
    const int running = transitionTarget();
    const int former = running >= 0 ? running : programChannel();
    if (m_tbar > 0.0) {
        // A take while the bar is up runs the held transition on from there.
        m_tbar = 0.0;
        emit tbarChanged(0.0);
    }
    m_slides->stop();
    if (!transition.timed() || channel == former) {
        m_swapOnFinish = kNoSwap;
        m_switcher->cutTo(channel);
        updateProgramSize();
        noteProgramChannel();
        if (swap && former != channel)
            setPreviewChannel(former);
        return;
    }
    m_swapOnFinish = swap ? former : kNoSwap;
    m_awaitedChannel = channel;
    m_switcher->transitionTo(channel, transition);
    qInfo("Transition: %s of %d ms to channel %d",
          qPrintable(transitions::kindWord(transition.kind)), transition.durationMs, channel + 1);
    emit transitionStarted(channel, transition);
}

void Engine::onTransitionFinished(int channel)
{
    updateProgramSize();
    noteProgramChannel();
    if (channel != m_awaitedChannel)
        return; // finished already by the switch that followed it
    m_awaitedChannel = -1;
    ++m_transitionsDone;
    const int swapTo = m_swapOnFinish;
    m_swapOnFinish = kNoSwap;
    if (swapTo != kNoSwap && channel == m_previewChannel)
        setPreviewChannel(swapTo);
}

void Engine::setTBar(double position)
{
    position = std::clamp(position, 0.0, 1.0);
    if (m_previewChannel < 0 || position == m_tbar)
        return;
    Transition ridden = withStinger(m_transition, TransitionKind::Mix);
    if (!ridden.timed())
        ridden.kind = TransitionKind::Mix;
    finishRunningTake();
    if (position >= 1.0) {
        m_tbar = 0.0;
        m_slides->stop();
        m_swapOnFinish = programChannel(); // the switcher reports the end, which swaps
        m_awaitedChannel = m_previewChannel;
        m_switcher->holdTransition(m_previewChannel, ridden, 1.0);
        emit tbarChanged(0.0);
        return;
    }
    m_tbar = position;
    m_switcher->holdTransition(m_previewChannel, ridden, position);
    emit tbarChanged(position);
}

void Engine::setScheduleTransition(const Transition &transition)
{
    if (transition.kind == TransitionKind::Stinger)
        m_stingers->prepare(transition.stingerFile, transition.cutMs);
    m_schedule->setDefaultTransition(transition);
}

void Engine::setFadeToBlack(bool black, int durationMs)
{
    if (black == m_fadedToBlack)
        return;
    m_fadedToBlack = black;
    m_switcher->fadeToBlack(black, std::clamp(durationMs, 0, Transition::kMaxMs));
    qInfo("Fade to black: %s over %d ms", black ? "out" : "back", durationMs);
    emit fadeToBlackChanged(black);
}

} // namespace selvane

// The engine's failover: backups, the slate, and what the faces see of them.

#include "engine/ChannelSet.h"
#include "engine/Engine.h"
#include "engine/FailoverControl.h"
#include "engine/ProgramSwitcher.h"
#include "engine/SlideShow.h"
#include "engine/StingerCache.h"

namespace selvane {

void Engine::setUpFailover()
{
    m_failover = new FailoverControl(m_feeds, *m_switcher, this);
    connect(m_channels, &ChannelSet::stateChanged, this, [this](int channel, ChannelState state) {
        m_switcher->setChannelState(channel, state);
    });
    connect(m_failover, &FailoverControl::failedOver, this, &Engine::failedOver);
    connect(m_failover, &FailoverControl::returned, this, &Engine::returnedToAir);
    connect(m_failover, &FailoverControl::slateChanged, this, [this](bool onAir) {
        noteProgramChannel();
        emit slateChanged(onAir);
    });
    // The slate is drawn at the program's size.
    connect(this, &Engine::programSizeChanged, this, &Engine::updateFailoverTransition);
    // A stinger stands in once its clip is in memory.
    connect(m_stingers, &StingerCache::loaded, this, &Engine::updateFailoverTransition);
    updateFailoverTransition();
}

void Engine::updateFailoverTransition()
{
    if (!m_failover)
        return;
    // A stinger stands in once its clip is loaded; until then a cut, without a word in the log
    // (the take that meets an unready stinger says so).
    const bool ready = m_transition.kind != TransitionKind::Stinger ||
                       m_stingers->clip(m_transition.stingerFile, m_transition.cutMs);
    m_failover->setTransition(ready ? withStinger(m_transition, TransitionKind::Cut)
                                    : Transition{});
    m_failover->prepareFor(programChannel(), m_programSize);
}

Problem Engine::setFailover(const FailoverSettings &settings)
{
    return m_failover->setSettings(settings);
}

FailoverSettings Engine::failover() const
{
    return m_failover->settings();
}

void Engine::showSlate()
{
    m_slides->stop();
    finishRunningTake();
    m_failover->showSlate(withStinger(m_transition, TransitionKind::Cut));
    noteProgramChannel();
}

bool Engine::slateOnAir() const
{
    return m_failover->slateOnAir();
}

void Engine::failoverStats(ProgramStats &program) const
{
    program.failedChannel = m_failover->failedChannel();
    program.standIn = m_failover->standIn();
    program.failovers = m_failover->failovers();
    program.returns = m_failover->returns();
    program.slate = m_failover->slateOnAir();
}

} // namespace selvane

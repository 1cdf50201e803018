#include "media/ProgramBus.h"

#include <algorithm>

namespace selvane {

ProgramBus::Moment ProgramBus::at(qint64 programUs) const
{
    std::lock_guard lock(m_mutex);
    Moment moment;
    moment.from = programUs < m_switchUs ? m_previous : m_program;
    moment.black = blackAt(programUs);
    if (m_target < 0)
        return moment;
    if (m_manual) {
        moment.to = m_target;
        moment.position = m_manualPosition;
        moment.transition = m_transition;
        moment.manual = true;
        moment.elapsedUs = qint64(m_manualPosition * m_transition.durationMs * 1000.0);
        return moment;
    }
    if (programUs < m_startUs)
        return moment;
    const qint64 lengthUs = qint64(m_transition.durationMs) * 1000;
    if (programUs >= m_startUs + lengthUs) {
        // Over, though not settled yet: the new channel is on air.
        moment.from = m_target;
        return moment;
    }
    moment.to = m_target;
    moment.transition = m_transition;
    moment.position = double(programUs - m_startUs) / double(lengthUs);
    moment.elapsedUs = programUs - m_startUs;
    return moment;
}

int ProgramBus::program() const
{
    std::lock_guard lock(m_mutex);
    return m_program;
}

int ProgramBus::target() const
{
    std::lock_guard lock(m_mutex);
    return m_target;
}

void ProgramBus::cut(int channel, qint64 atUs)
{
    std::lock_guard lock(m_mutex);
    // A running transition ends where it was going; the cut replaces whatever that was.
    m_previous = m_target >= 0 && !m_manual ? m_target : m_program;
    m_program = channel;
    m_switchUs = atUs;
    m_target = -1;
    m_manual = false;
    m_manualPosition = 0.0;
}

void ProgramBus::begin(int channel, const Transition &transition, qint64 startUs)
{
    std::lock_guard lock(m_mutex);
    if (m_target >= 0 && !m_manual)
        switchTo(m_target, startUs); // never left half done: finished at once, then the next
    const bool fromHand = m_manual && m_target == channel;
    m_target = channel;
    m_transition = transition;
    m_transition.durationMs =
        std::clamp(transition.durationMs, Transition::kMinMs, Transition::kMaxMs);
    // Taken while held by hand: it runs on from where the hand left it.
    m_startUs =
        startUs - (fromHand ? qint64(m_manualPosition * m_transition.durationMs * 1000) : 0);
    m_manual = false;
    m_manualPosition = 0.0;
}

void ProgramBus::hold(int channel, const Transition &transition, double position)
{
    std::lock_guard lock(m_mutex);
    if (m_target >= 0 && !m_manual)
        switchTo(m_target, kAlways);
    m_target = channel;
    m_transition = transition;
    m_manual = true;
    m_manualPosition = std::clamp(position, 0.0, 1.0);
}

double ProgramBus::manualPosition() const
{
    std::lock_guard lock(m_mutex);
    return m_manual ? m_manualPosition : 0.0;
}

bool ProgramBus::isManual() const
{
    std::lock_guard lock(m_mutex);
    return m_manual && m_target >= 0;
}

void ProgramBus::cancelManual()
{
    std::lock_guard lock(m_mutex);
    if (!m_manual)
        return;
    m_target = -1;
    m_manual = false;
    m_manualPosition = 0.0;
}

int ProgramBus::settle(qint64 programUs)
{
    std::lock_guard lock(m_mutex);
    if (m_target < 0 || m_manual)
        return -1;
    const qint64 endUs = m_startUs + qint64(m_transition.durationMs) * 1000;
    if (programUs < endUs)
        return -1;
    switchTo(m_target, endUs);
    m_target = -1;
    return m_program;
}

int ProgramBus::settleManual(qint64 atUs)
{
    std::lock_guard lock(m_mutex);
    if (m_target < 0 || !m_manual)
        return -1;
    switchTo(m_target, atUs);
    m_target = -1;
    m_manual = false;
    m_manualPosition = 0.0;
    return m_program;
}

void ProgramBus::fade(bool toBlack, int durationMs, qint64 startUs)
{
    std::lock_guard lock(m_mutex);
    // From wherever a fade still running has got to.
    m_blackFrom = blackAt(startUs);
    m_toBlack = toBlack;
    m_fadeStartUs = startUs;
    // At the rate of a whole fade: what is left of the way takes its share of the time.
    const double left = toBlack ? 1.0 - m_blackFrom : m_blackFrom;
    m_fadeUs = qint64(double(std::max(0, durationMs)) * 1000.0 * left);
}

bool ProgramBus::fadingToBlack() const
{
    std::lock_guard lock(m_mutex);
    return m_toBlack;
}

void ProgramBus::switchTo(int channel, qint64 atUs)
{
    m_previous = m_program;
    m_program = channel;
    m_switchUs = atUs;
}

double ProgramBus::blackAt(qint64 programUs) const
{
    const double goal = m_toBlack ? 1.0 : 0.0;
    if (m_fadeStartUs == kAlways)
        return 0.0;
    if (programUs >= m_fadeStartUs + m_fadeUs)
        return goal;
    if (programUs < m_fadeStartUs)
        return m_blackFrom;
    const double done = double(programUs - m_fadeStartUs) / double(m_fadeUs);
    return m_blackFrom + (goal - m_blackFrom) * done;
}

} // namespace selvane

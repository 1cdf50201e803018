// The engine's stats snapshot and the rates sampled once a second.

#include "audio/PreviewAudioMixer.h"
#include "compose/OverlayManager.h"
#include "engine/ChannelSet.h"
#include "engine/Engine.h"
#include "engine/OutputSession.h"
#include "engine/OutputTimetable.h"
#include "engine/OverlaySlots.h"
#include "engine/ProgramSwitcher.h"
#include "schedule/ScheduleRunner.h"

namespace selvane {

void Engine::sampleRates()
{
    StatsSampler::Counters counters;
    for (int c = 0; c < kChannelCount; ++c)
        counters.channelPictures[std::size_t(c)] = m_channels->stats(c).framesDelivered;
    counters.programFrames = m_switcher->counters().frames;
    const OutputStats output = m_output->stats();
    counters.bytesEncoded = output.bytesEncoded;
    for (const TargetStats &target : output.targets)
        counters.targetBytes << target.bytes;
    m_rates.sample(counters, m_rateClock.elapsed());
}

EngineStats Engine::stats() const
{
    EngineStats s;
    for (int c = 0; c < kChannelCount; ++c) {
        ChannelStats &channel = s.channels[std::size_t(c)];
        channel = m_channels->stats(c);
        if (m_mixer)
            channel.audio = m_mixer->levels().channel(c);
    }
    s.program.channel = programChannel();
    s.program.still = m_switcher->isStill();
    s.program.size = m_programSize;
    s.program.usedFallbackSize = m_usedFallback;
    const ProgramSwitcher::Counters counters = m_switcher->counters();
    s.program.frames = counters.frames;
    s.program.repeated = counters.repeated;
    s.program.skippedTicks = counters.skippedTicks;
    s.program.framesWithoutOverlays = counters.withoutOverlays;
    s.program.preview = m_previewChannel;
    s.program.transitionTarget = transitionTarget();
    s.program.tbar = m_tbar;
    s.program.fadedToBlack = m_fadedToBlack;
    s.program.transitions = m_transitionsDone;
    failoverStats(s.program);
    for (int c = 0; c < kChannelCount; ++c) {
        s.channels[std::size_t(c)].picturesSkipped = counters.skippedPictures[std::size_t(c)];
        s.channels[std::size_t(c)].repeatedTicks = counters.repeatedTicks[std::size_t(c)];
        s.channels[std::size_t(c)].reanchors = counters.reanchors[std::size_t(c)];
    }
    if (m_mixer)
        s.program.audio = m_mixer->levels().program();
    s.output = m_output->stats();
    s.output.startsInMs = m_timetable->msUntilStart();
    s.output.stopsInMs = m_timetable->msUntilStop();
    m_rates.apply(s);
    if (m_mixer) {
        for (const MediaOverlayRecord &record : m_overlays->mediaOverlays()) {
            const int slot = m_overlaySlots->slotOf(record.id);
            if (slot >= 0)
                s.overlayAudio.insert(record.id, m_mixer->levels().overlaySlot(slot));
        }
    }
    s.scheduleRunning = m_schedule->isRunning();
    s.scheduleBaseClip = m_schedule->currentBaseId();
    s.scheduleMs = m_schedule->clock().ms();
    s.audioDroppedFrames = m_feeds.droppedAudioFrames();
    return s;
}

} // namespace selvane

#include "audio/PreviewAudioMixer.h"

#include "audio/AudioQueueIODevice.h"
#include "media/ProgramClock.h"
#include "media/SourceFeeds.h"

#include <QAudioDevice>
#include <QAudioFormat>
#include <QAudioSink>
#include <QDebug>
#include <QMediaDevices>
#include <QTimer>
#include <array>
#include <cmath>
#include <cstring>

namespace {

std::int16_t shaped(float value)
{
    return std::int16_t(std::lround(std::tanh(value) * 32767.0f));
}

} // namespace

PreviewAudioMixer::PreviewAudioMixer(selvane::SourceFeeds &feeds,
                                     const selvane::ProgramClock &clock, QObject *parent)
    : QObject(parent), m_feeds(feeds), m_clockSource(clock), m_previewBus(kBlockValues),
      m_programBus(kBlockValues), m_source(kBlockValues), m_sampleBlock(kBlockValues),
      m_programBlock(kBlockValues)
{
    // The program channel is heard through the program bus; other channels and the overlays'
    // preview are off until the operator raises them.
    for (int i = 0; i < 4; ++i) {
        m_channelVolumes[i].store(0.0f);
        m_overlayPreviewVolumes[i].store(0.0f);
        m_overlayProgramVolumes[i].store(1.0f);
        m_overlayOnProgram[i].store(true);
    }
    m_programQueue.reserve(kProgramQueueMaxBytes + 2 * kBlockBytes);
}

PreviewAudioMixer::~PreviewAudioMixer()
{
    cleanup();
}

void PreviewAudioMixer::setChannelVolume(int channel, float volume)
{
    if (channel >= 0 && channel < 4)
        m_channelVolumes[channel].store(volume);
}

float PreviewAudioMixer::channelVolume(int channel) const
{
    return channel >= 0 && channel < 4 ? m_channelVolumes[channel].load() : 0.0f;
}

void PreviewAudioMixer::setOverlayPreviewVolume(int slot, float volume)
{
    if (slot >= 0 && slot < 4)
        m_overlayPreviewVolumes[slot].store(volume);
}

void PreviewAudioMixer::setOverlayProgramVolume(int slot, float volume)
{
    if (slot >= 0 && slot < 4)
        m_overlayProgramVolumes[slot].store(volume);
}

void PreviewAudioMixer::setOverlayOnProgram(int slot, bool on)
{
    if (slot >= 0 && slot < 4)
        m_overlayOnProgram[slot].store(on);
}

void PreviewAudioMixer::setProgramTap(ProgramTap tap)
{
    std::lock_guard lock(m_tapMutex);
    m_tap = std::move(tap);
}

void PreviewAudioMixer::setChannelTap(ChannelTap tap)
{
    std::lock_guard lock(m_tapMutex);
    m_channelTap = std::move(tap);
}

void PreviewAudioMixer::start()
{
    if (m_device || m_timer)
        return;
    m_device = new AudioQueueIODevice(this);
    m_device->open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    createSink();
    m_timer = new QTimer(this);
    m_timer->setTimerType(Qt::PreciseTimer);
    connect(m_timer, &QTimer::timeout, this, &PreviewAudioMixer::mixTick);
    m_clock.start();
    m_baseProgramUs = m_clockSource.nowUs();
    m_blocksDue = 0;
    m_timer->start(10);
}

void PreviewAudioMixer::setOutputDevice(const QByteArray &id)
{
    if (id == m_outputId)
        return;
    m_outputId = id;
    if (!m_device)
        return;
    if (m_sink) {
        m_sink->stop();
        delete m_sink;
        m_sink = nullptr;
    }
    createSink();
}

void PreviewAudioMixer::createSink()
{
    QAudioDevice output = QMediaDevices::defaultAudioOutput();
    if (!m_outputId.isEmpty()) {
        bool found = false;
        for (const QAudioDevice &device : QMediaDevices::audioOutputs()) {
            if (device.id() == m_outputId) {
                output = device;
                found = true;
                break;
            }
        }
        if (!found)
            qWarning().noquote() << "PreviewAudioMixer: output device" << m_outputId
                                 << "not found, using the default";
    }
    if (output.isNull()) {
        qInfo("PreviewAudioMixer: no default audio output; the preview is silent");
        return;
    }
    QAudioFormat format;
    format.setSampleRate(48000);
    format.setChannelCount(2);
    format.setSampleFormat(QAudioFormat::Int16);
    m_sink = new QAudioSink(output, format, this);
    m_sink->setBufferSize(kSinkBufferBytes);
    m_sink->setVolume(1.0);
    m_sink->start(m_device);
}

void PreviewAudioMixer::stop()
{
    if (m_sink)
        m_sink->stop();
}

void PreviewAudioMixer::cleanup()
{
    if (m_timer) {
        m_timer->stop();
        delete m_timer;
        m_timer = nullptr;
    }
    if (m_sink) {
        m_sink->stop();
        delete m_sink;
        m_sink = nullptr;
    }
    if (m_device) {
        m_device->close();
        delete m_device;
        m_device = nullptr;
    }
}

void PreviewAudioMixer::mixTick()
{
    if (!m_device)
        return;
    // Every block due by the steady clock is mixed, so the sound keeps pace with wall time.
    const qint64 elapsedUs = m_clock.nsecsElapsed() / 1000;
    qint64 due = elapsedUs / 10000 + 1 - m_blocksDue;
    if (due > kMaxCatchUpBlocks) {
        m_blocksDue += due - kMaxCatchUpBlocks;
        due = kMaxCatchUpBlocks;
    }
    // Block n is the sound of program time base + n * 10 ms exactly: blocks follow each other
    // without a gap or an overlap, whatever the timer's jitter.
    for (qint64 k = 0; k < due; ++k) {
        mixBlock(m_baseProgramUs + m_blocksDue * 10000);
        ++m_blocksDue;
    }
}

void PreviewAudioMixer::addSource(std::vector<float> &bus, float gain)
{
    for (int i = 0; i < kBlockValues; ++i)
        bus[i] += float(m_source[i]) * (gain / 32768.0f);
}

void PreviewAudioMixer::addStingerSound(const selvane::StingerClip &clip, qint64 elapsedUs,
                                        float gain)
{
    const qint64 first =
        elapsedUs * selvane::audio::kSampleRate / 1000000 * selvane::audio::kChannels;
    const qint64 size = qint64(clip.sound.size());
    for (int i = 0; i < kBlockValues && first + i < size; ++i)
        if (first + i >= 0)
            m_programBus[std::size_t(i)] +=
                float(clip.sound[std::size_t(first + i)]) * (gain / 32768.0f);
}

int PreviewAudioMixer::takeSource(selvane::SourceFeed &feed, qint64 programUs)
{
    const selvane::SourceMapping mapping = feed.mapping();
    if (!mapping.anchored) {
        // No picture has put the source on the program clock yet: its sound waits.
        std::fill(m_source.begin(), m_source.end(), std::int16_t(0));
        return 0;
    }
    return feed.sound().takeAt(m_source.data(), kBlockFrames, programUs - mapping.offsetUs,
                               mapping.timeline);
}

void PreviewAudioMixer::mixBlock(qint64 programUs)
{
    std::fill(m_previewBus.begin(), m_previewBus.end(), 0.0f);
    std::fill(m_programBus.begin(), m_programBus.end(), 0.0f);

    // Every source gives the sound of this block's time whether it is heard or not.
    // The program's channels by the bus at this block's time: one, or two crossfading with
    // equal power while a transition runs; the whole program fades with the fade to black.
    const selvane::ProgramBus::Moment onAir = m_feeds.bus().at(programUs);
    // By bus number: the four channels, then the standby (a failed channel's backup, the slate).
    constexpr int kStandby = selvane::SourceFeeds::kStandby;
    std::array<float, kStandby + 1> programShare{};
    const bool stingerRuns =
        onAir.to >= 0 && onAir.transition.kind == selvane::TransitionKind::Stinger;
    const selvane::StingerClip *stinger = stingerRuns ? onAir.transition.stinger.get() : nullptr;
    if (stingerRuns) {
        // Sound switches with the picture underneath, at the clip's cut point.
        const int side = !stinger || onAir.elapsedUs >= stinger->cutUs ? onAir.to : onAir.from;
        if (side >= 0 && side <= kStandby)
            programShare[std::size_t(side)] = 1.0f;
    } else if (onAir.to >= 0) {
        const double angle = onAir.position * 1.5707963267948966;
        if (onAir.from >= 0 && onAir.from <= kStandby)
            programShare[std::size_t(onAir.from)] += float(std::cos(angle));
        if (onAir.to <= kStandby)
            programShare[std::size_t(onAir.to)] += float(std::sin(angle));
    } else if (onAir.from >= 0 && onAir.from <= kStandby) {
        programShare[std::size_t(onAir.from)] = 1.0f;
    }
    const float programVolume = m_programVolume.load() * float(1.0 - onAir.black);
    ChannelTap channelTap;
    {
        std::lock_guard lock(m_tapMutex);
        channelTap = m_channelTap;
    }
    for (int c = 0; c < 4; ++c) {
        const float v = m_channelVolumes[c].load();
        const int real = takeSource(m_feeds.channel(c), programUs);
        if (channelTap)
            channelTap(c, m_source.data(), kBlockFrames, programUs);
        if (real == 0) {
            m_levels.silenceChannel(c);
            continue;
        }
        m_levels.measureChannel(c, m_source.data(), kBlockValues);
        if (v > 0.0f)
            addSource(m_previewBus, v);
        if (programShare[std::size_t(c)] > 0.0f && programVolume > 0.0f)
            addSource(m_programBus, programVolume * programShare[std::size_t(c)]);
    }
    // The standby is heard on the program only, at the program's volume.
    if (takeSource(m_feeds.standby(), programUs) > 0 && programShare[kStandby] > 0.0f &&
        programVolume > 0.0f)
        addSource(m_programBus, programVolume * programShare[kStandby]);
    for (int s = 0; s < 4; ++s) {
        const int real = takeSource(m_feeds.overlaySlot(s), programUs);
        if (real == 0) {
            m_levels.silenceOverlaySlot(s);
            continue;
        }
        m_levels.measureOverlaySlot(s, m_source.data(), kBlockValues);
        const float pv = m_overlayPreviewVolumes[s].load();
        const float qv = m_overlayProgramVolumes[s].load() * float(1.0 - onAir.black);
        if (pv > 0.0f)
            addSource(m_previewBus, pv);
        if (m_overlayOnProgram[s].load() && qv > 0.0f)
            addSource(m_programBus, qv);
    }

    // A stinger's own sound goes to the program while it runs by itself (not while a hand
    // holds it, which would repeat one block).
    if (stinger && !onAir.manual && programVolume > 0.0f)
        addStingerSound(*stinger, onAir.elapsedUs, programVolume);

    // The program bus is heard on the preview device too, on top of the preview bus.
    for (int i = 0; i < kBlockValues; ++i)
        m_sampleBlock[i] = shaped(m_previewBus[i] + m_programBus[i]);
    if (m_device)
        m_device->appendBlock(reinterpret_cast<const char *>(m_sampleBlock.data()), kBlockBytes);

    if (m_programOutputEnabled.load()) {
        const float gain = m_programGain.load();
        for (int i = 0; i < kBlockValues; ++i)
            m_programBlock[i] = shaped(m_programBus[i] * gain);
        m_levels.measureProgram(m_programBlock.data(), kBlockValues);
        appendProgramBlock();
        std::lock_guard lock(m_tapMutex);
        if (m_tap)
            m_tap(m_programBlock.data(), kBlockFrames, programUs);
    }
    m_blocksMixed.fetch_add(1);
}

void PreviewAudioMixer::appendProgramBlock()
{
    std::lock_guard lock(m_programMutex);
    m_programQueue.append(reinterpret_cast<const char *>(m_programBlock.data()), kBlockBytes);
    const qint64 unread = m_programQueue.size() - m_programReadOffset;
    if (unread > kProgramQueueMaxBytes)
        m_programReadOffset = m_programQueue.size() - kProgramQueueMaxBytes;
    // Compact the consumed prefix in place; the capacity stays.
    if (m_programReadOffset > 0 && m_programReadOffset >= m_programQueue.size() / 2) {
        const qint64 left = m_programQueue.size() - m_programReadOffset;
        std::memmove(m_programQueue.data(), m_programQueue.constData() + m_programReadOffset,
                     std::size_t(left));
        m_programQueue.resize(left);
        m_programReadOffset = 0;
    }
}

qint64 PreviewAudioMixer::readProgramAudio(char *data, qint64 maxBytes)
{
    std::lock_guard lock(m_programMutex);
    const qint64 count = std::min(maxBytes, m_programQueue.size() - m_programReadOffset);
    if (count <= 0)
        return 0;
    std::memcpy(data, m_programQueue.constData() + m_programReadOffset, std::size_t(count));
    m_programReadOffset += count;
    return count;
}

qint64 PreviewAudioMixer::programQueuedBytes() const
{
    std::lock_guard lock(m_programMutex);
    return m_programQueue.size() - m_programReadOffset;
}

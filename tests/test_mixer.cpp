// The preview audio mixer's tick rules on real source queues: a block every 10 ms that keeps
// every queue current heard or not, overlay-only program mix, the two-second bounds of both
// queues after a stalled reader, tanh shaping, levels, and a tick that allocates nothing once
// warm.

#include "audio/AudioQueueIODevice.h"
#include "audio/PreviewAudioMixer.h"
#include "media/ProgramClock.h"
#include "media/SourceFeeds.h"

#include <QtTest>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <new>
#include <vector>

namespace {

// Counts allocations made on the thread that armed the counter.
thread_local bool t_counting = false;
std::atomic<int> g_allocations{0};

} // namespace

void *operator new(std::size_t size)
{
    if (t_counting)
        g_allocations.fetch_add(1);
    if (void *p = std::malloc(size ? size : 1))
        return p;
    throw std::bad_alloc();
}
void operator delete(void *p) noexcept
{
    std::free(p);
}
void operator delete(void *p, std::size_t) noexcept
{
    std::free(p);
}

namespace {

std::vector<std::int16_t> tone(int frames, double amplitude, double hz = 1000.0)
{
    std::vector<std::int16_t> samples(std::size_t(frames) * 2);
    for (int i = 0; i < frames; ++i) {
        const auto v =
            std::int16_t(std::lround(amplitude * 32767.0 * std::sin(2 * M_PI * hz * i / 48000.0)));
        samples[2 * i] = v;
        samples[2 * i + 1] = v;
    }
    return samples;
}

std::vector<std::int16_t> readAllProgram(PreviewAudioMixer &mixer)
{
    std::vector<std::int16_t> out(std::size_t(mixer.programQueuedBytes() / 2));
    mixer.readProgramAudio(reinterpret_cast<char *>(out.data()), qint64(out.size()) * 2);
    return out;
}

std::vector<std::int16_t> readAllPreview(AudioQueueIODevice *device)
{
    std::vector<std::int16_t> out(std::size_t(device->unreadBytes() / 2));
    device->read(reinterpret_cast<char *>(out.data()), qint64(out.size()) * 2);
    return out;
}

// Puts a source on the program clock at offset 0 and queues `frames` of sound from `atUs`.
void pushAt(selvane::SourceFeed &feed, const std::vector<std::int16_t> &samples, int frames,
            qint64 atUs)
{
    feed.setMapping({true, 0, 0});
    feed.sound().push(samples.data(), frames, atUs, 0);
}

int peak(const std::vector<std::int16_t> &samples)
{
    int p = 0;
    for (std::int16_t s : samples)
        p = std::max(p, std::abs(int(s)));
    return p;
}

} // namespace

class TestMixer : public QObject
{
    Q_OBJECT

private slots:
    void everyQueueStaysCurrentWhetherHeardOrNot()
    {
        selvane::SourceFeeds inputs;
        selvane::ProgramClock clock;
        PreviewAudioMixer mixer(inputs, clock);
        for (int c = 0; c < 4; ++c)
            mixer.setChannelVolume(c, 0.0f);
        mixer.setProgramVolume(0.0f);
        for (int s = 0; s < 4; ++s) {
            mixer.setOverlayPreviewVolume(s, 0.0f);
            mixer.setOverlayProgramVolume(s, 0.0f);
        }
        const std::vector<std::int16_t> loud = tone(48000, 0.5);
        pushAt(inputs.channel(1), loud, 48000, 0);
        mixer.start(); // no audio server here: no sink, the device fills up
        QTest::qWait(1000);
        const std::vector<std::int16_t> silence = readAllPreview(mixer.device());
        mixer.cleanup();
        const qint64 blocks = mixer.blocksMixed();
        QVERIFY2(blocks >= 95 && blocks <= 105, QByteArray::number(blocks));
        // Channel 1 is heard by nobody, yet its queue drains at the pace of the clock: a cut to
        // it later finds its sound in step with its pictures, not a second behind.
        QCOMPARE(inputs.channel(1).sound().queuedFrames(), 48000 - int(blocks) * 480);
        QVERIFY(mixer.levels().channel(1).peak > 0.49f);
        QCOMPARE(mixer.levels().channel(2).peak, 0.0f);
        QVERIFY(silence.size() >= 95 * 960);
        QCOMPARE(peak(silence), 0);
    }

    void programBusRulesAndShaping()
    {
        selvane::SourceFeeds inputs;
        selvane::ProgramClock clock;
        PreviewAudioMixer mixer(inputs, clock);

        // No program channel: the program mix holds only the overlay's sound.
        inputs.setProgramChannel(-1);
        const std::vector<std::int16_t> channel = tone(480, 0.25, 1000);
        const std::vector<std::int16_t> overlay = tone(480, 0.25, 250);
        pushAt(inputs.channel(0), channel, 480, 0);
        pushAt(inputs.overlaySlot(2), overlay, 480, 0);
        mixer.mixBlock(0);
        std::vector<std::int16_t> program = readAllProgram(mixer);
        QCOMPARE(program.size(), std::size_t(960));
        for (int i = 0; i < 480; ++i)
            QCOMPARE(program[2 * i],
                     std::int16_t(std::lround(std::tanh(overlay[2 * i] / 32768.0f) * 32767.0f)));

        // Channel 0 is the program; gain 2.0 on a full-scale tone: tanh-shaped, never wrapped.
        inputs.setProgramChannel(0);
        mixer.setProgramGain(2.0f);
        mixer.setOverlayOnProgram(2, false);
        const std::vector<std::int16_t> full = tone(480, 1.0, 1000);
        pushAt(inputs.channel(0), full, 480, 10000);
        mixer.mixBlock(10000);
        program = readAllProgram(mixer);
        QCOMPARE(program.size(), std::size_t(960));
        int samePolarity = 0;
        for (int i = 0; i < 480; ++i) {
            const float x = full[2 * i] / 32768.0f;
            QCOMPARE(program[2 * i], std::int16_t(std::lround(std::tanh(x * 2.0f) * 32767.0f)));
            samePolarity += (x >= 0) == (program[2 * i] >= 0) ? 1 : 0;
        }
        QCOMPARE(samePolarity, 480);
        QVERIFY(peak(program) > 31000 && peak(program) <= 32767);
    }

    void stalledReadersFindAtMostTwoSeconds()
    {
        selvane::SourceFeeds inputs;
        selvane::ProgramClock clock;
        PreviewAudioMixer withDevice(inputs, clock);
        withDevice.start();
        AudioQueueIODevice *device = withDevice.device();
        QVERIFY(device);
        // Five seconds of ticks with nobody reading either queue.
        inputs.setProgramChannel(0);
        for (int block = 0; block < 500; ++block) {
            std::vector<std::int16_t> chunk = tone(480, 0.3);
            chunk[0] = std::int16_t(block); // a marker: which block this was
            chunk[1] = std::int16_t(block);
            pushAt(inputs.channel(0), chunk, 480, block * 10000LL);
            withDevice.mixBlock(block * 10000LL);
        }
        QVERIFY(device->unreadBytes() <=
                AudioQueueIODevice::kMaxUnreadBytes + PreviewAudioMixer::kBlockBytes);
        QVERIFY(device->unreadBytes() >= AudioQueueIODevice::kKeepUnreadBytes);
        QCOMPARE(withDevice.programQueuedBytes(), PreviewAudioMixer::kProgramQueueMaxBytes);
        // What remains is the newest two seconds.
        const std::vector<std::int16_t> program = readAllProgram(withDevice);
        const int firstBlock = std::lround(std::atanh(program[0] / 32767.0) * 32768.0);
        QCOMPARE(firstBlock, 500 - 200);
        withDevice.cleanup();
    }

    void warmTickAllocatesNothing()
    {
        selvane::SourceFeeds inputs;
        selvane::ProgramClock clock;
        PreviewAudioMixer mixer(inputs, clock);
        mixer.start();
        mixer.setChannelVolume(1, 0.5f);
        mixer.setOverlayPreviewVolume(0, 0.5f);
        const std::vector<std::int16_t> chunk = tone(480, 0.3);
        for (int i = 0; i < 400; ++i) { // warm up past the device's first compaction cycles
            pushAt(inputs.channel(0), chunk, 480, i * 10000LL);
            mixer.mixBlock(i * 10000LL);
        }
        QElapsedTimer timer;
        g_allocations.store(0);
        timer.start();
        t_counting = true;
        for (int i = 0; i < 1000; ++i)
            mixer.mixBlock((400 + i) * 10000LL);
        t_counting = false;
        const qint64 ns = timer.nsecsElapsed();
        qInfo("mixer block: %.1f us on average, %d allocations in 1000 blocks",
              ns / 1000.0 / 1000.0, g_allocations.load());
        QCOMPARE(g_allocations.load(), 0);
        mixer.cleanup();
    }
};

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("PULSE_SERVER", "unix:/nonexistent-selvane-test"); // no audio device here
    QGuiApplication app(argc, argv);
    TestMixer test;
    return QTest::qExec(&test, argc, argv);
}

#include "test_mixer.moc"

// Micro-benchmarks of the hot paths, each beside the ffmpeg CLI doing the same work where there
// is such a thing: the audio mixer's 10 ms block; composing 4 image overlays and 3 styled texts
// into a 1080p picture; decoding a 1080p30 H.264 file into program pictures (CPU against
// `ffmpeg -f null` with the same pixel format, and heap allocations per picture once warm); the
// whole pipeline unpaced with and without graphics. Prints medians and ratios; never a test.
// `selvane_bench schedule` measures the schedule alone instead: what a tick of the schedule
// runner costs with two clips and with a week of 30-second clips, and what loading that week
// costs.

#include "audio/PreviewAudioMixer.h"
#include "compose/OverlayManager.h"
#include "compose/TransitionPaint.h"
#include "compose/VulkanCompositor.h"
#include "input/FFmpegVideoDecoder.h"
#include "input/StingerLoad.h"
#include "media/FramePool.h"
#include "media/ProgramClock.h"
#include "media/SourceFeeds.h"
#include "output/FfmpegEncoderSink.h"
#include "schedule/ScheduleRunner.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QPainter>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <new>
#include <sys/resource.h>
#include <vector>

extern "C" {
#include <libavutil/log.h>
}

// Every heap allocation is counted: C++ ones (ours and Qt's) and every malloc (FFmpeg's too).
// Not under the sanitizers, which bring their own allocator.
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
namespace {
std::atomic<long> g_cxxAllocations{0};
std::atomic<long> g_allocations{0};
} // namespace
extern "C" {
void *__libc_malloc(size_t);
void *__libc_calloc(size_t, size_t);
void *__libc_realloc(void *, size_t);
void *__libc_memalign(size_t, size_t);
void __libc_free(void *);
void *malloc(size_t n)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_malloc(n);
}
void *calloc(size_t count, size_t n)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_calloc(count, n);
}
void *realloc(void *p, size_t n)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_realloc(p, n);
}
void *memalign(size_t alignment, size_t n)
{
    g_allocations.fetch_add(1, std::memory_order_relaxed);
    return __libc_memalign(alignment, n);
}
void *aligned_alloc(size_t alignment, size_t n)
{
    return memalign(alignment, n);
}
int posix_memalign(void **out, size_t alignment, size_t n)
{
    *out = memalign(alignment, n);
    return *out ? 0 : ENOMEM;
}
void free(void *p)
{
    __libc_free(p);
}
}
void *operator new(std::size_t n)
{
    g_cxxAllocations.fetch_add(1, std::memory_order_relaxed);
    if (void *p = std::malloc(n ? n : 1))
        return p;
    throw std::bad_alloc();
}
void *operator new[](std::size_t n)
{
    return operator new(n);
}
void operator delete(void *p) noexcept
{
    std::free(p);
}
void operator delete[](void *p) noexcept
{
    std::free(p);
}
void operator delete(void *p, std::size_t) noexcept
{
    std::free(p);
}
void operator delete[](void *p, std::size_t) noexcept
{
    std::free(p);
}
#define SELVANE_COUNTS_ALLOCATIONS 1
#endif

namespace {

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

struct Counts
{
    long cxx = 0;
    long all = 0;
};

Counts allocationCounts()
{
#ifdef SELVANE_COUNTS_ALLOCATIONS
    return {g_cxxAllocations.load(), g_allocations.load()};
#else
    return {-1, -1};
#endif
}

double cpuSeconds(int who)
{
    rusage usage{};
    getrusage(who, &usage);
    return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
           (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

// CPU seconds and wall seconds of one ffmpeg CLI run.
std::pair<double, double> runFfmpeg(const QStringList &args)
{
    const double before = cpuSeconds(RUSAGE_CHILDREN);
    QElapsedTimer wall;
    wall.start();
    QProcess ffmpeg;
    ffmpeg.start(QStringLiteral("ffmpeg"), QStringList{"-v", "error", "-nostdin", "-y"} + args);
    ffmpeg.waitForFinished(-1);
    if (ffmpeg.exitCode() != 0)
        std::fprintf(stderr, "ffmpeg failed: %s\n", ffmpeg.readAllStandardError().constData());
    return {cpuSeconds(RUSAGE_CHILDREN) - before, wall.nsecsElapsed() / 1e9};
}

double mixerBlockMicros()
{
    selvane::SourceFeeds inputs;
    selvane::ProgramClock clock;
    PreviewAudioMixer mixer(inputs, clock);
    mixer.start();
    for (int c = 0; c < 4; ++c)
        mixer.setChannelVolume(c, 0.5f);
    for (int s = 0; s < 4; ++s)
        mixer.setOverlayPreviewVolume(s, 0.5f);
    std::vector<std::int16_t> chunk(960);
    for (int i = 0; i < 480; ++i)
        chunk[2 * i] = chunk[2 * i + 1] = std::int16_t(8000 * std::sin(i * 0.13));
    std::vector<double> rounds;
    for (int c = 0; c < 4; ++c)
        inputs.channel(c).setMapping({true, 0, 0});
    qint64 programUs = 0;
    for (int round = 0; round < 7; ++round) {
        QElapsedTimer timer;
        timer.start();
        for (int block = 0; block < 2000; ++block) {
            for (int c = 0; c < 4; ++c)
                inputs.channel(c).sound().push(chunk.data(), 480, programUs, 0);
            mixer.mixBlock(programUs);
            programUs += 10000;
        }
        rounds.push_back(timer.nsecsElapsed() / 1000.0 / 2000.0);
    }
    mixer.cleanup();
    return median(rounds);
}

// 4 image overlays with alpha and 3 styled texts (one scrolling) on 1080p pictures.
void addGraphics(OverlayManager &overlays, const QTemporaryDir &dir, int images, int texts)
{
    const QRectF places[4] = {
        {20, 20, 133, 100}, {480, 20, 107, 60}, {20, 240, 160, 90}, {440, 240, 180, 100}};
    for (int i = 0; i < images; ++i) {
        QImage picture(400, 300, QImage::Format_ARGB32);
        picture.fill(Qt::transparent);
        QPainter painter(&picture);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setBrush(QColor::fromHsv(i * 80, 200, 230, 200));
        painter.drawEllipse(picture.rect().adjusted(10, 10, -10, -10));
        painter.end();
        const QString path = dir.filePath(QStringLiteral("logo%1.png").arg(i));
        picture.save(path);
        overlays.setMediaOverlay(
            MediaOverlayRecord{i + 1, MediaOverlayRecord::StillImage, path, places[i], true, 0.9});
    }
    for (int i = 0; i < texts; ++i) {
        TextOverlayData text;
        text.id = i + 1;
        text.text = i == 0 ? QStringLiteral("Breaking: the quick brown fox jumps over the lazy dog "
                                            "while the markets close higher")
                           : QStringLiteral("Selvane live %1").arg(i);
        text.fontFamily = QStringLiteral("DejaVu Sans");
        text.fontColor = Qt::white;
        text.bold = true;
        text.outline = text.shadow = true;
        text.backgroundEnabled = i == 0;
        text.backgroundColor = QColor(0, 0, 0, 170);
        text.posX = i == 0 ? 0.0 : 0.6;
        text.posY = i == 0 ? 0.85 : 0.1 * i;
        text.scrollable = i == 0;
        text.scrollDirection =
            i == 0 ? TextOverlayData::ScrollRightToLeft : TextOverlayData::ScrollNone;
        overlays.setTextOverlay(text);
    }
}

// Milliseconds to compose one 1080p frame (median over 300 frames at 30 fps scroll times), and
// the first frame's (which draws every layer).
std::pair<double, double> composeMillis()
{
    QTemporaryDir dir;
    qint64 nowUs = 0;
    OverlayManager overlays;
    overlays.setClock([&] { return nowUs; });
    addGraphics(overlays, dir, 4, 3);
    for (int i = 0; i < 400 && overlays.scene()->images.size() < 4; ++i) {
        QCoreApplication::processEvents();
        QThread::msleep(5);
    }
    FramePool basePool(2, 1920, 1080);
    FrameWriter base = basePool.acquire();
    base.prepareI420(1920, 1080);
    std::fill(base->pixels.begin(), base->pixels.end(), char(100));
    const FrameTokenPtr picture = std::move(base).publish();
    VulkanCompositor compositor(FramePool(6, 1920, 1080));
    std::vector<double> times;
    double first = 0;
    for (int frame = 0; frame < 300; ++frame) {
        nowUs = frame * 33333LL;
        QElapsedTimer timer;
        timer.start();
        const FrameTokenPtr out = compositor.compose(picture, overlays.scene().get());
        const double ms = timer.nsecsElapsed() / 1e6;
        if (frame == 0)
            first = ms;
        else
            times.push_back(ms);
    }
    return {median(times), first};
}

// Milliseconds each kind of transition adds to a 1080p program frame: the median over one
// transition's 30 positions, five times over, of making its picture from the two channels',
// and of fading a program picture to black.
void transitionBenchmark()
{
    FramePool pool(6, 1920, 1080);
    const auto picture = [&](char value) {
        FrameWriter frame = pool.acquire();
        frame.prepareI420(1920, 1080);
        std::fill(frame->pixels.begin(), frame->pixels.end(), value);
        return std::move(frame).publish();
    };
    const FrameTokenPtr from = picture(60), to = picture(180);
    const auto timed = [&](const std::function<void(double, FrameWriter &)> &make) {
        std::vector<double> times;
        for (int round = 0; round < 5; ++round) {
            for (int k = 1; k < 30; ++k) {
                FrameWriter out = pool.acquire();
                QElapsedTimer timer;
                timer.start();
                make(k / 30.0, out);
                times.push_back(timer.nsecsElapsed() / 1e6);
            }
        }
        return median(times);
    };
    using selvane::Transition;
    using selvane::TransitionKind;
    using selvane::WipeDirection;
    const std::pair<const char *, Transition> kinds[] = {
        {"mix", {TransitionKind::Mix, 1000}},
        {"wipe left to right", {TransitionKind::Wipe, 1000, WipeDirection::LeftToRight}},
        {"wipe top down", {TransitionKind::Wipe, 1000, WipeDirection::TopDown}},
        {"dip to black", {TransitionKind::Dip, 1000}}};
    for (const auto &[name, transition] : kinds) {
        std::printf("transition %s, 1080p: median %.2f ms a frame\n", name,
                    timed([&, t = transition](double position, FrameWriter &out) {
                        selvane::transition::paint(*from, *to, position, t, out);
                    }));
    }
    std::printf("fade to black, 1080p: median %.2f ms a frame\n",
                timed([&](double amount, FrameWriter &out) {
                    selvane::transition::fade(*from, {16, 128, 128}, amount, out);
                }));

    // A stinger at its worst: every pixel of every picture partly transparent.
    QTemporaryDir dir;
    const QString clip = dir.filePath("stinger.mov");
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", {"-v", "error", "-f", "lavfi", "-i",
                            "color=c=white:s=1920x1080:r=30:d=1,format=rgba,"
                            "geq=r=255:g=128:b=0:a='mod(X+Y+T*300,255)+1'",
                            "-c:v", "qtrle", clip});
    ffmpeg.waitForFinished(300000);
    QElapsedTimer loading;
    loading.start();
    QString error;
    const selvane::StingerClipPtr stinger =
        selvane::loadStinger(clip, QSize(1920, 1080), -1, &error);
    if (!stinger) {
        std::printf("stinger: cannot load (%s)\n", qPrintable(error));
        return;
    }
    std::printf("stinger, 1080p, 30 pictures: loaded in %.0f ms, %lld MB\n",
                double(loading.elapsed()), stinger->bytes >> 20);
    std::printf("stinger over the switch, 1080p: median %.2f ms a frame\n",
                timed([&](double position, FrameWriter &out) {
                    const qint64 at = qint64(position * double(stinger->durationUs));
                    selvane::transition::stinger(*to, *stinger->at(at), out);
                }));
}

struct DecodeFigures
{
    int frames = 0;
    double cpu = 0;
    double wall = 0;
    double cxxPerFrame = 0;
    double allPerFrame = 0;
};

// Decodes a file as fast as it goes; `each` sees every picture (on this thread).
DecodeFigures decodeFile(const QString &file,
                         const std::function<void(const FrameTokenPtr &, qint64)> &each,
                         const std::function<void(const std::int16_t *, int, qint64)> &sound)
{
    FramePool pool(18, 1920, 1080);
    selvane::SourceFeed feed;
    FFmpegVideoDecoder decoder;
    decoder.setFramePool(pool);
    decoder.setFeed(&feed);
    std::vector<std::int16_t> samples(2 * 4800);
    const double cpu0 = cpuSeconds(RUSAGE_SELF);
    QElapsedTimer wall;
    wall.start();
    decoder.setSource(selvane::SourceAddress(file));
    DecodeFigures figures;
    Counts warm{};
    qint64 soundUs = 0;
    for (;;) {
        bool idle = true;
        while (FrameTokenPtr frame = feed.frames().pop()) {
            idle = false;
            if (each)
                each(frame, frame->ptsUs);
            if (++figures.frames == 60)
                warm = allocationCounts();
        }
        qint64 headUs = 0;
        quint64 timeline = 0;
        const bool haveHead = feed.sound().head(&headUs, &timeline);
        if (const int got = feed.sound().takeOldest(samples.data(), 4800)) {
            idle = false;
            if (sound)
                sound(samples.data(), got, haveHead ? headUs : soundUs);
            soundUs = headUs + qint64(got) * 1000000 / 48000;
        }
        if (idle) {
            if (decoder.hasEnded() && feed.frames().size() == 0)
                break;
            QThread::usleep(500);
        }
    }
    figures.cpu = cpuSeconds(RUSAGE_SELF) - cpu0;
    figures.wall = wall.nsecsElapsed() / 1e9;
    const Counts end = allocationCounts();
    const int warmFrames = std::max(1, figures.frames - 60);
    figures.cxxPerFrame = double(end.cxx - warm.cxx) / warmFrames;
    figures.allPerFrame = double(end.all - warm.all) / warmFrames;
    decoder.stop();
    decoder.waitUntilIdle(2000);
    return figures;
}

void decodeBenchmark(const QString &file)
{
    std::vector<double> ours, theirs;
    DecodeFigures last;
    for (int round = 0; round < 3; ++round) {
        last = decodeFile(file, {}, {});
        ours.push_back(last.cpu);
        theirs.push_back(runFfmpeg({"-i", file, "-pix_fmt", "yuv420p", "-f", "null", "-"}).first);
    }
    std::printf("decode 1080p30 H.264 + AAC, %d pictures: selvane %.2f s CPU, ffmpeg -f null "
                "%.2f s CPU, ratio %.2f\n",
                last.frames, median(ours), median(theirs), median(ours) / median(theirs));
    std::printf("heap allocations per picture once warm: %.2f by C++ (ours and Qt's), %.2f in "
                "all (FFmpeg's packets and frames included)\n",
                last.cxxPerFrame, last.allPerFrame);
}

// The whole pipeline unpaced: decode, compose (with or without graphics), encode to MP4.
void pipelineBenchmark(const QString &file)
{
    QTemporaryDir dir;
    const auto run = [&](bool graphics, int round) {
        qint64 nowUs = 0;
        OverlayManager overlays;
        overlays.setClock([&] { return nowUs; });
        if (graphics) {
            addGraphics(overlays, dir, 2, 1);
            for (int i = 0; i < 400 && overlays.scene()->images.size() < 2; ++i) {
                QCoreApplication::processEvents();
                QThread::msleep(5);
            }
        }
        VulkanCompositor compositor(FramePool(6, 1920, 1080));
        FfmpegEncoderSink sink;
        EncoderSettings settings;
        settings.fileEnabled = true;
        settings.filePath =
            dir.filePath(QStringLiteral("pipeline%1%2.mp4").arg(graphics).arg(round));
        settings.encoderMode = EncoderSettings::Software;
        sink.setOutputSize(1920, 1080);
        sink.open(settings);
        const DecodeFigures figures = decodeFile(
            file,
            [&](const FrameTokenPtr &frame, qint64 ptsUs) {
                nowUs = ptsUs;
                sink.pushVideoFrame(compositor.compose(frame, overlays.scene().get()), ptsUs);
            },
            [&](const std::int16_t *samples, int frames, qint64 ptsUs) {
                sink.pushAudio(samples, frames, ptsUs);
            });
        sink.close();
        return figures.frames / figures.wall;
    };
    std::vector<double> plain, mixed;
    for (int round = 0; round < 3; ++round) {
        plain.push_back(run(false, round));
        mixed.push_back(run(true, round));
    }
    const auto cli = runFfmpeg(
        {"-i", file, "-i", dir.filePath("logo0.png"), "-i", dir.filePath("logo1.png"),
         "-filter_complex",
         "[1]scale=399:300[a];[2]scale=321:180[b];[0:v][a]overlay=60:60[x];[x][b]overlay=1440:60,"
         "drawtext=fontfile=/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf:text='Breaking "
         "the quick brown fox':fontsize=84:fontcolor=white:borderw=6:shadowx=6:shadowy=6:"
         "x=w-mod(t*100\\,w+tw):y=918",
         "-c:v", "libx264", "-preset", "veryfast", "-tune", "zerolatency", "-c:a", "aac", "-f",
         "null", "-"});
    const auto cliPlain = runFfmpeg({"-i", file, "-c:v", "libx264", "-preset", "veryfast", "-tune",
                                     "zerolatency", "-c:a", "aac", "-f", "null", "-"});
    std::printf("unpaced pipeline to x264 veryfast: decode+encode %.1f fps, with 2 pictures and a "
                "ticker %.1f fps, ratio %.2f (ffmpeg CLI: %.1f fps and %.1f fps)\n",
                median(plain), median(mixed), median(mixed) / median(plain), 300 / cliPlain.second,
                300 / cli.second);
}

// A program control that does nothing: the schedule's own work is what is measured.
class IdleControl : public ProgramControl
{
public:
    long calls = 0;
    void showChannel(int, const selvane::Transition &) override { ++calls; }
    void playImages(const QStringList &, int, bool) override { ++calls; }
    void playVideo(const QString &, bool) override { ++calls; }
    void showBlack() override { ++calls; }
    void showTextOverlay(const QString &, const TextOverlayData &) override { ++calls; }
    void showMediaOverlay(const QString &, int, const QString &, const QRectF &, double) override
    {
        ++calls;
    }
    void removeOverlay(const QString &) override { ++calls; }
};

// `clips` base clips of 30 s back to back on the four channels, and as many 30 s texts beside
// them; the last of each is open-ended.
ProgramArrangement weekOfClips(int clips)
{
    ProgramArrangement a;
    for (int i = 0; i < clips; ++i) {
        SceneClip base;
        base.id = QStringLiteral("base%1").arg(i);
        base.startMs = i * 30000LL;
        base.endMs = i + 1 < clips ? base.startMs + 30000 : 0;
        base.channel = i % 4;
        a.sceneClips << base;
        OverlayClip text;
        text.id = QStringLiteral("text%1").arg(i);
        text.startMs = base.startMs;
        text.endMs = base.endMs;
        text.textData.text = QStringLiteral("Item %1").arg(i);
        a.overlayClips << text;
    }
    return a;
}

struct TickCost
{
    double medianNs = 0; // of the batches of 100 ticks
    double meanNs = 0;   // over every tick, those that change clips included
    double allocations = 0;
};

// What a tick of 33 ms costs the runner (applyAt): 1,000 ticks in batches of 100 at each of four
// places in the schedule.
TickCost scheduleTickCost(const ProgramArrangement &arrangement)
{
    IdleControl control;
    ScheduleRunner runner(&control);
    runner.start(arrangement);
    const qint64 lastStart = arrangement.sceneClips.last().startMs;
    std::vector<double> batches;
    long allocations = 0;
    long ticks = 0;
    double totalNs = 0;
    for (const qint64 from : {qint64(0), lastStart / 7, lastStart / 2, lastStart - 20000}) {
        runner.applyAt(from);
        qint64 t = from;
        for (int batch = 0; batch < 10; ++batch) {
            const Counts before = allocationCounts();
            const auto start = std::chrono::steady_clock::now();
            for (int i = 0; i < 100; ++i)
                runner.applyAt(t += ScheduleRunner::kTickMs);
            const auto spent = std::chrono::steady_clock::now() - start;
            allocations += allocationCounts().all - before.all;
            ticks += 100;
            totalNs += std::chrono::duration<double, std::nano>(spent).count();
            batches.push_back(std::chrono::duration<double, std::nano>(spent).count() / 100);
        }
    }
    return {median(batches), totalNs / double(ticks), double(allocations) / double(ticks)};
}

void scheduleBenchmark()
{
    const auto report = [](const char *name, const ProgramArrangement &arrangement) {
        const TickCost cost = scheduleTickCost(arrangement);
        std::printf("schedule tick, %s: median %.0f ns, mean %.0f ns a tick (changes "
                    "included), %.2f heap allocations a tick\n",
                    name, cost.medianNs, cost.meanNs, cost.allocations);
    };
    report("2 clips (a base and a text)", weekOfClips(1));
    const ProgramArrangement week = weekOfClips(20000);
    report("a week of 30 s clips (20,000 bases and 20,000 texts)", week);

    // Loading the week: reading the file, checking it, starting the runner on it.
    const QByteArray json = arrangement::toJson(week);
    std::vector<double> reads, checks, starts;
    for (int round = 0; round < 5; ++round) {
        QElapsedTimer timer;
        timer.start();
        QString error;
        const ProgramArrangement read = arrangement::fromJson(json, &error);
        reads.push_back(timer.nsecsElapsed() / 1e6);
        timer.restart();
        const arrangement::Validation check = arrangement::validate(read);
        checks.push_back(timer.nsecsElapsed() / 1e6);
        if (!check.ok || read.sceneClips.size() != week.sceneClips.size())
            std::printf("the week did not load: %s\n", qPrintable(error + check.message));
        IdleControl control;
        ScheduleRunner runner(&control);
        timer.restart();
        runner.start(read);
        starts.push_back(timer.nsecsElapsed() / 1e6);
    }
    std::printf("loading the week (%lld KB of JSON): read %.0f ms, check %.1f ms, start %.1f ms "
                "(medians)\n",
                qint64(json.size() >> 10), median(reads), median(checks), median(starts));
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    av_log_set_level(AV_LOG_ERROR);
    if (argc > 1 && qstrcmp(argv[1], "schedule") == 0) {
        scheduleBenchmark();
        return 0;
    }
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("source1080.mp4"));
    runFfmpeg({"-f",       "lavfi",    "-i",   "testsrc2=size=1920x1080:rate=30",
               "-f",       "lavfi",    "-i",   "sine=frequency=440:sample_rate=48000",
               "-t",       "10",       "-c:v", "libx264",
               "-preset",  "veryfast", "-g",   "60",
               "-pix_fmt", "yuv420p",  "-c:a", "aac",
               file});
    std::printf("mixer block (4 channels + 4 overlay reads, 480 frames): median %.1f us\n",
                mixerBlockMicros());
    const auto [composeMs, firstMs] = composeMillis();
    std::printf("compose 4 pictures + 3 styled texts into 1080p: median %.2f ms a frame (first "
                "frame, drawing every layer: %.1f ms)\n",
                composeMs, firstMs);
    transitionBenchmark();
    decodeBenchmark(file);
    pipelineBenchmark(file);
    return 0;
}

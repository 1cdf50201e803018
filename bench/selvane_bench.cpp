// Micro-benchmarks of the hot paths that the pipeline-versus-ffmpeg script cannot isolate:
// the audio mixer's 10 ms block and the program-frame colour conversion plus encoding.
// Prints medians over several rounds; never a test.

#include "audio/PreviewAudioMixer.h"
#include "media/FramePool.h"
#include "media/ProgramClock.h"
#include "media/SourceFeeds.h"
#include "output/FfmpegEncoderSink.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>

namespace {

double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
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

double encodeFrameMillis(int width, int height)
{
    QTemporaryDir dir;
    std::vector<double> rounds;
    for (int round = 0; round < 3; ++round) {
        FfmpegEncoderSink sink;
        EncoderSettings s;
        s.fileEnabled = true;
        s.filePath = dir.filePath(QStringLiteral("bench%1.mp4").arg(round));
        s.encoderMode = EncoderSettings::Software;
        sink.setOutputSize(width, height);
        if (!sink.open(s))
            return -1;
        FramePool pool(4, width, height);
        QElapsedTimer timer;
        timer.start();
        const int frames = 120;
        for (int i = 0; i < frames; ++i) {
            FrameWriter frame = pool.acquire();
            frame.prepare(width, height, qint64(width) * 4);
            frame->pixels.fill(char(i * 2));
            sink.pushVideoFrame(std::move(frame).publish(), qint64(i) * 1000000 / 30);
        }
        sink.close();
        rounds.push_back(timer.nsecsElapsed() / 1e6 / frames);
    }
    return median(rounds);
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    std::printf("mixer block (4 channels + 4 overlay reads, 480 frames): median %.1f us\n",
                mixerBlockMicros());
    std::printf("program frame convert+encode 1920x1080 (libx264, balanced): median %.2f ms\n",
                encodeFrameMillis(1920, 1080));
    return 0;
}

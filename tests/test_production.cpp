// Production switching through the engine, judged by a real recording's pixels and sound: a red
// channel with a 400 Hz tone and a green one with 1 kHz, taken back and forth from the preview
// bus with a wipe, a mix and a dip, ridden on the T-bar, and faded to black and back.

#include "TestSupport.h"
#include "compose/TransitionPaint.h"
#include "engine/Engine.h"
#include "input/StingerLoad.h"
#include "media/FrameConvert.h"
#include "schedule/ProgramArrangement.h"

#include <QSignalSpy>
#include <QtTest>

using namespace testsupport;
using namespace selvane;

namespace {

const QString kRed = "lavfi://color=c=red:size=320x240:rate=30[out0];"
                     "sine=frequency=400:sample_rate=48000[out1]";
const QString kGreen = "lavfi://color=c=green:size=320x240:rate=30[out0];"
                       "sine=frequency=1000:sample_rate=48000[out1]";

constexpr int kColumns = 32, kRows = 24;

// One recorded picture, shrunk to 32 x 24: how green each column is (0 red .. 1 green), and how
// bright the picture is (red plus green, 0 when black).
struct Picture
{
    std::array<double, kColumns> green{};
    std::array<double, kColumns> blue{}; // 0 .. 1
    double share = 0;                    // of the whole picture
    double brightness = 0;               // 0 .. about 1
};

std::vector<Picture> readPictures(const QString &file)
{
    QProcess ffmpeg;
    ffmpeg.start("ffmpeg", {"-v", "error", "-i", file, "-vf",
                            QString("scale=%1:%2:flags=area").arg(kColumns).arg(kRows), "-f",
                            "rawvideo", "-pix_fmt", "rgb24", "-"});
    ffmpeg.waitForFinished(60000);
    const QByteArray rgb = ffmpeg.readAllStandardOutput();
    const int size = kColumns * kRows * 3;
    std::vector<Picture> pictures;
    for (int at = 0; at + size <= rgb.size(); at += size) {
        Picture picture;
        double red = 0, green = 0;
        for (int x = 0; x < kColumns; ++x) {
            double r = 0, g = 0, b = 0;
            for (int y = 0; y < kRows; ++y) {
                const int i = at + (y * kColumns + x) * 3;
                r += uchar(rgb[i]) / 255.0;     // red is 255 red
                g += uchar(rgb[i + 1]) / 128.0; // green is 128 green
                b += uchar(rgb[i + 2]) / 255.0;
            }
            picture.blue[std::size_t(x)] = b / kRows;
            picture.green[std::size_t(x)] = g / std::max(1e-9, r + g);
            red += r;
            green += g;
        }
        picture.share = green / std::max(1e-9, red + green);
        picture.brightness = (red + green) / (kColumns * kRows);
        pictures.push_back(picture);
    }
    return pictures;
}

// The runs of pictures between the two colours (neither all red nor all green), as first and
// last index.
QList<QPair<int, int>> blendRuns(const std::vector<Picture> &pictures)
{
    QList<QPair<int, int>> runs;
    int start = -1;
    for (int i = 0; i <= int(pictures.size()); ++i) {
        // Dark pictures (a dip, the fade) count as neither colour.
        const bool between = i < int(pictures.size()) && pictures[std::size_t(i)].share > 0.01 &&
                             pictures[std::size_t(i)].share < 0.99 &&
                             pictures[std::size_t(i)].brightness > 0.5;
        if (between && start < 0)
            start = i;
        if (!between && start >= 0) {
            runs.append({start, i - 1});
            start = -1;
        }
    }
    return runs;
}

double videoStartSeconds(const QString &file)
{
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-select_streams", "v:0", "-show_entries",
                            "stream=start_time", "-of", "csv=p=0", file});
    probe.waitForFinished(20000);
    return probe.readAllStandardOutput().trimmed().toDouble();
}

// A stinger clip made with the ffmpeg CLI: blue, with the alpha `alpha` (a geq expression of X,
// Y, W, H and T), a 2 kHz tone, `seconds` long at `size` and `rate`, in `codec` (its arguments).
bool makeStinger(const QString &file, const QString &alpha, const QStringList &codec,
                 double seconds, const QString &size = "320x240", int rate = 30)
{
    return runFfmpeg(QStringList{"-f", "lavfi", "-i",
                                 QString("color=c=blue:s=%1:r=%2:d=%3,format=rgba,"
                                         "geq=r=0:g=0:b=255:a='%4'")
                                     .arg(size)
                                     .arg(rate)
                                     .arg(seconds)
                                     .arg(alpha),
                                 "-f", "lavfi", "-i",
                                 QString("sine=frequency=2000:sample_rate=48000:d=%1").arg(seconds),
                                 "-shortest"} +
                     codec + QStringList{file});
}

} // namespace

class TestProduction : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void transitionsLandInTheRecording()
    {
        Engine engine;
        engine.startAudio();
        engine.setChannelSource(0, kRed);
        engine.setChannelSource(1, kGreen);
        engine.cutTo(0);
        QSignalSpy previews(&engine, &Engine::previewChannelChanged);
        QSignalSpy started(&engine, &Engine::transitionStarted);
        QSignalSpy black(&engine, &Engine::fadeToBlackChanged);
        engine.setPreviewChannel(1);
        engine.take(); // nothing runs without a transition: a cut, which swaps at once
        QCOMPARE(engine.programChannel(), 1);
        QCOMPARE(engine.previewChannel(), 0);
        engine.cutToPreview();
        QCOMPARE(engine.programChannel(), 0);
        QCOMPARE(engine.previewChannel(), 1);

        OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = QDir(m_dir.path()).filePath("production.mkv");
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        QSignalSpy outputs(&engine, &Engine::outputsStarted);
        QVERIFY(!engine.startOutputs(settings));
        QVERIFY(outputs.wait(10000));
        QTest::qWait(1500);

        // A wipe from the right, red to green.
        engine.setTransition({TransitionKind::Wipe, 1000, WipeDirection::RightToLeft});
        engine.take();
        QCOMPARE(engine.transitionTarget(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(engine.previewChannel(), 0, 3000); // swapped once it ended
        QCOMPARE(engine.programChannel(), 1);
        QTest::qWait(1000);
        // A mix back to red.
        engine.setTransition({TransitionKind::Mix, 1000});
        engine.take();
        QTest::qWait(2000);
        QCOMPARE(engine.programChannel(), 0);
        // A dip through black to green.
        engine.setTransition({TransitionKind::Dip, 1000});
        engine.take();
        QTest::qWait(2000);
        QCOMPARE(engine.programChannel(), 1);
        // The T-bar a quarter of the way back to red with a mix, held, then let go.
        engine.setTransition({TransitionKind::Mix, 1000});
        engine.setTBar(0.25);
        QCOMPARE(engine.transitionTarget(), 0);
        QTest::qWait(1000);
        engine.setTBar(0.0);
        QCOMPARE(engine.transitionTarget(), -1);
        QTest::qWait(700);
        // Fade to black and back, with the outputs running all along.
        engine.setFadeToBlack(true, 500);
        QTest::qWait(1500);
        engine.setFadeToBlack(false, 500);
        QTest::qWait(1200);
        const qint64 skipped = engine.stats().program.skippedTicks;
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(10000));
        QCOMPARE(started.count(), 3);
        QCOMPARE(black.count(), 2);
        QCOMPARE(engine.stats().program.transitions, 3);
        QVERIFY(previews.count() >= 5);
        QCOMPARE(skipped, 0);

        const std::vector<Picture> pictures = readPictures(settings.encoder.filePath);
        QVERIFY(pictures.size() > 300);
        const QList<QPair<int, int>> runs = blendRuns(pictures);
        // The wipe, the mix and the held T-bar; the dip passes through black, never a blend
        // (nor does the fade, and a fade's dark pictures count as neither colour).
        QVERIFY2(runs.size() >= 3, QByteArray::number(runs.size()));
        const auto wipe = runs[0], mix = runs[1], held = runs[2];

        // Every timed transition is 30 pictures at 30 a second, 29 of them between the two.
        QCOMPARE(wipe.second - wipe.first + 1, 29);
        QCOMPARE(mix.second - mix.first + 1, 29);
        // The wipe's middle picture: green on the right half, red on the left.
        const Picture &halfWiped = pictures[std::size_t(wipe.first + 14)];
        QVERIFY2(std::abs(halfWiped.share - 0.5) < 0.05, QByteArray::number(halfWiped.share));
        for (int x = 0; x < kColumns / 2 - 2; ++x) {
            QVERIFY(halfWiped.green[std::size_t(x)] < 0.1);
            QVERIFY(halfWiped.green[std::size_t(kColumns - 1 - x)] > 0.9);
        }
        // The mix's middle picture is the mean of the two, evenly over the picture.
        const Picture &halfMixed = pictures[std::size_t(mix.first + 14)];
        QVERIFY2(std::abs(halfMixed.share - 0.5) < 0.03, QByteArray::number(halfMixed.share));
        QVERIFY(std::abs(halfMixed.green[0] - halfMixed.green[kColumns - 1]) < 0.02);
        // The dip reaches black half way, between the mix and the T-bar.
        double darkest = 1;
        for (int i = mix.second + 1; i < held.first; ++i)
            darkest = std::min(darkest, pictures[std::size_t(i)].brightness);
        QVERIFY2(darkest < 0.05, QByteArray::number(darkest));
        // The T-bar held at a quarter: a quarter of red over green for a second.
        QVERIFY(held.second - held.first > 20);
        const Picture &quarter = pictures[std::size_t((held.first + held.second) / 2)];
        QVERIFY2(std::abs(quarter.share - 0.75) < 0.04, QByteArray::number(quarter.share));
        // Fade to black: black for a while after the T-bar, then green again.
        int blackPictures = 0;
        for (std::size_t i = std::size_t(held.second) + 1; i < pictures.size(); ++i)
            blackPictures += pictures[i].brightness < 0.03 ? 1 : 0;
        QVERIFY2(blackPictures > 20, QByteArray::number(blackPictures));
        QVERIFY(pictures.back().brightness > 0.8 && pictures.back().share > 0.98);

        // Sound follows picture: in the middle of the mix both tones are there, each about 3 dB
        // under its own level; during the black there is silence.
        std::vector<std::int16_t> samples;
        double audioStart = 0;
        QVERIFY(decodeAudio(settings.encoder.filePath, &samples, &audioStart));
        const double videoStart = videoStartSeconds(settings.encoder.filePath);
        const auto sampleAt = [&](double pictureIndex) {
            return qint64((videoStart + pictureIndex / 30.0 - audioStart) * 48000);
        };
        const int window = 2400; // 50 ms
        const qint64 before = sampleAt(mix.first - 15) - window / 2;
        const qint64 middle = sampleAt(mix.first + 14) - window / 2;
        const qint64 after = sampleAt(mix.second + 15) - window / 2;
        const double greenDrop =
            toneDb(samples, middle, window, 1000) - toneDb(samples, before, window, 1000);
        const double redDrop =
            toneDb(samples, middle, window, 400) - toneDb(samples, after, window, 400);
        qInfo("mix middle: green share %.3f, tones %.2f dB (1 kHz) and %.2f dB (400 Hz); wipe "
              "middle share %.3f; T-bar quarter share %.3f; darkest dip %.3f",
              halfMixed.share, greenDrop, redDrop, halfWiped.share, quarter.share, darkest);
        QVERIFY2(greenDrop > -4.5 && greenDrop < -1.5, QByteArray::number(greenDrop));
        QVERIFY2(redDrop > -4.5 && redDrop < -1.5, QByteArray::number(redDrop));
        const qint64 quiet = sampleAt(held.second + 40);
        QVERIFY2(toneDb(samples, quiet, window, 1000) < toneDb(samples, before, window, 1000) - 40,
                 "the fade to black is not silent");
    }

    void scheduleTransitionsLandAtTheirTimes()
    {
        Engine engine;
        engine.setChannelSource(0, kRed);
        engine.setChannelSource(1, kGreen);
        // Clips without a transition of their own come on with the show's default.
        engine.setScheduleTransition({TransitionKind::Wipe, 500, WipeDirection::LeftToRight});
        const auto clip = [](const char *id, int startMs, int endMs, int channel) {
            SceneClip c;
            c.id = id;
            c.startMs = startMs;
            c.endMs = endMs;
            c.channel = channel;
            return c;
        };
        ProgramArrangement schedule;
        schedule.sceneClips << clip("red", 0, 1500, 0) << clip("green", 1500, 3000, 1)
                            << clip("back", 3000, 0, 0);
        schedule.sceneClips[1].transition = Transition{TransitionKind::Mix, 500};
        QVERIFY(engine.loadSchedule(schedule).ok);
        QVERIFY(engine.startSchedule());
        OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = QDir(m_dir.path()).filePath("scheduled.mkv");
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        QSignalSpy outputs(&engine, &Engine::outputsStarted);
        QVERIFY(!engine.startOutputs(settings)); // the schedule's time zero is the recording's
        QVERIFY(outputs.wait(10000));
        QTest::qWait(4200);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(10000));

        const std::vector<Picture> pictures = readPictures(settings.encoder.filePath);
        const QList<QPair<int, int>> runs = blendRuns(pictures);
        QCOMPARE(runs.size(), 2);
        // The mix at 1.5 s and the default wipe at 3 s, 15 pictures each.
        const auto mix = runs[0], wipe = runs[1];
        QVERIFY2(std::abs(mix.first - 46) <= 4, QByteArray::number(mix.first));
        QVERIFY2(std::abs(wipe.first - 91) <= 4, QByteArray::number(wipe.first));
        QCOMPARE(mix.second - mix.first + 1, 14);
        QCOMPARE(wipe.second - wipe.first + 1, 14);
        const Picture &mixed = pictures[std::size_t(mix.first + 6)];
        QVERIFY(std::abs(mixed.green[0] - mixed.green[kColumns - 1]) < 0.02);
        const Picture &wiped = pictures[std::size_t(wipe.first + 6)];
        QVERIFY(wiped.green[0] < 0.1 && wiped.green[kColumns - 1] > 0.9); // red from the left
    }

    void previewMonitorMovesAtTheProgramRate()
    {
        Engine engine;
        engine.setChannelSource(0, kRed);
        engine.setChannelSource(1, kGreen);
        engine.setChannelPreviewRate(5); // thumbnails
        std::array<int, 2> pictures{};
        connect(&engine, &Engine::channelPreview, this, [&](int channel, const FrameTokenPtr &) {
            if (channel < 2)
                ++pictures[std::size_t(channel)];
        });
        QTest::qWait(1500);
        pictures = {};
        QTest::qWait(1000);
        QVERIFY2(pictures[1] <= 7, QByteArray::number(pictures[1]));
        engine.setPreviewChannel(1);
        QTest::qWait(500);
        pictures = {};
        QTest::qWait(1000);
        QVERIFY2(pictures[1] >= 24, QByteArray::number(pictures[1]));
    }

    void stingerPlaysOverTheSwitch()
    {
        // Blue over the left half for the first and last 0.3 s, over everything in between.
        const QString file = QDir(m_dir.path()).filePath("stinger.mov");
        QVERIFY(makeStinger(file, "if(between(T,0.29,0.69),255,if(lt(X,W/2),255,0))",
                            {"-c:v", "qtrle", "-c:a", "pcm_s16le"}, 1.0));
        Engine engine;
        engine.startAudio();
        engine.setChannelSource(0, kRed);
        engine.setChannelSource(1, kGreen);
        engine.cutTo(0);
        engine.setPreviewChannel(1);
        QSignalSpy loaded(&engine, &Engine::stingerLoaded);
        Transition stinger(TransitionKind::Stinger);
        stinger.stingerFile = file;
        engine.setTransition(stinger);
        QVERIFY(loaded.wait(10000));
        QCOMPARE(loaded.last().at(2).toInt(), 1000);
        QCOMPARE(engine.stingerInfo(file, -1).cutMs, 500);

        OutputSettings settings;
        settings.encoder.fileEnabled = true;
        settings.encoder.filePath = QDir(m_dir.path()).filePath("stinger.mkv");
        settings.encoder.qualityPreset = EncoderSettings::Performance;
        QSignalSpy outputs(&engine, &Engine::outputsStarted);
        QVERIFY(!engine.startOutputs(settings));
        QVERIFY(outputs.wait(10000));
        QTest::qWait(1500);
        QSignalSpy started(&engine, &Engine::transitionStarted);
        engine.take();
        QCOMPARE(started.count(), 1);
        QCOMPARE(started.last().at(1).value<Transition>().durationMs, 1000);
        QTRY_COMPARE_WITH_TIMEOUT(engine.previewChannel(), 0, 3000); // swapped once it ended
        QCOMPARE(engine.programChannel(), 1);
        QTest::qWait(1000);
        // A stinger whose clip cannot be read is a cut, and says so.
        Transition missing(TransitionKind::Stinger);
        missing.stingerFile = QDir(m_dir.path()).filePath("none.mov");
        QSignalSpy failed(&engine, &Engine::stingerFailed);
        engine.setTransition(missing);
        QVERIFY(failed.wait(10000));
        engine.take();
        QCOMPARE(engine.programChannel(), 0);
        QTest::qWait(500);
        QSignalSpy stopped(&engine, &Engine::outputsStopped);
        engine.stopOutputs();
        QVERIFY(stopped.wait(10000));
        QCOMPARE(started.count(), 1);
        QCOMPARE(engine.stats().program.skippedTicks, 0);

        const std::vector<Picture> pictures = readPictures(settings.encoder.filePath);
        const auto blueLeft = [&](int i) {
            return pictures[std::size_t(i)].blue[2] > 0.8;
        };
        int first = -1, last = -1;
        for (int i = 0; i < int(pictures.size()); ++i)
            if (blueLeft(i)) {
                first = first < 0 ? i : first;
                last = i;
            }
        QVERIFY(first > 0);
        // The whole clip plays, one picture a tick, and nothing of it stays afterwards.
        QCOMPARE(last - first + 1, 30);
        const auto right = [&](int i) {
            return pictures[std::size_t(i)].green[kColumns - 3];
        };
        const auto rightBlue = [&](int i) {
            return pictures[std::size_t(i)].blue[kColumns - 3];
        };
        // Red shows beside the stinger before the cut, green after it; in the middle the clip
        // covers everything.
        QVERIFY(right(first + 3) < 0.1 && rightBlue(first + 3) < 0.2);
        QVERIFY(rightBlue(first + 15) > 0.8);
        QVERIFY(right(last - 3) > 0.9 && rightBlue(last - 3) < 0.2);
        QVERIFY(right(first - 1) < 0.1 && right(last + 1) > 0.9);

        // Its sound goes to the program; the channels' sound switches at the cut.
        std::vector<std::int16_t> samples;
        double audioStart = 0;
        QVERIFY(decodeAudio(settings.encoder.filePath, &samples, &audioStart));
        const double videoStart = videoStartSeconds(settings.encoder.filePath);
        const auto sampleAt = [&](double pictureIndex) {
            return qint64((videoStart + pictureIndex / 30.0 - audioStart) * 48000) - 1200;
        };
        const int window = 2400;
        const double during = toneDb(samples, sampleAt(first + 8), window, 2000);
        const double outside = toneDb(samples, sampleAt(last + 15), window, 2000);
        qInfo("stinger: pictures %d..%d; 2 kHz %.1f dB during, %.1f dB after", first, last, during,
              outside);
        QVERIFY2(during > outside + 30, qPrintable(QString::number(during - outside)));
        QVERIFY(toneDb(samples, sampleAt(first + 8), window, 400) >
                toneDb(samples, sampleAt(first + 8), window, 1000) + 30);
        QVERIFY(toneDb(samples, sampleAt(last - 6), window, 1000) >
                toneDb(samples, sampleAt(last - 6), window, 400) + 30);
    }

    void stingerClipsKeepTheirAlpha()
    {
        // Blue opaque on the left, half transparent top right, clear bottom right, in the
        // containers and codecs stingers come in.
        const QString alpha = "if(lt(X,W/2),255,if(lt(Y,H/2),128,0))";
        const QList<QPair<QString, QStringList>> kinds{
            {"anim.mov", {"-c:v", "qtrle", "-c:a", "pcm_s16le"}},
            {"vp9.webm", {"-c:v", "libvpx-vp9", "-pix_fmt", "yuva420p", "-c:a", "libopus"}},
            {"prores.mov",
             {"-c:v", "prores_ks", "-profile:v", "4444", "-pix_fmt", "yuva444p10le", "-c:a",
              "pcm_s16le"}}};
        FramePool pool(2, 64, 48);
        FrameWriter red = pool.acquire();
        QImage redImage(64, 48, QImage::Format_RGB32);
        redImage.fill(Qt::red);
        QVERIFY(imageToFrame(redImage, red));
        const FrameTokenPtr under = std::move(red).publish();
        const auto yuv = transition::yuvOf(0xff0000ff);
        for (const auto &[name, codec] : kinds) {
            const QString file = QDir(m_dir.path()).filePath(name);
            QVERIFY2(makeStinger(file, alpha, codec, 0.5, "64x48", 10), qPrintable(name));
            QString error;
            const StingerClipPtr clip = loadStinger(file, QSize(64, 48), 200, &error);
            QVERIFY2(clip, qPrintable(name + ": " + error));
            QVERIFY2(clip->hasAlpha, qPrintable(name));
            QCOMPARE(clip->pictures.size(), std::size_t(5));
            QCOMPARE(clip->durationMs(), 500);
            QCOMPARE(clip->cutUs, 200'000);
            QVERIFY(clip->sound.size() >= 47'000); // its half second of sound, stereo
            // The clear bottom right is passed over.
            QVERIFY(std::abs(clip->pictures[0].spans[40].second - 32) <= 2);
            FrameWriter out = pool.acquire();
            QVERIFY(transition::stinger(*under, clip->pictures[0], out));
            const int stride = int(out->planeStride(0));
            const int redY = under->plane(0)[0], blueY = yuv[0];
            QVERIFY2(std::abs(out.plane(0)[10 * stride + 8] - blueY) <= 3, qPrintable(name));
            QVERIFY2(std::abs(out.plane(0)[10 * stride + 50] - (redY + blueY) / 2) <= 3,
                     qPrintable(name));
            QCOMPARE(out.plane(0)[40 * stride + 50], under->plane(0)[0]);
            QVERIFY(std::abs(out.plane(1)[5 * out->planeStride(1) + 4] - yuv[1]) <= 3);
        }
        // Files that cannot be stingers, each with its reason.
        const QString longClip = QDir(m_dir.path()).filePath("long.mov");
        QVERIFY(makeStinger(longClip, "255", {"-c:v", "qtrle"}, 10.5, "32x24", 5));
        const QString opaque = QDir(m_dir.path()).filePath("opaque.mp4");
        QVERIFY(runFfmpeg({"-f", "lavfi", "-i", "color=c=blue:s=64x48:r=10:d=0.5", opaque}));
        const QString sound = QDir(m_dir.path()).filePath("sound.wav");
        QVERIFY(runFfmpeg({"-f", "lavfi", "-i", "sine=d=0.5", sound}));
        QString error;
        QVERIFY(!loadStinger(longClip, QSize(64, 48), -1, &error));
        QVERIFY2(error.contains("longer"), qPrintable(error));
        QVERIFY(!loadStinger(sound, QSize(64, 48), -1, &error));
        QVERIFY(!loadStinger(m_dir.filePath("absent.mov"), QSize(64, 48), -1, &error));
        // A clip without alpha covers the whole picture while it plays.
        const StingerClipPtr cover = loadStinger(opaque, QSize(64, 48), -1, &error);
        QVERIFY(cover && !cover->hasAlpha && cover->pictures[0].opaque);
        QCOMPARE(cover->cutUs, 250'000);
    }

    void transitionPicturesAreExact()
    {
        FramePool pool(4, 64, 36);
        const auto solid = [&](quint32 argb) {
            FrameWriter frame = pool.acquire();
            frame.prepareI420(64, 36);
            const auto yuv = transition::yuvOf(argb);
            for (int p = 0; p < 3; ++p)
                std::memset(frame.plane(p), yuv[std::size_t(p)],
                            std::size_t(frame->planeStride(p) * (p ? 18 : 36)));
            return std::move(frame).publish();
        };
        const FrameTokenPtr red = solid(0xffff0000), green = solid(0xff00ff00);
        FrameWriter out = pool.acquire();
        // A mix at a third: every value a third of the way (within the rounding).
        QVERIFY(transition::paint(*red, *green, 1.0 / 3, {TransitionKind::Mix, 1000}, out));
        for (int p = 0; p < 3; ++p) {
            const int expected = (2 * red->plane(p)[0] + green->plane(p)[0]) / 3;
            QVERIFY(std::abs(out.plane(p)[5] - expected) <= 1);
        }
        // A wipe top-down at 0 and 1 shows one picture alone, not a row of the other.
        for (const double position : {0.0, 1.0}) {
            QVERIFY(transition::paint(*red, *green, position,
                                      {TransitionKind::Wipe, 1000, WipeDirection::TopDown}, out));
            const FrameTokenPtr &whole = position == 0.0 ? red : green;
            QCOMPARE(out.plane(0)[0], whole->plane(0)[0]);
            QCOMPARE(out.plane(0)[35 * out->planeStride(0) + 63], whole->plane(0)[0]);
        }
        // A dip through white is white half way.
        QVERIFY(transition::paint(
            *red, *green, 0.5, {TransitionKind::Dip, 1000, WipeDirection::LeftToRight, 0xffffffff},
            out));
        QVERIFY(out.plane(0)[0] >= 234);
        // Pictures of different sizes make no transition.
        FramePool other(1, 32, 18);
        FrameWriter small = other.acquire();
        small.prepareI420(32, 18);
        QVERIFY(
            !transition::paint(*red, *std::move(small).publish(), 0.5, {TransitionKind::Mix}, out));
    }

    void busSwitchesAtTheirTimes()
    {
        ProgramBus bus;
        bus.cut(0, 0);
        bus.begin(1, {TransitionKind::Mix, 1000}, 1'000'000);
        QCOMPARE(bus.at(999'999).to, -1);
        QCOMPARE(bus.at(1'500'000).position, 0.5);
        QCOMPARE(bus.at(2'000'000).from, 1); // over, though not settled
        QCOMPARE(bus.settle(1'999'999), -1);
        // A switch during a transition finishes it first: the next starts from its channel.
        bus.begin(2, {TransitionKind::Mix, 500}, 1'600'000);
        QCOMPARE(bus.at(1'600'000).from, 1);
        QCOMPARE(bus.at(1'850'000).to, 2);
        QCOMPARE(bus.settle(2'100'000), 2);
        QCOMPARE(bus.program(), 2);
        // What came before a switch stays heard for blocks before its time.
        bus.cut(3, 3'000'000);
        QCOMPARE(bus.at(2'999'000).from, 2);
        QCOMPARE(bus.at(3'000'000).from, 3);
        // Held by hand, then taken: it runs on from where the hand left it.
        bus.hold(0, {TransitionKind::Mix, 1000}, 0.25);
        QCOMPARE(bus.at(0).position, 0.25);
        bus.begin(0, {TransitionKind::Mix, 1000}, 4'000'000);
        QCOMPARE(bus.at(4'000'000).position, 0.25);
        // A fade turned back half way returns from where it had got to.
        bus.fade(true, 1000, 10'000'000);
        QCOMPARE(bus.at(10'500'000).black, 0.5);
        bus.fade(false, 1000, 10'500'000);
        QCOMPARE(bus.at(10'500'000).black, 0.5);
        QCOMPARE(bus.at(11'000'000).black, 0.0);
    }
};

QTEST_GUILESS_MAIN(TestProduction)
#include "test_production.moc"

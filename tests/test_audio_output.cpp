// Program and preview sound end to end, with real processes: the preview of a 1 kHz channel
// heard on a PulseAudio null sink (recorded from its monitor); a recording plus an RTMP stream
// of pictures that flash and a tone that beeps at the same instants, checked for
// synchronisation at 5 s and at 60 s; and a cut to a flashing channel that nobody listened to.

#include "TestSupport.h"

#include <QtTest>

#include <cmath>
#include <csignal>

using namespace testsupport;

namespace {

const QString kBinary = QStringLiteral(SELVANE_BINARY);

} // namespace

class TestAudioOutput : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void previewIsHeardOnTheDefaultDevice()
    {
        PulseServer pulse;
        QVERIFY2(pulse.start("selvane_test"), pulse.log().constData());
        IsolatedHome home;
        QProcessEnvironment env = home.environment();
        env.insert("XDG_RUNTIME_DIR", pulse.environment().value("XDG_RUNTIME_DIR"));
        env.insert("HOME", pulse.environment().value("HOME"));
        QProcess run;
        run.setProcessEnvironment(env);
        run.start(kBinary, {"--headless", "--channel",
                            "1=lavfi://testsrc2=size=320x240:rate=30[out0];sine=frequency=1000:sample_rate=48000[out1]",
                            "--duration", "6"});
        QVERIFY(run.waitForStarted());
        QTest::qWait(2000);
        const QString wav = QDir(m_dir.path()).filePath("monitor.wav");
        QProcess record;
        record.setProcessEnvironment(pulse.environment());
        record.start("ffmpeg", {"-v", "error", "-y", "-f", "pulse", "-i", "selvane_test.monitor",
                                "-t", "2", "-ac", "1", "-ar", "48000", wav});
        QVERIFY(record.waitForFinished(15000));
        QVERIFY(run.waitForFinished(20000));
        QCOMPARE(run.exitCode(), 0);
        std::vector<std::int16_t> samples;
        double start = 0;
        QVERIFY(decodeAudio(wav, &samples, &start));
        double sum = 0;
        int crossings = 0;
        for (std::size_t i = 0; i < samples.size(); ++i) {
            sum += double(samples[i]) * samples[i];
            if (i > 0 && (samples[i - 1] < 0) != (samples[i] < 0))
                ++crossings;
        }
        const double rms = std::sqrt(sum / double(samples.size())) / 32768.0;
        const double dbfs = 20 * std::log10(rms);
        // The lavfi tone has an amplitude of 1/8; tanh barely touches it: -21.1 dBFS RMS.
        const double expected = 20 * std::log10(std::tanh(0.125) / std::sqrt(2.0));
        const double hz = crossings / 2.0 / (double(samples.size()) / 48000.0);
        qInfo("monitor of the null sink: %.2f dBFS RMS (expected %.2f), %.0f Hz", dbfs, expected, hz);
        QVERIFY2(std::abs(dbfs - expected) < 1.5, QByteArray::number(dbfs));
        QVERIFY2(std::abs(hz - 1000) < 20, QByteArray::number(hz));
    }

    void flashAndBeepStayTogetherInTheFileAndTheStream()
    {
        RtmpServer server;
        QVERIFY(server.start());
        IsolatedHome home;
        const QString file = QDir(m_dir.path()).filePath("sync.mp4");
        const QString pulled = QDir(m_dir.path()).filePath("sync_rtmp.flv");
        QProcess run;
        run.setProcessEnvironment(home.environment());
        run.start(kBinary, {"--headless", "--channel", "1=" + flashAndBeepAddress(), "--duration",
                            "63", "--record", file, "--stream", server.url("sync")});
        QVERIFY(run.waitForStarted());
        QTest::qWait(1500);
        QProcess reader;
        reader.start("ffmpeg", {"-v", "error", "-y", "-rw_timeout", "5000000", "-i",
                                server.url("sync"), "-c", "copy", "-t", "12", pulled});
        QVERIFY(run.waitForFinished(120000));
        QCOMPARE(run.exitCode(), 0);
        QVERIFY(reader.waitForFinished(30000));

        const FlashBeep recorded = analyseFlashBeep(file);
        const QList<double> &flashes = recorded.flashes;
        const QList<double> &beeps = recorded.beeps;
        QVERIFY2(flashes.size() >= 60 && beeps.size() >= 60,
                 qPrintable(QStringLiteral("%1 flashes, %2 beeps").arg(flashes.size()).arg(beeps.size())));
        const double at5 = offsetNear(flashes, beeps, 5.0);
        const double at60 = offsetNear(flashes, beeps, 60.0);
        qInfo("recording: beep minus flash %.1f ms at 5 s, %.1f ms at 60 s", at5 * 1000, at60 * 1000);
        QVERIFY2(std::abs(at5) < 1.0 / 30, QByteArray::number(at5));
        QVERIFY2(std::abs(at60) < 1.0 / 30, QByteArray::number(at60));

        const FlashBeep streamed = analyseFlashBeep(pulled);
        const QList<double> &streamFlashes = streamed.flashes;
        const QList<double> &streamBeeps = streamed.beeps;
        QVERIFY(streamFlashes.size() >= 8 && streamBeeps.size() >= 8);
        double worst = 0;
        for (int k = 2; k < 9; ++k)
            worst = std::max(worst, std::abs(offsetNear(streamFlashes, streamBeeps, streamFlashes[k])));
        qInfo("RTMP read back: worst beep/flash offset %.1f ms over 7 flashes", worst * 1000);
        QVERIFY2(worst < 1.0 / 30, QByteArray::number(worst));
    }

    void cutToAChannelNobodyHeardKeepsSoundWithPicture()
    {
        // Channel 2 flashes and beeps for six seconds with its preview volume at 0 while grey
        // bars are on air; then the schedule cuts to it.
        const QString schedule = QDir(m_dir.path()).filePath("cut.json");
        QFile json(schedule);
        QVERIFY(json.open(QIODevice::WriteOnly));
        json.write(R"({"format": "selvane_program_arrangement", "version": 3, "sceneClips": [
            {"id": "bars", "startMs": 0, "endMs": 6000, "kind": "channel", "channel": 0},
            {"id": "flash", "startMs": 6000, "endMs": 0, "kind": "channel", "channel": 1}]})");
        json.close();
        IsolatedHome home;
        const QString file = QDir(m_dir.path()).filePath("cut.mp4");
        const ProcessResult r = runProcess(
            kBinary,
            {"--headless", "--schedule", schedule, "--channel",
             "1=lavfi://smptebars=size=320x240:rate=30[out0];anullsrc=r=48000[out1]", "--channel",
             "2=" + flashAndBeepAddress(), "--volume", "2=0", "--duration", "12", "--record", file},
            home.environment(), 60000);
        QCOMPARE(r.exitCode, 0);
        const FlashBeep recorded = analyseFlashBeep(file);
        double worst = 0;
        int measured = 0;
        for (double flash : recorded.flashes) {
            if (flash < 6.5)
                continue;
            worst = std::max(worst, std::abs(offsetNear(recorded.flashes, recorded.beeps, flash)));
            ++measured;
        }
        qInfo("after the cut: worst beep/flash offset %.1f ms over %d flashes", worst * 1000, measured);
        QVERIFY2(measured >= 4, QByteArray::number(measured));
        QVERIFY2(worst <= 1.0 / 30, QByteArray::number(worst));
    }
};

QTEST_GUILESS_MAIN(TestAudioOutput)
#include "test_audio_output.moc"

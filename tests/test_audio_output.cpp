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

const QString kBinary = testsupport::builtProgram("SELVANE_BINARY");

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
        run.start(
            kBinary,
            {"--headless", "--channel",
             "1=lavfi://"
             "testsrc2=size=320x240:rate=30[out0];sine=frequency=1000:sample_rate=48000[out1]",
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
        qInfo("monitor of the null sink: %.2f dBFS RMS (expected %.2f), %.0f Hz", dbfs, expected,
              hz);
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
        run.start(kBinary, {"--headless", "--channel", "1=" + codedFlashBeepAddress(), "--duration",
                            "63", "--record", file, "--stream", server.url("sync")});
        QVERIFY(run.waitForStarted());
        QTest::qWait(1500);
        QProcess reader;
        reader.start("ffmpeg", {"-v", "error", "-y", "-rw_timeout", "5000000", "-i",
                                server.url("sync"), "-c", "copy", "-t", "12", pulled});
        QVERIFY(run.waitForFinished(120000));
        QCOMPARE(run.exitCode(), 0);
        QVERIFY(reader.waitForFinished(30000));

        // Sound stays with its picture for the whole minute, in the file and in the stream.
        const double frame = 1.0 / 30 + 0.002;
        for (const QString &recording : {file, pulled}) {
            const SyncMeasure m = measureCodedSync(recording);
            qInfo("%s: %lld flashes, median %+.1f ms, spread %.1f ms", qPrintable(recording),
                  qint64(m.offsets.size()), m.median * 1e3, m.spread * 1e3);
            QVERIFY(m.offsets.size() >= (recording == file ? 60 : 8));
            // The reader joins the stream in the middle of a flash, which it sees cut short.
            for (double offset : m.offsets.mid(2))
                QVERIFY2(std::abs(offset) <= frame, QByteArray::number(offset));
        }
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
        const ProcessResult r =
            runProcess(kBinary,
                       {"--headless", "--schedule", schedule, "--channel",
                        "1=lavfi://smptebars=size=320x240:rate=30[out0];anullsrc=r=48000[out1]",
                        "--channel", "2=" + codedFlashBeepAddress(), "--volume", "2=0",
                        "--duration", "12", "--record", file},
                       home.environment(), 60000);
        QCOMPARE(r.exitCode, 0);
        // Nothing flashes or beeps before the cut: every flash measured is after it.
        const SyncMeasure m = measureCodedSync(file);
        qInfo("after the cut: median %+.1f ms, spread %.1f ms over %lld flashes", m.median * 1e3,
              m.spread * 1e3, qint64(m.offsets.size()));
        QVERIFY(m.offsets.size() >= 4);
        QVERIFY(std::abs(m.median) <= 1.0 / 30 && m.spread <= 1.0 / 30 + 0.002);
    }
};

QTEST_GUILESS_MAIN(TestAudioOutput)
#include "test_audio_output.moc"

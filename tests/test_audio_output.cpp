// Program and preview sound end to end, with real processes: the preview of a 1 kHz channel
// heard on a PulseAudio null sink (recorded from its monitor), and a recording plus an RTMP
// stream of pictures that flash and a tone that beeps at the same instants, checked for
// synchronisation at 5 s and at 60 s.

#include "MediaFixtures.h"
#include "RtmpServer.h"
#include "TestProcess.h"

#include <QtTest>

#include <cmath>
#include <csignal>

using namespace testsupport;

namespace {

const QString kBinary = QStringLiteral(SELVANE_BINARY);

// A PulseAudio server of the test's own with one null sink.
class PulseServer
{
public:
    ~PulseServer()
    {
        if (m_process.state() != QProcess::NotRunning) {
            m_process.terminate();
            if (!m_process.waitForFinished(3000))
                m_process.kill();
            m_process.waitForFinished(2000);
        }
    }
    bool start(const QString &sinkName)
    {
        QDir root(m_dir.path());
        root.mkpath("run");
        root.mkpath("home");
        QFile::setPermissions(root.filePath("run"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        m_env = QProcessEnvironment::systemEnvironment();
        m_env.insert("XDG_RUNTIME_DIR", root.filePath("run"));
        m_env.insert("HOME", root.filePath("home"));
        m_env.remove("PULSE_SERVER");
        m_process.setProcessEnvironment(m_env);
        m_process.setProcessChannelMode(QProcess::MergedChannels);
        m_process.start("pulseaudio",
                        {"--daemonize=no", "--exit-idle-time=-1", "-n", "--disable-shm=yes",
                         "--load=module-null-sink sink_name=" + sinkName,
                         "--load=module-native-protocol-unix auth-anonymous=1"});
        if (!m_process.waitForStarted(5000))
            return false;
        QElapsedTimer timer;
        timer.start();
        while (timer.elapsed() < 10000) {
            QProcess info;
            info.setProcessEnvironment(m_env);
            info.start("pactl", {"info"});
            info.waitForFinished(3000);
            if (info.exitCode() == 0)
                return true;
            QThread::msleep(100);
        }
        return false;
    }
    QProcessEnvironment environment() const { return m_env; }
    QByteArray log() { return m_process.readAll(); }

private:
    QTemporaryDir m_dir;
    QProcess m_process;
    QProcessEnvironment m_env;
};

// Mono s16 samples of a file's audio and the time of its first sample.
bool decodeAudio(const QString &file, std::vector<std::int16_t> *samples, double *startSeconds)
{
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-select_streams", "a:0", "-show_entries",
                            "stream=start_time", "-of", "csv=p=0", file});
    probe.waitForFinished(20000);
    *startSeconds = probe.readAllStandardOutput().trimmed().toDouble();
    QProcess decode;
    decode.start("ffmpeg", {"-v", "error", "-i", file, "-map", "0:a:0", "-ac", "1", "-ar", "48000",
                            "-f", "s16le", "-"});
    decode.waitForFinished(120000);
    const QByteArray raw = decode.readAllStandardOutput();
    samples->resize(std::size_t(raw.size() / 2));
    std::memcpy(samples->data(), raw.constData(), samples->size() * 2);
    return !samples->empty();
}

// Times of the pictures whose brightness rises above mid-grey after a dark one.
QList<double> flashOnsets(const QString &file)
{
    QProcess probe;
    probe.start("ffprobe", {"-v", "error", "-f", "lavfi", "-i",
                            "movie=" + file + ",signalstats", "-show_entries",
                            "frame=pts_time:frame_tags=lavfi.signalstats.YAVG", "-of", "csv=p=0"});
    probe.waitForFinished(120000);
    QList<double> onsets;
    bool bright = false;
    for (const QByteArray &line : probe.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> fields = line.trimmed().split(',');
        if (fields.size() < 2)
            continue;
        const double t = fields[0].toDouble();
        const double y = fields[1].toDouble();
        if (!bright && y > 128)
            onsets << t;
        bright = y > 128;
    }
    return onsets;
}

QList<double> beepOnsets(const std::vector<std::int16_t> &samples, double start)
{
    QList<double> onsets;
    qsizetype lastLoud = -48000;
    for (qsizetype i = 0; i < qsizetype(samples.size()); ++i) {
        if (std::abs(int(samples[std::size_t(i)])) > 3000) {
            if (i - lastLoud > 24000)
                onsets << start + double(i) / 48000.0;
            lastLoud = i;
        }
    }
    return onsets;
}

// The offset between the flash nearest to `at` seconds and the beep nearest to that flash.
double offsetNear(const QList<double> &flashes, const QList<double> &beeps, double at)
{
    double flash = -1;
    for (double f : flashes)
        if (flash < 0 || std::abs(f - at) < std::abs(flash - at))
            flash = f;
    double beep = -1;
    for (double b : beeps)
        if (beep < 0 || std::abs(b - flash) < std::abs(beep - flash))
            beep = b;
    return beep - flash;
}

// One flash of 100 ms and one 1 kHz beep of 100 ms at the start of every second.
const QString kFlashAndBeep =
    "1=lavfi://color=c=black:size=320x240:rate=30,geq=lum='if(lt(mod(T\\,1)\\,0.1)\\,235\\,16)':cb=128:cr=128[out0];"
    "aevalsrc=exprs='if(lt(mod(t\\,1)\\,0.1)\\,0.5*sin(2*PI*1000*t)\\,0)':sample_rate=48000[out1]";

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
        run.start(kBinary, {"--headless", "--channel", kFlashAndBeep, "--duration", "63", "--record",
                            file, "--stream", server.url("sync")});
        QVERIFY(run.waitForStarted());
        QTest::qWait(1500);
        QProcess reader;
        reader.start("ffmpeg", {"-v", "error", "-y", "-rw_timeout", "5000000", "-i",
                                server.url("sync"), "-c", "copy", "-t", "12", pulled});
        QVERIFY(run.waitForFinished(120000));
        QCOMPARE(run.exitCode(), 0);
        QVERIFY(reader.waitForFinished(30000));

        const QList<double> flashes = flashOnsets(file);
        std::vector<std::int16_t> samples;
        double audioStart = 0;
        QVERIFY(decodeAudio(file, &samples, &audioStart));
        const QList<double> beeps = beepOnsets(samples, audioStart);
        QVERIFY2(flashes.size() >= 60 && beeps.size() >= 60,
                 qPrintable(QStringLiteral("%1 flashes, %2 beeps").arg(flashes.size()).arg(beeps.size())));
        const double at5 = offsetNear(flashes, beeps, 5.0);
        const double at60 = offsetNear(flashes, beeps, 60.0);
        qInfo("recording: beep minus flash %.1f ms at 5 s, %.1f ms at 60 s", at5 * 1000, at60 * 1000);
        QVERIFY2(std::abs(at5) < 1.0 / 30, QByteArray::number(at5));
        QVERIFY2(std::abs(at60) < 1.0 / 30, QByteArray::number(at60));

        const QList<double> streamFlashes = flashOnsets(pulled);
        std::vector<std::int16_t> streamSamples;
        double streamStart = 0;
        QVERIFY(decodeAudio(pulled, &streamSamples, &streamStart));
        const QList<double> streamBeeps = beepOnsets(streamSamples, streamStart);
        QVERIFY(streamFlashes.size() >= 8 && streamBeeps.size() >= 8);
        double worst = 0;
        for (int k = 2; k < 9; ++k)
            worst = std::max(worst, std::abs(offsetNear(streamFlashes, streamBeeps, streamFlashes[k])));
        qInfo("RTMP read back: worst beep/flash offset %.1f ms over 7 flashes", worst * 1000);
        QVERIFY2(worst < 1.0 / 30, QByteArray::number(worst));
    }
};

QTEST_GUILESS_MAIN(TestAudioOutput)
#include "test_audio_output.moc"
